#include "checked/small_host.h"

namespace tavmir::checked_tests
{

namespace
{

using namespace test;

void pass(const Label_Type_Info& record)
{
    setUp();
    QList<Label_Type_Info> list;
    list << record;
    PassVarName_2(&list);
}

void passVariable(const Label_Type_Info& record)
{
    pass(label("More", QList<Label_Type_Info>() << record));
}

Label_Type_Info axisType()
{
    return structureType(QList<Label_Type_Info>() << variable("Pos", 6, 0));
}

Label_Type_Info axes()
{
    return structureArray("Axis", 0, axisType(), 32, QList<int>() << 0 << 3);
}

void passChanged(Label_Type_Info record, void (*change)(Label_Type_Info&))
{
    change(record);
    passVariable(record);
}

} // namespace

std::vector<HostPair> labelHosts()
{
    return {
        {"label-name",
         [] { pass(label("Ma.in", QList<Label_Type_Info>() << variable("X", 4, 0))); },
         [] { pass(label("Ma_in", QList<Label_Type_Info>() << variable("X", 4, 0))); }},
        {"label-name", [] { passVariable(variable("", 4, 0)); },
         [] { passVariable(variable("[", 4, 0)); }},
        {"label-member-count",
         [] {
             passChanged(axes(), [](Label_Type_Info& record) {
                 record.elementType.first().memberCount = 2;
             });
         },
         [] { passVariable(axes()); }},
        {"label-bounds", [] { passVariable(arrayVariable("A", 4, 0, QList<int>() << 3 << 3)); },
         [] { passVariable(arrayVariable("A", 4, 0, QList<int>() << 3 << 4)); }},
        {"label-bounds", [] { passVariable(arrayVariable("A", 4, 0, QList<int>() << 0 << 3, 37)); },
         [] { passVariable(arrayVariable("A", 4, 0, QList<int>() << 0 << 3, 16)); }},
        {"label-bounds",
         [] {
             passChanged(arrayVariable("A", 4, 0, QList<int>() << 0 << 3),
                         [](Label_Type_Info& record) { record.dimensionCount = 2; });
         },
         [] { passVariable(arrayVariable("A", 4, 0, QList<int>() << 0 << 3 << 0 << 2)); }},
        {"label-type-missing",
         [] { passChanged(axes(), [](Label_Type_Info& record) { record.elementType.clear(); }); },
         [] { passVariable(axes()); }},
        {"label-type-missing", [] { pass(variable("Empty", 0, 0)); },
         [] { pass(label("Empty", QList<Label_Type_Info>())); }},
        {"label-size-missing",
         [] { passChanged(axes(), [](Label_Type_Info& record) { record.elementSizes.clear(); }); },
         [] { passVariable(structureVariable("One", 0, axisType())); }},
        {"label-size-missing", [] { passVariable(variable("Text", 10, 0)); },
         [] { passVariable(textVariable("Text", 0, 4)); }},
        {"label-type-code", [] { passVariable(variable("Odd", 11, 0)); },
         [] { passVariable(variable("Unused", 5, 0)); }},
        {"label-type-code", [] { passVariable(variable("Odd", 0, 0)); },
         [] { passVariable(variable("Even", 7, 0)); }},
    };
}

} // namespace tavmir::checked_tests
