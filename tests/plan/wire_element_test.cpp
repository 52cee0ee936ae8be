// Values as elements on the wire.
#include "plan/wire_element.h"

#include "plan_project.h"

namespace tavmir::host
{

namespace
{

project::Element elementWith(project::DataType type, quint32 address, int words = 0)
{
    project::Element element;
    element.type = type;
    element.address = address;
    element.words = words;
    return element;
}

project::Element bitOf(project::DataType type, int bitNumber)
{
    project::Element element = elementWith(type, 160);
    element.bitNumber = bitNumber;
    return element;
}

using project::DataType;

} // namespace

TEST(WireElement, ClassesOfTypes)
{
    EXPECT_EQ(ElementClass::bits, elementClassOf(elementWith(DataType::bit, 0)));
    EXPECT_EQ(ElementClass::words, elementClassOf(elementWith(DataType::word, 0)));
    EXPECT_EQ(ElementClass::doubleWords, elementClassOf(elementWith(DataType::dword, 0)));
    EXPECT_EQ(ElementClass::doubleWords, elementClassOf(elementWith(DataType::real, 0)));
    EXPECT_EQ(ElementClass::words, elementClassOf(elementWith(DataType::text, 0, 2)));
    EXPECT_EQ(ElementClass::words, elementClassOf(bitOf(DataType::word, 3)));
    EXPECT_EQ(ElementClass::doubleWords, elementClassOf(bitOf(DataType::dword, 3)));
}

TEST(WireElement, OneValueIsOneElementATextOnePerWord)
{
    EXPECT_EQ((std::vector<WireElement>{{ElementClass::bits, 7, 3}}),
              wireElements(elementWith(DataType::bit, 7), 3));
    EXPECT_EQ((std::vector<WireElement>{{ElementClass::doubleWords, 320, 255}}),
              wireElements(elementWith(DataType::real, 320), 255));
    EXPECT_EQ((std::vector<WireElement>{{ElementClass::words, 160, 1}}),
              wireElements(bitOf(DataType::word, 15), 1));
    EXPECT_EQ((std::vector<WireElement>{{ElementClass::words, 320, 2},
                                        {ElementClass::words, 336, 2},
                                        {ElementClass::words, 352, 2}}),
              wireElements(elementWith(DataType::text, 320, 3), 2));
}

TEST(WireElement, AddressesAreSignedAndWrap)
{
    const auto parts = wireElements(elementWith(DataType::text, 0x7FFFFFF0, 2), 1);
    ASSERT_EQ(2u, parts.size());
    EXPECT_EQ(0x7FFFFFF0, parts[0].address);
    EXPECT_EQ(std::numeric_limits<qint32>::min(), parts[1].address);
    EXPECT_EQ(-16, wireElements(elementWith(DataType::word, 0xFFFFFFF0), 1)[0].address);
}

TEST(WireElement, OrderIsClassThenSignedAddressThenStation)
{
    const WireElement bit{ElementClass::bits, 900, 9};
    const WireElement low{ElementClass::words, -16, 9};
    const WireElement word{ElementClass::words, 160, 1};
    const WireElement elsewhere{ElementClass::words, 160, 2};
    const WireElement wide{ElementClass::doubleWords, -900, 0};
    const std::vector<WireElement> ordered = {bit, low, word, elsewhere, wide};
    for (size_t i = 0; i < ordered.size(); ++i) {
        for (size_t j = 0; j < ordered.size(); ++j) {
            EXPECT_EQ(i < j, ordered[i] < ordered[j]) << i << " " << j;
            EXPECT_EQ(i == j, ordered[i] == ordered[j]) << i << " " << j;
        }
    }
    EXPECT_TRUE(word.samePlace(elsewhere));
    EXPECT_FALSE(word.samePlace(low));
    EXPECT_FALSE(word.samePlace({ElementClass::bits, 160, 1}));
}

TEST(WireElement, BytesOfEachClass)
{
    EXPECT_EQ(1, valueBytesOf(ElementClass::bits));
    EXPECT_EQ(2, valueBytesOf(ElementClass::words));
    EXPECT_EQ(4, valueBytesOf(ElementClass::doubleWords));
}

TEST(WireElement, BytesOfAnElementAreItsValue)
{
    const QByteArray four("\x12\x34\x56\x78", 4);
    EXPECT_EQ(four, valueBytes(elementWith(DataType::dword, 0), four));
    EXPECT_EQ(four.left(2), valueBytes(elementWith(DataType::word, 0), four.left(2)));
    EXPECT_EQ(four.left(1), valueBytes(elementWith(DataType::bit, 0), four.left(1)));
}

TEST(WireElement, EachBitOfAWordOrDoubleWordIsOneByte)
{
    for (int bit = 0; bit < 32; ++bit) {
        QByteArray only(4, '\0');
        only[bit / 8] = static_cast<char>(1 << (bit % 8));
        QByteArray others(4, '\xFF');
        others[bit / 8] = static_cast<char>(~(1 << (bit % 8)));
        const project::Element element = bitOf(DataType::dword, bit);
        EXPECT_EQ(QByteArray("\x01", 1), valueBytes(element, only)) << bit;
        EXPECT_EQ(QByteArray("\x00", 1), valueBytes(element, others)) << bit;
        if (bit < 16) {
            EXPECT_EQ(QByteArray("\x01", 1), valueBytes(bitOf(DataType::word, bit), only.left(2)));
        }
    }
}

TEST(WireElement, ABitBehindTheBytesIsZero)
{
    const QByteArray set(2, '\xFF');
    EXPECT_EQ(QByteArray("\x01", 1), valueBytes(bitOf(DataType::dword, 15), set));
    EXPECT_EQ(QByteArray("\x00", 1), valueBytes(bitOf(DataType::dword, 16), set));
    EXPECT_EQ(QByteArray("\x00", 1), valueBytes(bitOf(DataType::word, 0), QByteArray()));
}

} // namespace tavmir::host
