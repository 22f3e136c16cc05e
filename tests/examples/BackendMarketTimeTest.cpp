#include "examples/backend/MarketTime.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tvk::test {

using namespace backend;

namespace {

constexpr long long MILLISEC_PER_MINUTE = 60'000;

struct Moment {
    long long milliSec;
    char const * text;  // in Tokyo
};

}  // namespace

TEST(BackendMarketTime, IsThatOfTokyo) {
    std::vector<Moment> const moments = {
        {0, "19700101090000"},
        {1'000'000'000'000, "20010909104640"},
        {1'709'175'599'999, "20240229115959"},
        {1'709'218'799'999, "20240229235959"},
        {1'709'218'800'000, "20240301000000"},
        {4'102'412'399'000, "20991231235959"},
        {-32'400'000, "19700101000000"},
        {-32'400'001, "19691231235959"},
    };
    for (Moment const & moment : moments) {
        SCOPED_TRACE(moment.text);
        std::string const text = moment.text;
        EXPECT_EQ(dateTimeTextOf(moment.milliSec), text);
        EXPECT_EQ(timeTextOf(moment.milliSec), text.substr(8));
        Minute const minute = minuteOf(moment.milliSec);
        EXPECT_EQ(dateText(minute), text.substr(0, 8));
        EXPECT_EQ(timeText(minute), text.substr(8, 4) + "00");
    }
}

TEST(BackendMarketTime, CountsMinutesFrom1970InTokyo) {
    EXPECT_EQ(minuteOf(0), 9 * 60);
    EXPECT_EQ(minuteOf(MILLISEC_PER_MINUTE - 1), 9 * 60);
    EXPECT_EQ(minuteOf(MILLISEC_PER_MINUTE), 9 * 60 + 1);
}

TEST(BackendMarketTime, ReadsDates) {
    EXPECT_EQ(minuteOfDate("19700101"), 0);
    EXPECT_EQ(minuteOfDate("19700102"), MINUTES_PER_DAY);
    for (char const * const date : {"20000229", "20240229", "20261121", "29991231"}) {
        SCOPED_TRACE(date);
        auto const minute = minuteOfDate(date);
        ASSERT_TRUE(minute);
        EXPECT_EQ(dateText(*minute), date);
        EXPECT_EQ(timeText(*minute), "000000");
    }
}

TEST(BackendMarketTime, RefusesWhatIsNoDate) {
    for (char const * const date :
         {"", "2026112", "202611211", "2026-1-1", "20261301", "20260010", "20260132", "20260229",
          "19000229", "19691231", "30000101", " 2026112", "+2026112", "abcdefgh"}) {
        EXPECT_FALSE(minuteOfDate(date)) << date;
    }
}

}  // namespace tvk::test
