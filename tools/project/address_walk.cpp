// Follows an address text part by part, by the rules of the driver's parser.
#include "address_walk.h"

#include <QtCore/QStringList>

#include <algorithm>

namespace tavmir::project
{

namespace
{

enum DriverCode {
    kResolved = 0,
    kNotFound = 1,
    kNoLabel = 2,
    kBadIndex = 3,
    kEmptyText = 6,
    kTooFewParts = 11
};

// "Axis[1,2]" becomes "Axis" and "1,2"; the closing bracket is taken to be the last character.
bool splitIndex(QString& part, QString& index)
{
    if (!part.contains('[') || !part.contains(']')) {
        return false;
    }
    const int open = part.lastIndexOf('[');
    index = part.mid(open + 1, std::max(0, static_cast<int>(part.size()) - open - 2));
    part = part.left(open);
    return true;
}

const Variable* findMember(const std::vector<Variable>& members, const QString& name)
{
    for (const Variable& member : members) {
        if (member.name == name) {
            return &member;
        }
    }
    return nullptr;
}

class Walker
{
public:
    Walker(const Project& project, const QString& address)
        : project_(project), parts_(address.split('.'))
    {
    }

    AddressWalk run()
    {
        const Variable* variable = start();
        if (variable == nullptr) {
            return walk_;
        }
        walk_.base = variable->offset;
        int part = 1;
        while (enter(*variable, part)) {
            const StructureType& type = project_.types[static_cast<size_t>(variable->structure)];
            ++part;
            QString name = parts_.at(part);
            QString unused;
            splitIndex(name, unused);
            const Variable* member = findMember(type.members, name);
            if (member == nullptr) {
                fail(kResolved, QString("structure %1 has no member %2").arg(type.name, name));
                return walk_;
            }
            walk_.base = elementAddress() + member->offset;
            variable = member;
        }
        return walk_;
    }

private:
    const Variable* start()
    {
        if (parts_.size() == 1 && parts_.first().isEmpty()) {
            fail(kEmptyText, "the address is empty");
            return nullptr;
        }
        if (parts_.size() < 2) {
            fail(kTooFewParts, "an address is a label, a dot and a variable");
            return nullptr;
        }
        QString label = parts_.first();
        QString unused;
        splitIndex(label, unused);
        const auto known = project_.labelIndex.constFind(label);
        if (known == project_.labelIndex.constEnd()) {
            fail(kNoLabel, QString("there is no label %1").arg(label));
            return nullptr;
        }
        QString name = parts_.at(1);
        splitIndex(name, unused);
        const QHash<QString, int>& names = *project_.variableIndex.constFind(label);
        const auto found = names.constFind(name);
        if (found == names.constEnd()) {
            fail(kNotFound, QString("label %1 has no variable %2").arg(label, name));
            return nullptr;
        }
        const Label& owner = project_.labels[static_cast<size_t>(known.value())];
        return &owner.variables[static_cast<size_t>(found.value())];
    }

    // Takes the part that names `variable`. True: the next part names one of its members.
    bool enter(const Variable& variable, int part)
    {
        walk_.variable = &variable;
        walk_.indices.clear();
        QString name = parts_.at(part);
        QString index;
        const bool indexed = splitIndex(name, index);
        walk_.prefix = (QStringList(parts_.mid(0, part)) << name).join('.');
        const bool last = part + 1 == parts_.size();

        if (variable.array && !indexed) {
            walk_.openArray = last;
            fail(codeAt(part, variable.array->bounds.size() == 1 ? kBadIndex : kNotFound),
                 QString("%1 is an array and needs an index").arg(walk_.prefix));
            return false;
        }
        if (!variable.array && indexed) {
            fail(codeAt(part, kNotFound),
                 QString("%1 is no array and takes no index").arg(walk_.prefix));
            return false;
        }
        if (indexed && !takeIndices(*variable.array, index, part)) {
            return false;
        }
        if (last) {
            return false;
        }
        if (variable.type == DataType::structure) {
            return true;
        }
        takeBit(variable, part);
        return false;
    }

    bool takeIndices(const ArrayShape& shape, const QString& text, int part)
    {
        const QStringList items = text.split(',');
        if (static_cast<size_t>(items.size()) != shape.bounds.size()) {
            fail(codeAt(part, kNotFound), QString("%1 takes %2 indices, not %3")
                                              .arg(walk_.prefix)
                                              .arg(shape.bounds.size())
                                              .arg(items.size()));
            return false;
        }
        QString above;
        for (size_t d = 0; d < shape.bounds.size(); ++d) {
            const QString& item = items.at(static_cast<int>(d));
            bool isNumber = false;
            const int index = item.toInt(&isNumber, shape.radix);
            const IndexRange& range = shape.bounds[d];
            if (!isNumber || index < range.low) {
                fail(codeAt(part, kBadIndex),
                     isNumber
                         ? outOfRange(item, shape, range)
                         : QString("index %1 is no number in base %2").arg(item).arg(shape.radix));
                return false;
            }
            if (index > range.high && above.isEmpty()) {
                above = outOfRange(item, shape, range);
            }
            walk_.indices.push_back(index);
        }
        if (!above.isEmpty()) {
            fail(kResolved, above); // the driver accepts it
            return false;
        }
        return true;
    }

    QString outOfRange(const QString& item, const ArrayShape& shape, const IndexRange& range) const
    {
        return QString("index %1 of %2 is outside %3..%4")
            .arg(item, walk_.prefix, indexText(range.low, shape.radix),
                 indexText(range.high, shape.radix));
    }

    void takeBit(const Variable& variable, int part)
    {
        const QString place = QStringList(parts_.mid(0, part + 1)).join('.');
        if (!variable.bitsAllowed) {
            fail(kResolved, QString("%1 has no bits or members").arg(place));
            return;
        }
        const QString& suffix = parts_.at(part + 1);
        const int open = suffix.lastIndexOf('[');
        bool isNumber = false;
        const int bit = suffix.mid(open + 1, suffix.size() - open - 2).toInt(&isNumber);
        if (part + 2 != parts_.size() || open < 1 || !suffix.endsWith(']') || !isNumber) {
            fail(kResolved, QString("a bit of %1 is written %1.b[number]").arg(place));
            return;
        }
        const int bits = variable.type == DataType::word ? 16 : 32;
        if (bit < 0 || bit >= bits) {
            fail(kResolved,
                 QString("bit %1 of %2 is outside 0..%3").arg(bit).arg(place).arg(bits - 1));
            return;
        }
        walk_.bitNumber = bit;
    }

    quint32 elementAddress() const
    {
        if (!walk_.variable->array) {
            return walk_.base;
        }
        return walk_.base + arrayStride(project_, *walk_.variable) *
                                linearIndex(*walk_.variable->array, walk_.indices);
    }

    // What happens behind the first variable does not show in the driver's result.
    static int codeAt(int part, int code) { return part == 1 ? code : kResolved; }

    void fail(int code, const QString& problem)
    {
        walk_.driverCode = code;
        walk_.problem = problem;
    }

    const Project& project_;
    const QStringList parts_;
    AddressWalk walk_;
};

} // namespace

AddressWalk walkAddress(const Project& project, const QString& address)
{
    return Walker(project, address).run();
}

} // namespace tavmir::project
