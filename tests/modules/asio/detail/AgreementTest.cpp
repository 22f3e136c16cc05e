#include "modules/asio/detail/Agreement.h"

#include <gtest/gtest.h>

#include "tvk/values/MappedMessage.h"

namespace {

using tvk::detail::Agreement;
using MessagePtr = tvk::RefCountedPtr<tvk::KestrinMessage>;

class AgreementTest : public testing::Test {
protected:
    Agreement agreement_;
    MessagePtr const first_{new tvk::MappedMessage};
    MessagePtr const second_{new tvk::MappedMessage};
};

TEST_F(AgreementTest, BeginsOff) {
    EXPECT_TRUE(agreement_.isOff());
    EXPECT_EQ(agreement_.toTell(false), std::nullopt);
    EXPECT_EQ(agreement_.toTell(true), true);
    EXPECT_FALSE(agreement_.settle(nullptr, true));
}

TEST_F(AgreementTest, TellsEachChangeOnce) {
    agreement_.tell(true, first_);
    EXPECT_EQ(agreement_.toTell(true), std::nullopt);
    EXPECT_EQ(agreement_.toTell(false), false);
    EXPECT_TRUE(agreement_.settle(first_, true));
    EXPECT_FALSE(agreement_.settle(first_, true));
    EXPECT_EQ(agreement_.toTell(true), std::nullopt);
}

TEST_F(AgreementTest, OnlyTheLastAnswerCounts) {
    agreement_.tell(true, first_);
    agreement_.tell(false, second_);
    EXPECT_FALSE(agreement_.settle(first_, false));
    EXPECT_FALSE(agreement_.isOff());
    EXPECT_TRUE(agreement_.settle(second_, true));
    EXPECT_TRUE(agreement_.isOff());
}

TEST_F(AgreementTest, WhatIsRefusedIsOff) {
    agreement_.tell(true, first_);
    EXPECT_TRUE(agreement_.settle(first_, false));
    EXPECT_TRUE(agreement_.isOff());
    EXPECT_EQ(agreement_.toTell(true), true);
}

TEST_F(AgreementTest, WithoutAnswerEverythingIsToldAgain) {
    for (bool const on : {true, false}) {
        agreement_.tell(on, first_);
        agreement_.interrupt();
        EXPECT_EQ(agreement_.toTell(true), true);
        EXPECT_EQ(agreement_.toTell(false), false);
        EXPECT_FALSE(agreement_.settle(first_, true));
    }
}

TEST_F(AgreementTest, WhatWasAnsweredOutlastsALoss) {
    agreement_.tell(true, first_);
    agreement_.settle(first_, true);
    agreement_.interrupt();
    EXPECT_EQ(agreement_.toTell(true), std::nullopt);
    agreement_.reset();
    EXPECT_TRUE(agreement_.isOff());
}

}  // namespace
