// When the driver is given another list, by what a search has found: a driver that only counts.
#include "session/searched_list.h"

#include "feed/made_exchange.h"

#include <gtest/gtest.h>

namespace tavmir::host
{

namespace
{

constexpr quint8 kNoAddress = 2;
constexpr size_t kVariables = 3;
constexpr std::chrono::milliseconds kStep(10);

int given = 0; // elements in the list that was given last

int takeList(QList<HOSTVAR>* records) noexcept
{
    given = records->size();
    return given;
}

class Searched : public testing::Test
{
protected:
    void SetUp() override
    {
        api_.rebuildPolled = takeList;
        for (size_t i = 0; i < kVariables; ++i) {
            polled_.push_back(
                madeVariable(project::DataType::word, 1600 + 16 * static_cast<int>(i)));
        }
        ASSERT_EQ("", list_.replace(polled_).toStdString());
        ASSERT_EQ(static_cast<int>(kVariables), given);
        now_ = Clock::now();
    }

    // The first variable is refused, alone: what the driver has is to change.
    void refuseFirst()
    {
        list_.polledRequestEnded(false, wireElements(polled_[0].element, polled_[0].station), now_);
        list_.search().answered();
        now_ += std::chrono::seconds(1);
        ASSERT_EQ(1u, list_.search().next(now_).size());
        now_ += kStep;
        list_.tried(TryEnd::refused, kNoAddress, now_);
        now_ += SearchedList::kLeastBetween;
    }

    void pass(size_t elements)
    {
        now_ += kStep;
        state_.passes.begins(now_);
        state_.passes.asked(elements, now_);
    }

    DriverApi api_;
    SessionState state_{api_, 0};
    SearchedList list_{state_, true};
    std::vector<PolledElement> polled_;
    Clock::time_point now_;
};

} // namespace

TEST_F(Searched, AWholePassLiesBetweenTwoLists)
{
    refuseFirst();
    list_.giveIfDue(now_);
    EXPECT_EQ(1u, state_.generation) << "no pass of the present list has been";
    pass(kVariables - 1);
    list_.giveIfDue(now_);
    EXPECT_EQ(1u, state_.generation) << "not all of it";
    pass(1);
    list_.giveIfDue(now_);
    EXPECT_EQ(2u, state_.generation);
    EXPECT_EQ(static_cast<int>(kVariables) - 1, given);
}

TEST_F(Searched, APassThatHasBegunIsNotCutShort)
{
    pass(kVariables);
    refuseFirst();
    pass(1);
    list_.giveIfDue(now_);
    EXPECT_EQ(1u, state_.generation);
    pass(kVariables - 1);
    list_.giveIfDue(now_);
    EXPECT_EQ(2u, state_.generation);
}

TEST_F(Searched, AListThatIsRightIsNotGivenAgain)
{
    pass(kVariables);
    list_.giveIfDue(now_);
    EXPECT_EQ(1u, state_.generation);
}

} // namespace tavmir::host
