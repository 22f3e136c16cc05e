#include "modules/asio/detail/OpenRequests.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

#include "tvk/values/MappedMessage.h"

namespace {

using tvk::detail::OpenRequests;
using tvk::detail::Operation;
using OperationPtr = OpenRequests::OperationPtr;
using Time = OpenRequests::Time;

struct NoOwner final : Operation::Owner {
    int canceled = 0;
    void cancel(Operation &) override { ++canceled; }
};

class OpenRequestsTest : public testing::Test {
protected:
    OperationPtr make(unsigned long long number) {
        return new Operation(owner_, number, false, new tvk::MappedMessage, nullptr, nullptr);
    }
    static Time at(int milliSec) { return Time() + std::chrono::milliseconds(milliSec); }

    NoOwner owner_;
    OpenRequests open_;
};

TEST_F(OpenRequestsTest, AreFoundUntilTheyAreRemoved) {
    OperationPtr const operation = make(7);
    open_.add(operation);
    EXPECT_EQ(open_.find(7), operation);
    EXPECT_TRUE(open_.find(8).isNull());
    EXPECT_TRUE(open_.remove(*operation));
    EXPECT_FALSE(open_.remove(*operation));
    EXPECT_TRUE(open_.find(7).isNull());
    EXPECT_TRUE(open_.isEmpty());
}

TEST_F(OpenRequestsTest, StandInTheOrderOfTheirNumbers) {
    for (unsigned long long const number : {30ULL, 10ULL, 1'000'000ULL, 20ULL}) {
        open_.add(make(number));
    }
    std::vector<unsigned long long> numbers;
    for (OperationPtr const & operation : open_.inOrder()) {
        numbers.push_back(operation->number());
    }
    EXPECT_EQ(numbers, (std::vector<unsigned long long>{10, 20, 30, 1'000'000}));
}

TEST_F(OpenRequestsTest, AreOverdueWhenTheirTimeHasCome) {
    for (unsigned long long const number : {1ULL, 2ULL, 3ULL}) {
        OperationPtr const operation = make(number);
        open_.add(operation);
        open_.setDeadline(*operation, at(number == 2 ? 5 : 10));
    }
    EXPECT_EQ(open_.earliestDeadline(), at(5));
    EXPECT_TRUE(open_.takeOverdue(at(4)).isNull());
    EXPECT_EQ(open_.takeOverdue(at(5))->number(), 2U);
    EXPECT_TRUE(open_.takeOverdue(at(5)).isNull());
    EXPECT_EQ(open_.takeOverdue(at(20))->number(), 1U);
    EXPECT_EQ(open_.takeOverdue(at(20))->number(), 3U);
    EXPECT_TRUE(open_.takeOverdue(at(20)).isNull());
    EXPECT_EQ(open_.earliestDeadline(), std::nullopt);
    EXPECT_EQ(open_.size(), 3U) << "being overdue does not close";
}

TEST_F(OpenRequestsTest, BehaveAsAPlainTableDoes) {
    std::mt19937 random(5);
    std::map<unsigned long long, int> model;  // number and deadline, 0 behind the deadline
    std::map<unsigned long long, OperationPtr> operations;
    unsigned long long last = 0;
    int now = 1;
    for (int step = 0; step < 5'000; ++step) {
        switch (random() % 4) {
            case 0:
            case 1: {
                OperationPtr const operation = make(++last);
                int const deadline = now + static_cast<int>(random() % 1000);
                open_.add(operation);
                open_.setDeadline(*operation, at(deadline));
                operations[last] = operation;
                model[last] = deadline;
                break;
            }
            case 2: {
                unsigned long long const number = 1 + random() % (last + 1);
                auto const entry = operations.find(number);
                if (entry != operations.end()) {
                    EXPECT_EQ(open_.remove(*entry->second), model.erase(number) == 1);
                    operations.erase(entry);
                }
                break;
            }
            default:
                now += static_cast<int>(random() % 5);
                for (;;) {
                    OperationPtr const overdue = open_.takeOverdue(at(now));
                    if (overdue.isNull()) {
                        break;
                    }
                    ASSERT_GT(model[overdue->number()], 0);
                    ASSERT_LE(model[overdue->number()], now);
                    model[overdue->number()] = 0;
                }
                for (auto const & entry : model) {
                    ASSERT_TRUE(entry.second == 0 || entry.second > now);
                }
                break;
        }
        ASSERT_EQ(open_.size(), model.size());
    }
}

TEST(OperationTest, AsksItsOwnerToCancelAsLongAsItIsOpen) {
    NoOwner owner;
    OperationPtr const operation(
        new Operation(owner, 1, true, new tvk::MappedMessage, nullptr, nullptr));
    EXPECT_TRUE(operation->isOwn());
    EXPECT_TRUE(operation->isPending());
    operation->cancel();
    EXPECT_EQ(owner.canceled, 1);
    operation->close(true);
    EXPECT_FALSE(operation->isPending());
    EXPECT_TRUE(operation->isCanceled());
    operation->cancel();
    EXPECT_EQ(owner.canceled, 1);
}

}  // namespace
