#include "model/world.h"

#include "model/line_text.h"

namespace tavmir::model
{

namespace
{

const std::vector<Text> kNames = {u"A",   u"B",   u"a",      u"Run",  u"Axis",        u"Pos",
                                  u"Vel", u"x y", u"\u03A9", u"q\"t", u"Long_Name_1", u"C"};

std::int32_t randomOffset(SeededRandom& random)
{
    if (random.percent(2)) {
        return random.pick<std::int32_t>({INT32_MAX, INT32_MIN, INT32_MAX - 40, -64});
    }
    if (random.percent(30)) {
        return random.between(0, 200);
    }
    return 16 * random.between(0, 30);
}

std::vector<std::int32_t> randomBounds(SeededRandom& random, std::int32_t dimensions)
{
    std::vector<std::int32_t> bounds;
    bounds.push_back(
        random.percent(75) ? 10 : random.pick<std::int32_t>({16, 2, 8, 36, 0, 10, 16, 1, 37, -1}));
    for (std::int32_t d = 0; d < dimensions; ++d) {
        const std::int32_t low = random.percent(60) ? 0 : random.between(-3, 5);
        bounds.push_back(low);
        bounds.push_back(low + random.between(random.percent(4) ? -2 : 0, 12));
    }
    if (random.percent(2)) {
        bounds.resize(random.below(bounds.size()));
    }
    if (random.percent(1)) {
        bounds[bounds.size() / 2] = INT32_MIN;
    }
    return bounds;
}

void makeArray(SeededRandom& random, Label& label)
{
    label.typeFlags = static_cast<std::uint16_t>(label.typeFlags | 0x100);
    label.dimensionCount = random.between(1, 3);
    label.arrayBounds = randomBounds(random, label.dimensionCount);
    if (random.percent(3)) {
        label.dimensionCount = random.between(-1, 4);
    }
}

Label randomVariable(SeededRandom& random, int depth);

void fillMembers(SeededRandom& random, Label& type, int depth, int count)
{
    for (int i = 0; i < count; ++i) {
        type.members.push_back(randomVariable(random, depth + 1));
    }
    type.memberCount = static_cast<std::uint32_t>(type.members.size());
    if (random.percent(4)) {
        type.memberCount = static_cast<std::uint32_t>(random.below(type.members.size() + 3));
    }
}

Label randomStructureType(SeededRandom& random, int depth)
{
    Label type;
    type.name = u"Type";
    type.typeFlags = 0x200;
    fillMembers(random, type, depth, random.between(1, 4));
    return type;
}

Label randomVariable(SeededRandom& random, int depth)
{
    Label label;
    label.name = random.pick(kNames);
    label.offset = randomOffset(random);
    label.extraText = randomText(random);
    std::vector<std::uint16_t> codes = {1, 4, 4, 6, 6, 7, 10, 1, 4, 10};
    if (depth < 3) {
        codes.insert(codes.end(), {12, 12, 12});
    }
    label.typeFlags =
        random.percent(3) ? static_cast<std::uint16_t>(random.below(14)) : random.pick(codes);
    if (random.percent(40)) {
        label.typeFlags = static_cast<std::uint16_t>(label.typeFlags | 0x400);
    }
    if (random.percent(45)) {
        makeArray(random, label);
    }
    const bool isStructure = (label.typeFlags & 0xFF) == 12;
    if (isStructure && !random.percent(4)) {
        label.elementType.push_back(randomStructureType(random, depth));
    }
    if (!random.percent(5)) {
        label.elementSizes.push_back(isStructure ? 16 * random.between(1, 12)
                                                 : random.between(random.percent(5) ? -4 : 1, 40));
    }
    if (depth < 3 && random.percent(5)) {
        label.typeFlags = static_cast<std::uint16_t>(label.typeFlags | 0x200);
        fillMembers(random, label, depth, random.between(1, 3));
    }
    return label;
}

Text indexText(SeededRandom& random, std::int32_t number, std::int32_t radix)
{
    if (radix < 2 || radix > 36) {
        radix = 10;
    }
    const char digits[] = "0123456789abcdefghijklmnopqrstuvwxyz";
    std::int64_t rest = number < 0 ? -std::int64_t{number} : number;
    Text text;
    do {
        text.insert(text.begin(), static_cast<char16_t>(digits[rest % radix]));
        rest /= radix;
    } while (rest != 0);
    if (radix == 16 && random.percent(10)) {
        text.insert(0, u"0x");
    }
    if (number < 0) {
        text.insert(0, u"-");
    } else if (random.percent(2)) {
        text.insert(0, u"+");
    }
    return random.percent(2) ? u" " + text + u"\t" : text;
}

Text randomIndices(SeededRandom& random, const Label& label)
{
    if (random.percent(2)) {
        return random.pick<Text>({u"", u"x", u"1,", u"99999999999", u"--1", u"4294967296"});
    }
    Text text;
    std::int32_t dimensions = label.dimensionCount;
    if (random.percent(2)) {
        ++dimensions;
    }
    for (std::int32_t d = 0; d < dimensions; ++d) {
        const std::size_t at = 1 + 2 * static_cast<std::size_t>(d);
        std::int32_t number = 0;
        if (at + 1 < label.arrayBounds.size() && label.arrayBounds[at] > -100) {
            const std::int32_t low = label.arrayBounds[at];
            number = random.percent(95) ? low + random.between(0, 12) : low - 1;
        }
        const std::int32_t radix = label.arrayBounds.empty() ? 10 : label.arrayBounds[0];
        text += (d == 0 ? u"" : u",") + indexText(random, number, radix);
    }
    return text;
}

Text randomBitSuffix(SeededRandom& random)
{
    if (random.percent(8)) {
        return random.pick<Text>({u".[3]", u".b[x]", u".b]3[", u".b[", u".b[5].c", u".bit"});
    }
    const std::int32_t bit = random.percent(90) ? random.between(0, 33) : random.between(-40, 2);
    return u".b[" + textOf(std::to_string(bit)) + u"]";
}

Text walkInto(SeededRandom& random, const Label& entry, int depth)
{
    Text text = entry.name;
    const Label* end = &entry;
    // A structure reached without an instance: the part is looked up again among its members.
    if ((entry.typeFlags & 0x200) != 0 && !entry.members.empty()) {
        end = &random.pick(entry.members);
        text = end->name;
    }
    const bool wantsIndex = (end->typeFlags & 0x100) != 0;
    if (wantsIndex ? !random.percent(3) : random.percent(2)) {
        text += u"[" + randomIndices(random, *end) + u"]";
    }
    const bool isInstance = (end->typeFlags & 0xFF) == 12;
    if (isInstance && depth < 6 && !end->elementType.empty() &&
        !end->elementType[0].members.empty() && !random.percent(3)) {
        return text + u"." + walkInto(random, random.pick(end->elementType[0].members), depth + 1);
    }
    if ((end->typeFlags & 0x400) != 0 && random.percent(70)) {
        text += randomBitSuffix(random);
    }
    return text;
}

void scratch(SeededRandom& random, Text& text)
{
    const Text letters = u".[],0aA1 ";
    const std::size_t at = random.below(text.size() + 1);
    if (at < text.size() && random.percent(50)) {
        text.erase(at, 1);
    } else {
        text.insert(at, 1, letters[random.below(letters.size())]);
    }
}

} // namespace

Text randomText(SeededRandom& random)
{
    return random.pick<Text>(
        {u"", u"text", u"a\"b", u"back\\slash", u"t\tb", u"\u20AC \u00E9", u"0"});
}

Label randomLabel(SeededRandom& random)
{
    Label label;
    label.name = random.percent(3) ? random.pick<Text>({u"a.b", u"M[1]"})
                                   : random.pick<Text>({u"Main", u"Line", u"Main2", u"L\u00E9"});
    label.extraText = randomText(random);
    if (!random.percent(2)) {
        label.elementType.push_back(randomStructureType(random, 0));
    }
    if (label.elementType.empty()) {
        return label;
    }
    Label& type = label.elementType.front();
    for (int i = random.between(2, 6); i > 0; --i) {
        type.members.push_back(randomVariable(random, 1));
    }
    if (!random.percent(4)) {
        type.memberCount = static_cast<std::uint32_t>(type.members.size());
    }
    return label;
}

Text randomAddress(SeededRandom& random, const std::vector<Label>& labels)
{
    const Label& label = random.pick(labels);
    Text text = label.name + (random.percent(3) ? u"[7]" : u"");
    if (!label.elementType.empty() && !label.elementType[0].members.empty()) {
        text += u"." + walkInto(random, random.pick(label.elementType[0].members), 0);
    }
    if (random.percent(3)) {
        return random.pick<Text>({u"", u"Main", u"Nowhere.A", u"Main.Nowhere", u"Main..A", u"."});
    }
    if (random.percent(4)) {
        scratch(random, text);
    }
    return text;
}

} // namespace tavmir::model
