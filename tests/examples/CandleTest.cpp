#include "examples/support/Candle.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

#include "tvk/chart/ChartHistoricalDataRecImpl.h"
#include "tvk/chart/ChartRealDataRecImpl.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk::test {

namespace {

struct Texts {
    char const * name;
    char const * open;
    char const * high;
    char const * low;
    char const * close;
    char const * volume;
};

template <class Record>
RefCountedPtr<Record> recordOf(Texts const & texts) {
    RefCountedPtr<Record> record(new Record);
    record->setDataDate("20260731");
    record->setDataTime("093000");
    record->setOpenPrice(texts.open);
    record->setHighPrice(texts.high);
    record->setLowPrice(texts.low);
    record->setClosePrice(texts.close);
    record->setVolume(texts.volume);
    return record;
}

std::optional<Candle> candleOfTexts(Texts const & texts) {
    return candleOf(*recordOf<ChartHistoricalDataRecImpl>(texts));
}

Candle candleAt(char const * date, char const * time, double close) {
    return {date, time, close, close, close, close, 0};
}

}  // namespace

TEST(Candle, TakesBothKindsOfRecord) {
    Texts const texts{"", "100", "102.5", "99.5", "101", "1200"};
    for (auto const & candle : {candleOf(*recordOf<ChartHistoricalDataRecImpl>(texts)),
                                candleOf(*recordOf<ChartRealDataRecImpl>(texts))}) {
        ASSERT_TRUE(candle.has_value());
        EXPECT_EQ(candle->date, "20260731");
        EXPECT_EQ(candle->time, "093000");
        EXPECT_EQ(candle->open, 100);
        EXPECT_EQ(candle->high, 102.5);
        EXPECT_EQ(candle->low, 99.5);
        EXPECT_EQ(candle->close, 101);
        EXPECT_EQ(candle->volume, 1200);
        EXPECT_TRUE(candle->isRising());
    }
}

TEST(Candle, RefusesWhatCannotBeDrawn) {
    Texts const rows[] = {
        {"an empty price", "", "2", "1", "1", "0"},
        {"no number", "1", "x", "1", "1", "0"},
        {"rubbish behind a number", "1", "2x", "1", "1", "0"},
        {"a blank", "1", "2", " 1", "1", "0"},
        {"infinity", "1", "inf", "1", "1", "0"},
        {"no number by name", "1", "2", "1", "nan", "0"},
        {"too large", "1", "1e16", "1", "1", "0"},
        {"open above high", "3", "2", "1", "1", "0"},
        {"close above high", "1", "2", "1", "3", "0"},
        {"open below low", "0", "2", "1", "1", "0"},
        {"close below low", "1", "2", "1", "0", "0"},
    };
    for (Texts const & row : rows) {
        EXPECT_FALSE(candleOfTexts(row).has_value()) << row.name;
    }
}

TEST(Candle, TakesAVolumeThatIsNoAmountForNone) {
    for (char const * const volume : {"", "x", "-1", "nan", "1e16"}) {
        auto const candle = candleOfTexts({"", "1", "2", "1", "2", volume});
        ASSERT_TRUE(candle.has_value()) << volume;
        EXPECT_EQ(candle->volume, 0) << volume;
    }
}

TEST(Candle, FallsWhereItClosesBelowItsOpening) {
    EXPECT_FALSE(candleOfTexts({"", "2", "2", "1", "1", "0"})->isRising());
    EXPECT_TRUE(candleOfTexts({"", "1", "2", "1", "1", "0"})->isRising());
}

TEST(Candle, LiveUpdateReplacesTheNewestOrFollowsIt) {
    std::vector<Candle> candles;
    takeLiveCandle(candles, candleAt("20260731", "093000", 1));
    ASSERT_EQ(candles.size(), 1U);
    takeLiveCandle(candles, candleAt("20260731", "093000", 2));
    ASSERT_EQ(candles.size(), 1U);
    EXPECT_EQ(candles[0].close, 2);
    takeLiveCandle(candles, candleAt("20260731", "093500", 3));
    ASSERT_EQ(candles.size(), 2U);
    takeLiveCandle(candles, candleAt("20260801", "093500", 4));
    ASSERT_EQ(candles.size(), 3U);
    EXPECT_EQ(candles[2].close, 4);
}

}  // namespace tvk::test
