#include "modules/services/detail/ListenerTable.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace tvk::services {
namespace {

struct Listener {
    char name;
    std::function<void()> during;
};

class ListenerTableTest : public testing::Test {
protected:
    Listener a_{'a', {}};
    Listener b_{'b', {}};
    Listener c_{'c', {}};
    ListenerTable<Listener> table_;
    bool goesOn_ = true;

    /// The names of those called.
    std::string pass(std::initializer_list<CString> texts) {
        std::string called;
        table_.pass(
            texts, [&] { return goesOn_; },
            [&](Listener & listener) {
                called += listener.name;
                if (listener.during) {
                    listener.during();
                }
            });
        return called;
    }
};

TEST_F(ListenerTableTest, IsEmptyAtFirst) {
    EXPECT_EQ(pass({"x"}), "");
    EXPECT_FALSE(table_.has("x", &a_));
    EXPECT_FALSE(table_.remove("x", &a_));
    EXPECT_TRUE(table_.all("x").empty());
}

TEST_F(ListenerTableTest, CallsInTheOrderOfTextsAndThenOfAddition) {
    table_.add("y", &c_);
    table_.add("x", &b_);
    table_.add("x", &a_);
    table_.add("x", &b_);
    EXPECT_EQ(pass({"x"}), "bab");
    EXPECT_EQ(pass({"x", "y"}), "babc");
    EXPECT_EQ(pass({"y", "x"}), "cbab");
    EXPECT_EQ(pass({"z", "y"}), "c");
    EXPECT_EQ(table_.all("x"), (std::vector<Listener *>{&b_, &a_, &b_}));
    EXPECT_TRUE(table_.has("x", &a_));
    EXPECT_FALSE(table_.has("y", &a_));
}

TEST_F(ListenerTableTest, RemovesTheFirstEntry) {
    table_.add("x", &b_);
    table_.add("x", &a_);
    table_.add("x", &b_);
    EXPECT_FALSE(table_.remove("y", &b_));
    EXPECT_FALSE(table_.remove("x", &c_));
    EXPECT_TRUE(table_.remove("x", &b_));
    EXPECT_EQ(pass({"x"}), "ab");
    EXPECT_TRUE(table_.remove("x", &b_));
    EXPECT_TRUE(table_.remove("x", &a_));
    EXPECT_FALSE(table_.remove("x", &a_));
    EXPECT_EQ(pass({"x"}), "");
}

TEST_F(ListenerTableTest, ClearEndsAPass) {
    table_.add("x", &a_);
    table_.add("x", &b_);
    table_.add("y", &c_);
    a_.during = [&] { table_.clear(); };
    EXPECT_EQ(pass({"x", "y"}), "a");
}

TEST_F(ListenerTableTest, AnEntryBeforeTheTurnThatGoesMovesNobody) {
    table_.add("x", &a_);
    table_.add("x", &b_);
    table_.add("x", &c_);
    b_.during = [&] { table_.remove("x", &a_); };
    EXPECT_EQ(pass({"x"}), "abc");
}

TEST_F(ListenerTableTest, WhatIsAddedMeanwhileWaitsUnderAllTexts) {
    table_.add("x", &a_);
    a_.during = [&] {
        a_.during = nullptr;
        table_.add("x", &b_);
        table_.add("y", &c_);
    };
    EXPECT_EQ(pass({"x", "y"}), "a");
    EXPECT_EQ(pass({"x", "y"}), "abc");
}

TEST_F(ListenerTableTest, APassInsideAPassSeesWhatIsThere) {
    table_.add("x", &a_);
    table_.add("x", &c_);
    std::string inside;
    a_.during = [&] {
        a_.during = nullptr;
        table_.add("x", &b_);
        inside = pass({"x"});
    };
    EXPECT_EQ(pass({"x"}), "ac");
    EXPECT_EQ(inside, "acb");
}

TEST_F(ListenerTableTest, GoesOnAsLongAsItIsTold) {
    table_.add("x", &a_);
    table_.add("x", &b_);
    table_.add("y", &c_);
    a_.during = [&] { goesOn_ = false; };
    EXPECT_EQ(pass({"x", "y"}), "a");
    EXPECT_EQ(pass({"x", "y"}), "");
}

}  // namespace
}  // namespace tvk::services
