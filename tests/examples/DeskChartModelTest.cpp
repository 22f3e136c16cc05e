#include "examples/desk/model/ChartModel.h"

#include <gtest/gtest.h>

#include "examples/desk/Text.h"
#include "tvk/chart/ChartHistoricalDataRecImpl.h"
#include "tvk/chart/ChartRealDataRecImpl.h"

namespace {

using desk::ChartModel;
using desk::Symbol;
using desk::Tone;
using tvk::ChartHistoricalDataRec;
using tvk::ChartRealDataRec;
using tvk::RefCountedPtr;

Symbol const SYMBOL = {"7203", "みのり自動車", 0.5, 100};

template <class Record>
void fill(Record & record, char const * time, char const * close) {
    record.setDataDate("20261121");
    record.setDataTime(time);
    record.setOpenPrice("2540");
    record.setHighPrice("2560");
    record.setLowPrice("2500");
    record.setClosePrice(close);
    record.setVolume("1200");
}

RefCountedPtr<ChartHistoricalDataRec> barOf(char const * time, char const * close) {
    RefCountedPtr<ChartHistoricalDataRec> bar(new tvk::ChartHistoricalDataRecImpl);
    fill(*bar, time, close);
    return bar;
}

RefCountedPtr<ChartRealDataRec> updateOf(char const * time, char const * close) {
    RefCountedPtr<ChartRealDataRec> update(new tvk::ChartRealDataRecImpl);
    fill(*update, time, close);
    update->setSymbolCode("7203");
    update->setPeriodType("1");
    return update;
}

class DeskChartModel : public testing::Test {
protected:
    DeskChartModel() { model.show(&SYMBOL, "1"); }

    ChartModel model;
};

TEST_F(DeskChartModel, ShowsTheHistory) {
    model.takeHistory({barOf("093000", "2550"), barOf("093100", "2530"), barOf("093200", "no")});
    ASSERT_EQ(model.candles().size(), 2U) << "what cannot be drawn is left out";
    EXPECT_EQ(model.title(), "みのり自動車  7203  1分足");
    EXPECT_EQ(model.caption(), "始 2,540.0  高 2,560.0  安 2,500.0  終 2,530.0");
    EXPECT_EQ(model.tone(), Tone::DOWN);
    EXPECT_EQ(model.timeText(1), "09:31");
    EXPECT_FALSE(model.isLive());
}

TEST_F(DeskChartModel, MovesTheLiveBar) {
    model.takeHistory({barOf("093000", "2550"), barOf("093100", "2530")});
    model.takeUpdate(*updateOf("093100", "2545"));
    ASSERT_EQ(model.candles().size(), 2U);
    EXPECT_EQ(model.candles().back().close, 2545);
    EXPECT_TRUE(model.isLive());
    model.takeUpdate(*updateOf("093200", "2546"));
    EXPECT_EQ(model.candles().size(), 3U);
}

TEST_F(DeskChartModel, LeavesUpdatesOfOtherChartsAlone) {
    unsigned int const before = model.revision();
    auto const otherSymbol = updateOf("093000", "2550");
    otherSymbol->setSymbolCode("9407");
    auto const otherPeriod = updateOf("093000", "2550");
    otherPeriod->setPeriodType("5");
    auto const unreadable = updateOf("093000", "");
    for (auto const & update : {otherSymbol, otherPeriod, unreadable}) {
        model.takeUpdate(*update);
    }
    EXPECT_TRUE(model.candles().empty());
    EXPECT_EQ(model.revision(), before);
}

TEST_F(DeskChartModel, KeepsTheUpdateThatOvertookTheHistory) {
    model.takeUpdate(*updateOf("093100", "2545"));
    model.takeHistory({barOf("093000", "2550"), barOf("093100", "2530")});
    ASSERT_EQ(model.candles().size(), 2U);
    EXPECT_EQ(model.candles().back().close, 2545);
}

TEST_F(DeskChartModel, LetsTheOldestBarsGo) {
    std::vector<RefCountedPtr<ChartHistoricalDataRec>> bars;
    for (unsigned int index = 0; index < ChartModel::BAR_COUNT + 3; ++index) {
        bars.push_back(barOf(std::to_string(100000 + index).c_str(), "2550"));
    }
    model.takeHistory(bars);
    EXPECT_EQ(model.candles().size(), ChartModel::BAR_COUNT);
    EXPECT_EQ(model.candles().front().time, "100003");
    model.takeUpdate(*updateOf("200000", "2545"));
    EXPECT_EQ(model.candles().size(), ChartModel::BAR_COUNT);
}

TEST_F(DeskChartModel, BeginsAnewWithAnotherChart) {
    model.takeUpdate(*updateOf("093100", "2545"));
    model.show(&SYMBOL, "D");
    EXPECT_TRUE(model.candles().empty());
    EXPECT_FALSE(model.isLive());
    EXPECT_EQ(model.caption(), "");
    EXPECT_EQ(model.tone(), Tone::FAINT);
    model.takeHistory({barOf("000000", "2550")});
    EXPECT_EQ(model.timeText(0), "11/21") << "days have dates";

    model.show(nullptr, "1");
    EXPECT_EQ(model.title(), "銘柄を選んでください");
}

TEST_F(DeskChartModel, NamesPeriods) {
    EXPECT_EQ(ChartModel::periodText("1"), "1分足");
    EXPECT_EQ(ChartModel::periodText("60"), "60分足");
    EXPECT_EQ(ChartModel::periodText("D"), "日足");
    EXPECT_EQ(ChartModel::periodText("Q"), "Q");
}

}  // namespace
