// Sizes and nesting of structures, counted without unrolling them.
#include "read_steps.h"

#include "address_walk.h"
#include "project_reader.h"

#include <algorithm>
#include <limits>

namespace tavmir::project
{

namespace
{

// Numbers are cut here so that products cannot overflow.
constexpr qint64 kFar = Q_INT64_C(1) << 40;

struct Extent {
    qint64 bits = 0;     // from the start to the end of the last element
    qint64 elements = 0; // leaf elements, whole arrays
};

qint64 cut(qint64 number)
{
    return std::min(number, kFar);
}

class TypeChecker
{
public:
    explicit TypeChecker(const Project& project)
        : project_(project), extents_(project.types.size()), depths_(project.types.size(), kUnknown)
    {
    }

    // How deep the type nests, 1 for a type without structures. Fills its extent.
    int checkType(size_t index)
    {
        if (depths_[index] == kOpen) {
            throw Refusal{
                project_.types[index].path,
                QString("structure %1 contains itself").arg(quoted(project_.types[index].name))};
        }
        if (depths_[index] != kUnknown) {
            return depths_[index];
        }
        depths_[index] = kOpen;
        const StructureType& type = project_.types[index];
        int depth = 1;
        Extent whole;
        // Each level of the recursion is a type that is open, so the depth is bounded by the
        // check below only together with this one.
        if (++open_ > kMaxStructureDepth) {
            throw Refusal{type.path,
                          QString("structures nest deeper than %1").arg(kMaxStructureDepth)};
        }
        for (const Variable& member : type.members) {
            if (member.type == DataType::structure) {
                depth = std::max(depth, 1 + checkType(static_cast<size_t>(member.structure)));
            }
            const Extent extent = extentOf(member);
            if (member.offset + extent.bits > type.size) {
                throw Refusal{member.path, QString("ends at bit %1, beyond the structure's size %2")
                                               .arg(member.offset + extent.bits)
                                               .arg(type.size)};
            }
            whole.elements = cut(whole.elements + extent.elements);
        }
        if (depth > kMaxStructureDepth) {
            throw Refusal{type.path,
                          QString("structures nest deeper than %1").arg(kMaxStructureDepth)};
        }
        whole.bits = type.size;
        --open_;
        extents_[index] = whole;
        depths_[index] = depth;
        return depth;
    }

    Extent extentOf(const Variable& variable) const
    {
        Extent single;
        single.elements = 1;
        if (variable.type == DataType::structure) {
            single = extents_[static_cast<size_t>(variable.structure)];
        } else if (variable.type == DataType::text) {
            single.bits = Q_INT64_C(16) * variable.words;
        } else {
            single.bits = arrayStride(project_, variable);
        }
        if (!variable.array) {
            return single;
        }
        qint64 lastIndex = 0; // as linearIndex of the high bounds
        qint64 product = 1;
        qint64 count = 1;
        const std::vector<IndexRange>& bounds = variable.array->bounds;
        for (size_t d = bounds.size(); d-- > 0;) {
            const qint64 size = bounds[d].high - bounds[d].low;
            lastIndex = cut(lastIndex + size * product);
            product *= size;
            count *= size + 1;
        }
        Extent whole;
        whole.bits = cut(lastIndex * arrayStride(project_, variable) + single.bits);
        whole.elements = cut(count * single.elements);
        return whole;
    }

private:
    static constexpr int kUnknown = 0;
    static constexpr int kOpen = -1;

    const Project& project_;
    std::vector<Extent> extents_;
    std::vector<int> depths_;
    int open_ = 0;
};

} // namespace

void checkTypes(const Project& project)
{
    TypeChecker checker(project);
    for (size_t i = 0; i < project.types.size(); ++i) {
        checker.checkType(i);
    }
    constexpr qint64 kAddressSpace = Q_INT64_C(1) << 32;
    qint64 elements = 0;
    for (const Label& label : project.labels) {
        for (const Variable& variable : label.variables) {
            const Extent extent = checker.extentOf(variable);
            if (variable.offset + extent.bits > kAddressSpace) {
                throw Refusal{variable.path, "ends beyond the last address 4294967295"};
            }
            elements += extent.elements;
            if (elements > kMaxElements) {
                throw Refusal{variable.path,
                              QString("the labels hold more than %1 elements").arg(kMaxElements)};
            }
        }
    }
}

} // namespace tavmir::project
