#include "examples/session/CandleChart.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tvk::test {

namespace {

using session::CandleChart;
using session::shownDate;
using session::shownNumber;
using session::shownTime;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr char RISING[] = "#c8372d";
constexpr char FALLING[] = "#2b5fa8";

std::size_t timesIn(std::string const & text, std::string_view part) {
    std::size_t times = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++times;
    }
    return times;
}

Candle candle(char const * time, double open, double high, double low, double close,
              double volume = 100) {
    return {"20260731", time, open, high, low, close, volume};
}

CandleChart chartOf(std::vector<Candle> candles) {
    return {"7203", "1分足", std::move(candles), false};
}

}  // namespace

TEST(SessionCandleChart, IsAPictureThatStandsAlone) {
    std::string const svg = chartOf({candle("093000", 1, 2, 1, 2)}).toSvg();
    EXPECT_THAT(svg, StartsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                "<svg xmlns=\"http://www.w3.org/2000/svg\" "));
    EXPECT_THAT(svg, EndsWith("</svg>\n"));
    for (char const * const foreign : {"href", "<style", "<script", "<image", "url("}) {
        EXPECT_THAT(svg, Not(HasSubstr(foreign)));
    }
}

TEST(SessionCandleChart, ShowsTitleNoteExtremesAndLastPrice) {
    std::string const svg = chartOf({candle("093000", 1764, 1770.5, 1760, 1762),
                                     candle("093100", 1762, 1765, 1761, 1764)})
                                .toSvg();
    EXPECT_THAT(svg, HasSubstr("<title>7203</title>"));
    EXPECT_THAT(svg, HasSubstr(">1分足</text>"));
    EXPECT_THAT(svg, HasSubstr(">高値 1,770.5   安値 1,760.0   2本</text>"));
    EXPECT_THAT(svg, HasSubstr(">1,764.0</text>"));
    EXPECT_THAT(svg, HasSubstr(">出来高</text>"));
}

TEST(SessionCandleChart, DrawsARisingCandleRedAndAFallingOneBlue) {
    std::string const rising = chartOf({candle("093000", 1, 2, 1, 2)}).toSvg();
    EXPECT_THAT(rising, HasSubstr(RISING));
    EXPECT_THAT(rising, Not(HasSubstr(FALLING)));
    std::string const falling = chartOf({candle("093000", 2, 2, 1, 1)}).toSvg();
    EXPECT_THAT(falling, HasSubstr(FALLING));
    EXPECT_THAT(falling, Not(HasSubstr(RISING)));
}

TEST(SessionCandleChart, DrawsEachCandleWithItsFigures) {
    std::string const svg =
        chartOf({candle("093000", 1, 4, 0.5, 2, 1200), candle("093100", 2, 2, 1, 1)}).toSvg();
    EXPECT_EQ(timesIn(svg, "<g>"), 2U);
    EXPECT_THAT(svg, HasSubstr("<title>2026/07/31 09:30 始値1.0 高値4.0 安値0.5 終値2.0 "
                               "出来高1,200</title>"));
}

TEST(SessionCandleChart, MarksAChartThatIsStillMoving) {
    CandleChart chart = chartOf({candle("093000", 1, 2, 1, 2)});
    EXPECT_THAT(chart.toSvg(), Not(HasSubstr("リアルタイム")));
    chart.hasLive = true;
    EXPECT_THAT(chart.toSvg(), HasSubstr(">リアルタイム</text>"));
}

TEST(SessionCandleChart, WritesADateOnceAndTimesUnderTheirCandles) {
    std::string const svg =
        chartOf({candle("093000", 1, 2, 1, 2), candle("093100", 1, 2, 1, 2)}).toSvg();
    EXPECT_EQ(timesIn(svg, ">2026/07/31</text>"), 1U);
    EXPECT_EQ(timesIn(svg, ">09:30</text>"), 1U);
    EXPECT_EQ(timesIn(svg, ">09:31</text>"), 1U);
}

TEST(SessionCandleChart, WritesTheDateOfEachMarkWhereBarsAreDays) {
    Candle first = candle("", 1, 2, 1, 2);
    Candle second = candle("000000", 1, 2, 1, 2);
    second.date = "20260801";
    std::string const svg = chartOf({first, second}).toSvg();
    EXPECT_EQ(timesIn(svg, ">2026/07/31</text>"), 1U);
    EXPECT_EQ(timesIn(svg, ">2026/08/01</text>"), 1U);
}

TEST(SessionCandleChart, SaysThatItHasNoData) {
    std::string const svg = chartOf({}).toSvg();
    EXPECT_THAT(svg, HasSubstr(">データなし</text>"));
    EXPECT_THAT(svg, Not(HasSubstr("高値")));
    EXPECT_THAT(svg, Not(HasSubstr("nan")));
}

TEST(SessionCandleChart, DrawsFlatPricesSoThatTheyAreSeen) {
    std::string const svg =
        chartOf({candle("093000", 100, 100, 100, 100, 0), candle("093100", 100, 100, 100, 100, 0)})
            .toSvg();
    EXPECT_THAT(svg, HasSubstr("height=\"1.0\" fill=\""));
    for (char const * const wrong : {"nan", "inf", "=\"-"}) {
        EXPECT_THAT(svg, Not(HasSubstr(wrong)));
    }
}

TEST(SessionCandleChart, KeepsManyCandlesVisible) {
    std::string const svg =
        chartOf(std::vector<Candle>(5000, candle("093000", 1, 2, 1, 2))).toSvg();
    EXPECT_THAT(svg, HasSubstr("width=\"1.0\""));
    EXPECT_THAT(svg, Not(HasSubstr("width=\"0.")));
}

TEST(SessionCandleChart, ShowsMarkupAsText) {
    CandleChart chart = chartOf({candle("<b>&", 1, 2, 1, 2)});
    chart.title = "</title><script>\"&'\x01";
    std::string const svg = chart.toSvg();
    EXPECT_THAT(svg, HasSubstr(">&lt;/title&gt;&lt;script&gt;&quot;&amp;&#39;\\x01<"));
    EXPECT_THAT(svg, HasSubstr(">&lt;b&gt;&amp;</text>"));
    EXPECT_THAT(svg, Not(HasSubstr("<script")));
}

TEST(SessionCandleChart, ShowsDatesAndTimesThatAreDigits) {
    EXPECT_EQ(shownDate("20260731"), "2026/07/31");
    EXPECT_EQ(shownTime("093059"), "09:30");
    EXPECT_EQ(shownTime("000000"), "");
    for (char const * const other : {"", "2026073", "202607311", "2026-07-"}) {
        EXPECT_EQ(shownDate(other), other);
    }
    for (char const * const other : {"", "0930", "09:30:"}) {
        EXPECT_EQ(shownTime(other), other);
    }
}

TEST(SessionCandleChart, ShowsNumbersWithCommas) {
    struct Row {
        double number;
        int decimals;
        char const * text;
    };
    Row const rows[] = {
        {0, 0, "0"},
        {999, 0, "999"},
        {1000, 0, "1,000"},
        {1764.5, 1, "1,764.5"},
        {1234567.25, 2, "1,234,567.25"},
        {-999, 0, "-999"},
        {-1000, 1, "-1,000.0"},
        {0.5, 2, "0.50"},
        {1e15, 0, "1,000,000,000,000,000"},
    };
    for (Row const & row : rows) {
        EXPECT_EQ(shownNumber(row.number, row.decimals), row.text);
    }
}

}  // namespace tvk::test
