#include "examples/support/CandleScale.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace tvk::test {

namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr CandleScale::Area PRICES{10, 20, 400, 200};
constexpr CandleScale::Area VOLUMES{10, 230, 400, 50};

Candle candle(double low, double high, double volume = 0) {
    return {"20260731", "093000", low, high, low, high, volume};
}

CandleScale scaleOf(std::vector<Candle> const & candles) { return {candles, PRICES, VOLUMES}; }

}  // namespace

TEST(CandleScale, PutsEachCandleInTheMiddleOfItsColumn) {
    CandleScale const scale = scaleOf({candle(1, 2), candle(1, 2), candle(1, 2), candle(1, 2)});
    EXPECT_DOUBLE_EQ(scale.middleOf(0), 60);
    EXPECT_DOUBLE_EQ(scale.middleOf(3), 360);
    EXPECT_GT(scale.bodyWidth(), 0);
    EXPECT_LT(scale.bodyWidth(), 100);
}

TEST(CandleScale, FillsTheAreaFromLowestToHighestWithAir) {
    CandleScale const scale = scaleOf({candle(110, 120), candle(100, 110), candle(190, 200)});
    EXPECT_DOUBLE_EQ(scale.yOf(95), PRICES.bottom());
    EXPECT_DOUBLE_EQ(scale.yOf(205), PRICES.top);
    EXPECT_DOUBLE_EQ(scale.yOf(150), PRICES.top + PRICES.height / 2);
}

TEST(CandleScale, GivesTheHighestVolumeTheWholeHeight) {
    CandleScale const scale = scaleOf({candle(1, 2, 50), candle(1, 2, 200)});
    EXPECT_EQ(scale.highestVolume(), 200);
    EXPECT_DOUBLE_EQ(scale.yOfVolume(200), VOLUMES.top);
    EXPECT_DOUBLE_EQ(scale.yOfVolume(50), VOLUMES.bottom() - VOLUMES.height / 4);
    EXPECT_DOUBLE_EQ(scale.yOfVolume(0), VOLUMES.bottom());
}

TEST(CandleScale, PutsEqualPricesInTheMiddle) {
    for (double const price : {100.0, 0.0, -5.0, 1e15, 1e-12}) {
        CandleScale const scale = scaleOf({candle(price, price), candle(price, price)});
        EXPECT_DOUBLE_EQ(scale.yOf(price), PRICES.top + PRICES.height / 2) << price;
        EXPECT_FALSE(scale.priceMarks(6).prices.empty()) << price;
    }
}

TEST(CandleScale, AnswersWithoutCandles) {
    CandleScale const scale = scaleOf({});
    EXPECT_THAT(scale.timeMarks(50), IsEmpty());
    EXPECT_DOUBLE_EQ(scale.yOfVolume(0), VOLUMES.bottom());
    EXPECT_TRUE(std::isfinite(scale.yOf(0)));
    EXPECT_TRUE(std::isfinite(scale.bodyWidth()));
    EXPECT_FALSE(scale.priceMarks(5).prices.empty());
}

TEST(CandleScale, MarksRoundPricesWithinTheArea) {
    struct Row {
        double low;
        double high;
        int atMost;
        std::vector<double> prices;
        int decimals;
    };
    Row const rows[] = {
        {100, 200, 6, {100, 120, 140, 160, 180, 200}, 0},
        {100, 200, 3, {100, 150, 200}, 0},
        {1, 1.4, 5, {1, 1.1, 1.2, 1.3, 1.4}, 1},
        {0.01, 0.05, 5, {0.01, 0.02, 0.03, 0.04, 0.05}, 2},
        {-10, 10, 5, {-10, -5, 0, 5, 10}, 0},
        {1700, 1800, 1, {1800}, 0},
    };
    for (Row const & row : rows) {
        auto const marks = scaleOf({candle(row.low, row.high)}).priceMarks(row.atMost);
        EXPECT_THAT(marks.prices, testing::Pointwise(testing::DoubleNear(1e-9), row.prices))
            << row.low << " to " << row.high;
        EXPECT_EQ(marks.decimals, row.decimals) << row.low << " to " << row.high;
    }
}

TEST(CandleScale, MarksNoNegativeZero) {
    auto const marks = scaleOf({candle(-0.4, 3)}).priceMarks(5);
    for (double const price : marks.prices) {
        EXPECT_FALSE(price == 0 && std::signbit(price));
    }
}

TEST(CandleScale, MarksTimesFromTheNewestBack) {
    std::vector<Candle> const ten(10, candle(1, 2));
    EXPECT_THAT(scaleOf(ten).timeMarks(40), ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8, 9));
    EXPECT_THAT(scaleOf(ten).timeMarks(100), ElementsAre(0, 3, 6, 9));
    EXPECT_THAT(scaleOf(ten).timeMarks(161), ElementsAre(4, 9));
    EXPECT_THAT(scaleOf(ten).timeMarks(1e6), ElementsAre(9));
}

TEST(CandleScale, KeepsWhatItAnswersFiniteForAnyRange) {
    struct Row {
        double low;
        double high;
    };
    for (Row const row :
         {Row{-1e15, 1e15}, Row{0, 1e-300}, Row{1e15, 1e15 + 0.125}, Row{0, 1e-6}}) {
        CandleScale const scale = scaleOf({candle(row.low, row.high)});
        std::vector<double> const marks = scale.priceMarks(8).prices;
        std::vector<double> places{scale.yOf(row.low), scale.yOf(row.high)};
        for (double const mark : marks) {
            places.push_back(scale.yOf(mark));
        }
        EXPECT_THAT(places, Each(testing::AllOf(testing::Ge(PRICES.top - 1e-6),
                                                testing::Le(PRICES.bottom() + 1e-6))))
            << row.low << " to " << row.high;
        EXPECT_LE(marks.size(), 8U);
        EXPECT_LT(scale.priceMarks(8).decimals, 12);
    }
}

}  // namespace tvk::test
