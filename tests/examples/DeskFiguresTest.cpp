#include "examples/desk/model/Figures.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "tests/support/CommaLocale.h"

namespace {

using namespace desk;

TEST(DeskFigures, GiveAPriceTheDecimalsOfItsTick) {
    struct Row {
        double tick;
        int decimals;
    };
    for (Row const & row : {Row{1, 0}, Row{5, 0}, Row{50, 0}, Row{0.5, 1}, Row{0.1, 1},
                            Row{0.25, 2}, Row{0.001, 3}, Row{0.00001, 4}}) {
        SCOPED_TRACE(row.tick);
        EXPECT_EQ(decimalsOf(row.tick), row.decimals);
    }
}

TEST(DeskFigures, AreGroupedByThousands) {
    EXPECT_EQ(priceText(0, 0), "0");
    EXPECT_EQ(priceText(999, 1), "999.0");
    EXPECT_EQ(priceText(1000, 0), "1,000");
    EXPECT_EQ(priceText(1234567.25, 2), "1,234,567.25");
    EXPECT_EQ(priceText(-1234, 0), "-1,234");
    EXPECT_EQ(countText(0), "0");
    EXPECT_EQ(countText(12345678), "12,345,678");
}

TEST(DeskFigures, ShowASignWhereTheyAreDifferences) {
    EXPECT_EQ(signedText(12.5, 1), "+12.5");
    EXPECT_EQ(signedText(-1234.5, 1), "-1,234.5");
    EXPECT_EQ(signedText(0, 1), "0.0");
    EXPECT_EQ(signedText(-0.0, 0), "0");
    EXPECT_EQ(signedText(-0.04, 1), "0.0") << "what rounds to zero has no sign";
    EXPECT_EQ(percentText(0.536), "+0.54%");
    EXPECT_EQ(percentText(-12), "-12.00%");
}

TEST(DeskFigures, DoNotFollowTheLocale) {
    tvk::test::CommaLocale const locale;
    EXPECT_EQ(priceText(1234.5, 1), "1,234.5");
    EXPECT_EQ(typedPrice("1234.5"), 1234.5);
}

TEST(DeskFigures, TellATime) {
    EXPECT_EQ(timeText("093015"), "09:30:15");
    EXPECT_EQ(timeText(""), "");
    EXPECT_EQ(timeText("0930"), "0930");
    EXPECT_EQ(timeText("09a015"), "09a015");
}

TEST(DeskFigures, ReadWhatIsTyped) {
    EXPECT_EQ(typedCount("100"), 100);
    EXPECT_EQ(typedCount("1,000 "), 1000);
    EXPECT_EQ(typedCount("１，２００"), 1200);
    EXPECT_EQ(typedCount("　５０"), 50);
    EXPECT_EQ(typedCount("0"), 0);
    EXPECT_EQ(typedPrice("2540.5"), 2540.5);
    EXPECT_EQ(typedPrice("２，５４０．５"), 2540.5);
    EXPECT_EQ(typedPrice("12"), 12);
}

TEST(DeskFigures, RefuseWhatIsNoNumber) {
    for (char const * text : {"", " ", "-1", "+1", "1e3", "abc", "百", "1.5", "0x10", "／",
                              "1234567890123", "\xef\xbc", "１\xef"}) {
        SCOPED_TRACE(text);
        EXPECT_FALSE(typedCount(text).has_value());
    }
    for (char const * text : {"", ".", "1.", ".5", "1.2.3", "-1", "1e3", "nan", "inf", "１．"}) {
        SCOPED_TRACE(text);
        EXPECT_FALSE(typedPrice(text).has_value());
    }
}

TEST(DeskFigures, KnowPricesOnATick) {
    EXPECT_TRUE(isOnTick(978.4, 0.1));
    EXPECT_TRUE(isOnTick(2540.5, 0.5));
    EXPECT_FALSE(isOnTick(2540.3, 0.5));
    EXPECT_FALSE(isOnTick(7, 5));
    EXPECT_TRUE(isOnTick(0, 5));
}

TEST(DeskFigures, ReadBackWhatTheyWrite) {
    std::mt19937 random(7);
    for (int round = 0; round < 2000; ++round) {
        int const decimals = static_cast<int>(random() % 4);
        double const scale = std::pow(10, decimals);
        double const price = std::floor(static_cast<double>(random() % 100'000'000)) / scale;
        SCOPED_TRACE(price);
        EXPECT_NEAR(typedPrice(priceText(price, decimals)).value_or(-1), price, 1e-9 * price);
    }
}

}  // namespace
