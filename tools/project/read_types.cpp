// "types" and "labels": structure types, variables and members.
#include "read_steps.h"

#include "address_walk.h"
#include "project_reader.h"
#include "type_words.h"
#include "value_format.h"

#include <QtCore/QSet>

#include <limits>

namespace tavmir::project
{

namespace
{

// Characters that have a meaning in address texts, on the command line, or in names that the
// host adds beside a text.
constexpr char kReservedCharacters[] = ".[],~=";

QString readName(const JsonObject& object)
{
    const QString name = object.text("name");
    if (name.isEmpty()) {
        object.refuse("name", "is empty");
    }
    for (const QChar character : name) {
        if (QString(kReservedCharacters).contains(character) || !character.isPrint()) {
            object.refuse("name", QString("%1: a name holds no control character and none of %2")
                                      .arg(quoted(name), kReservedCharacters));
        }
    }
    return name;
}

void refuseDuplicate(const JsonObject& object, QSet<QString>& seen, const QString& name)
{
    if (seen.contains(name)) {
        object.refuse("name", QString("%1 is there already").arg(quoted(name)));
    }
    seen.insert(name);
}

void readType(const JsonObject& object, const Project& project, Variable& variable)
{
    const QString name = object.text("type");
    if (const std::optional<DataType> plain = typeFromWord(name)) {
        variable.type = *plain;
        return;
    }
    for (size_t i = 0; i < project.types.size(); ++i) {
        if (project.types[i].name == name) {
            variable.type = DataType::structure;
            variable.structure = static_cast<int>(i);
            return;
        }
    }
    object.refuse("type", QString("unknown type %1").arg(quoted(name)));
}

IndexRange readRange(const QJsonValue& value, const QString& path)
{
    const QJsonArray pair = value.toArray();
    if (!value.isArray() || pair.size() != 2) {
        throw Refusal{path, "must be a pair [low, high]"};
    }
    IndexRange range;
    range.low = static_cast<int>(integerOf(pair.at(0), path + "[0]", -kMaxElements, kMaxElements));
    range.high = static_cast<int>(integerOf(pair.at(1), path + "[1]", -kMaxElements, kMaxElements));
    if (range.high <= range.low) {
        throw Refusal{
            path,
            QString("high bound %1 is not above low bound %2").arg(range.high).arg(range.low)};
    }
    return range;
}

ArrayShape readArray(const JsonObject& owner)
{
    const JsonObject object(owner.value("array"), owner.pathOf("array"), {"radix", "bounds"});
    ArrayShape shape;
    shape.radix = static_cast<int>(object.integer("radix", 2, 36, shape.radix));
    const QJsonArray bounds = object.array("bounds");
    if (bounds.isEmpty() || bounds.size() > kMaxDimensions) {
        object.refuse(
            "bounds",
            QString("1 to %1 pairs of low and high bound are needed").arg(kMaxDimensions));
    }
    qint64 elements = 1;
    for (int d = 0; d < bounds.size(); ++d) {
        const QString path = QString("%1[%2]").arg(object.pathOf("bounds")).arg(d);
        const IndexRange range = readRange(bounds.at(d), path);
        elements *= range.high - range.low + 1;
        if (elements > kMaxElements) {
            object.refuse("bounds", QString("more than %1 elements").arg(kMaxElements));
        }
        shape.bounds.push_back(range);
    }
    return shape;
}

void readExtras(const JsonObject& object, Variable& variable)
{
    if (object.has("array")) {
        variable.array = readArray(object);
    }
    variable.bitsAllowed = object.boolean("bits", false);
    if (variable.bitsAllowed && variable.type != DataType::word &&
        variable.type != DataType::dword) {
        object.refuse("bits", "only a word or dword has bits");
    }
    if (object.has("words") != (variable.type == DataType::text)) {
        object.refuse("words", object.has("words") ? "only a text has words" : "is missing");
    }
    if (variable.type != DataType::text) {
        return;
    }
    variable.words = static_cast<int>(object.integer("words", 1, kMaxTextWords));
    if (variable.array && variable.words > kTextArrayWords) {
        object.refuse("words",
                      QString("a text in an array has at most %1 words").arg(kTextArrayWords));
    }
}

// What the variable's values are meant to be, wherever they are shown and written. A real is a
// float: its bits are shown by whom asks for them only.
void readDeclaredFormat(const JsonObject& object, Variable& variable)
{
    const std::optional<Format> format = readFormatKey(object);
    if (!format) {
        return;
    }
    if (variable.type == DataType::structure) {
        object.refuse("format", "a structure has none; its members may have");
    }
    const Element element = makeElement(variable, 0, QString());
    const bool isReal = variable.type == DataType::real;
    if (!formatFits(element, *format) || (isReal && *format != Format::floating)) {
        object.refuse("format",
                      QString("a %1 is %2, not %3")
                          .arg(object.text("type"),
                               isReal ? formatName(Format::floating) : fittingFormats(element),
                               formatName(*format)));
    }
    variable.format = *format;
}

Variable readVariable(const QJsonValue& value, const QString& path, const QString& placeKey,
                      const Project& project, QSet<QString>& names)
{
    const JsonObject object(value, path,
                            {"name", "type", placeKey, "array", "bits", "words", "format"});
    Variable variable;
    variable.path = path;
    variable.name = readName(object);
    refuseDuplicate(object, names, variable.name);
    readType(object, project, variable);
    variable.offset =
        static_cast<quint32>(object.integer(placeKey, 0, std::numeric_limits<quint32>::max()));
    readExtras(object, variable);
    readDeclaredFormat(object, variable);
    return variable;
}

std::vector<Variable> readVariables(const JsonObject& owner, const QString& key,
                                    const QString& placeKey, const Project& project)
{
    const QJsonArray list = owner.array(key);
    if (list.isEmpty()) {
        owner.refuse(key, owner.has(key) ? "is empty" : "is missing");
    }
    std::vector<Variable> variables;
    QSet<QString> names;
    for (int i = 0; i < list.size(); ++i) {
        const QString path = QString("%1[%2]").arg(owner.pathOf(key)).arg(i);
        variables.push_back(readVariable(list.at(i), path, placeKey, project, names));
    }
    return variables;
}

} // namespace

void readTypes(const QJsonArray& list, Project& project)
{
    std::vector<JsonObject> objects;
    QSet<QString> names;
    for (int i = 0; i < list.size(); ++i) {
        objects.emplace_back(list.at(i), QString("types[%1]").arg(i),
                             QStringList{"name", "size", "members"});
        const JsonObject& object = objects.back();
        StructureType type;
        type.path = object.path();
        type.name = readName(object);
        refuseDuplicate(object, names, type.name);
        if (typeFromWord(type.name)) {
            object.refuse("name", QString("%1 is the name of a plain type").arg(quoted(type.name)));
        }
        type.size =
            static_cast<quint32>(object.integer("size", 1, std::numeric_limits<quint32>::max()));
        project.types.push_back(type);
    }
    for (size_t i = 0; i < objects.size(); ++i) {
        project.types[i].members = readVariables(objects[i], "members", "offset", project);
    }
}

void readLabels(const QJsonArray& list, Project& project)
{
    QSet<QString> names;
    for (int i = 0; i < list.size(); ++i) {
        const JsonObject object(list.at(i), QString("labels[%1]").arg(i), {"name", "variables"});
        Label label;
        label.path = object.path();
        label.name = readName(object);
        refuseDuplicate(object, names, label.name);
        label.variables = readVariables(object, "variables", "address", project);
        QHash<QString, int>& index = project.variableIndex[label.name];
        for (size_t v = 0; v < label.variables.size(); ++v) {
            index.insert(label.variables[v].name, static_cast<int>(v));
        }
        project.labelIndex.insert(label.name, i);
        project.labels.push_back(std::move(label));
    }
}

} // namespace tavmir::project
