// How many elements a one-shot read queues, and where.
#include "lists/once_read_fixture.h"

#include <climits>

using namespace tavmir::test;

namespace
{

class OnceReadExpansion : public OnceRead
{
};

TEST_F(OnceReadExpansion, BitsAndWordsOutsideAnArrayAreOneElementWhateverTheCount)
{
    for (const int count : {1, 5, 0, -3, INT_MAX}) {
        EXPECT_EQ(queued("P.B", count), Addresses{100}) << count;
        EXPECT_EQ(queued("P.W", count), Addresses{1000}) << count;
    }
}

TEST_F(OnceReadExpansion, BitsAndWordsOfAnArrayAreCutToItsLimit)
{
    EXPECT_EQ(queued("P.Bs[0]", 5), (Addresses{200, 201, 202}));
    EXPECT_EQ(queued("P.Bs[0]", 3), (Addresses{200, 201, 202}));
    EXPECT_EQ(queued("P.Bs[0]", 2), (Addresses{200, 201}));
    EXPECT_EQ(queued("P.Ws[0]", 5), (Addresses{2000, 2016, 2032}));
    EXPECT_EQ(queued("P.Ws[1]", 5), (Addresses{2016, 2032, 2048}))
        << "the limit does not shrink with the index";
    EXPECT_EQ(queued("P.Ws[0]", INT_MAX), (Addresses{2000, 2016, 2032}));
}

TEST_F(OnceReadExpansion, NoElementsOfAnArrayLeaveTheListAsItIs)
{
    for (const char* address : {"P.Bs[0]", "P.Ws[0]", "P.Ds[0]", "P.Us[0]"}) {
        for (const int count : {0, -1, INT_MIN}) {
            EXPECT_EQ(queued(address, count), Addresses{}) << address << ' ' << count;
        }
    }
    EXPECT_EQ(queued("P.Empty[5]", 4), Addresses{});
    EXPECT_EQ(queued("P.Reversed[5]", 4), Addresses{}) << "a negative limit";

    PLC_driver.onceReadList.append(element(4, 0));
    RW_VAR var = request("P.Ws[1]", 0);
    EXPECT_EQ(AddListOnceReadVar(&var), 1) << "the size, not 0";
    EXPECT_EQ(var.elementAddress, 2016);
    EXPECT_EQ(var.count, 1);
    EXPECT_EQ(var.dataType, 4);
}

TEST_F(OnceReadExpansion, DoubleWordsCountTwoUnitsEach)
{
    EXPECT_EQ(queued("P.Ds[0]", 5), (Addresses{4000, 4032, 4064}));
    EXPECT_EQ(queued("P.Us[0]", 5), (Addresses{6000, 6032, 6064}));
    EXPECT_EQ(queued("P.Ds[0]", 4), (Addresses{4000, 4032}));
    EXPECT_EQ(queued("P.Ds[0]", 1), Addresses{4000});
    EXPECT_EQ(queued("P.Ds[0]", 21).size(), 10u) << "(21 + 1) / 2 is 11, the limit 10";
    EXPECT_EQ(queued("P.Ds[0]", 2000000000).size(), 10u);
}

TEST_F(OnceReadExpansion, TheLargestCountWrapsBeforeItIsHalved)
{
    EXPECT_EQ(queued("P.Ds[0]", INT_MAX), Addresses{});
    EXPECT_EQ(queued("P.D", INT_MAX), Addresses{3000});
}

TEST_F(OnceReadExpansion, HalvingTruncatesTowardsZero)
{
    EXPECT_EQ(queued("P.Ds[0]", -2), Addresses{}) << "-1 / 2 is 0";
    EXPECT_EQ(queued("P.Ds[0]", -1), Addresses{});
}

TEST_F(OnceReadExpansion, DoubleWordsOutsideAnArrayAreOneElementWhateverTheCount)
{
    for (const int count : {5, 1, 0, -9}) {
        EXPECT_EQ(queued("P.D", count), Addresses{3000}) << count;
        EXPECT_EQ(queued("P.U", count), Addresses{5000}) << count;
    }
}

TEST_F(OnceReadExpansion, TextsAreLimitedByTheirWidthAndSteppedBy16)
{
    const Addresses eight = {7000, 7016, 7032, 7048, 7064, 7080, 7096, 7112};
    EXPECT_EQ(queued("P.T", 40), eight);
    EXPECT_EQ(queued("P.T", 8), eight);
    EXPECT_EQ(queued("P.T", 3), (Addresses{7000, 7016, 7032}));
    EXPECT_EQ(queued("P.T", 0), Addresses{});
    EXPECT_EQ(queued("P.T0", 40), Addresses{}) << "no width, no element";
}

TEST_F(OnceReadExpansion, TheTextLimitIsComparedUnsigned)
{
    EXPECT_EQ(queued("P.T", -1).size(), 8u) << "-1 is a large count";
    EXPECT_EQ(queued("P.T", INT_MIN).size(), 8u);
    EXPECT_EQ(queued("P.TNegative", 5).size(), 5u) << "-1 is a large width";
    EXPECT_EQ(queued("P.TNegative", -1), Addresses{}) << "the smaller one, as a count, is -1";
}

TEST_F(OnceReadExpansion, TextsDoNotLookAtTheArrayMembers)
{
    EXPECT_EQ(queued("P.Ts[1]", 5), (Addresses{8256, 8272, 8288, 8304, 8320}))
        << "the array's limit of 3 is not used";
}

TEST_F(OnceReadExpansion, AddressesWrapIn32Bits)
{
    passLabels({label("End", QList<Label_Type_Info>()
                                 << arrayVariable("W", 4, INT_MAX - 15, QList<int>() << 0 << 9))});
    EXPECT_EQ(queued("End.W[0]", 2), (Addresses{INT_MAX - 15, INT_MIN}));
}

} // namespace
