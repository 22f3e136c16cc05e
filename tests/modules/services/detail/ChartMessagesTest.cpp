#include "modules/services/detail/ChartMessages.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "tests/modules/services/support/FakeKestrin.h"
#include "tests/support/PrintCString.h"

namespace tvk::services {
namespace {

ChartKey keyOf(char const * symbol, int kind, char const * period) {
    return {symbol, static_cast<PriceKindEnum>(kind), period};
}

TEST(ChartMessages, ChartsStandInOneOrder) {
    std::vector<ChartKey> const ordered = {
        keyOf("", 0, ""),          keyOf("7203", std::numeric_limits<int>::min(), ""),
        keyOf("7203", 1, ""),      keyOf("7203", 1, "5"),
        keyOf("7203", 1, "D"),     keyOf("7203", 1, "d"),
        keyOf("7203", 2, "5"),     keyOf("7203a", 1, "5"),
        keyOf("\x83\x5C", 1, "5"),
    };
    for (std::size_t left = 0; left < ordered.size(); ++left) {
        for (std::size_t right = 0; right < ordered.size(); ++right) {
            EXPECT_EQ(ordered[left] < ordered[right], left < right) << left << ' ' << right;
        }
    }
}

TEST(ChartMessages, SubjectsHoldAllThree) {
    EXPECT_EQ(subjectOf(keyOf("7203", 4, "60")), "7203/4/60");
    EXPECT_EQ(subjectOf(keyOf("", -1, "")), "/-1/");
}

TEST(ChartMessages, PeriodsMayBeNumbers) {
    std::vector<CString> periods{"old"};
    ErrorInfo error;
    EXPECT_TRUE(
        readPeriods(*test::messageOf(MSGKIND_REPLY, "chartPeriods", R"({"periods":[1,"D",1.50]})"),
                    6, &periods, &error));
    EXPECT_EQ(periods, (std::vector<CString>{"1", "D", "1.50"}));
    EXPECT_FALSE(error.hasError());
}

TEST(ChartMessages, NegativePriceKindsAreTheBackEndsOwn) {
    ChartUpdate update;
    ErrorInfo error;
    EXPECT_TRUE(readUpdate(*test::messageOf(MSGKIND_NOTICE, "chart",
                                            R"({"symbol":"a","priceKind":-2147483648,)"
                                            R"("periodType":"b","date":"","time":"","open":1,)"
                                            R"("high":1,"low":1,"close":1,"volume":1})"),
                           6, &update, &error));
    EXPECT_EQ(static_cast<int>(update.chart.priceKind), std::numeric_limits<int>::min());
    EXPECT_FALSE(update.isReset);
}

TEST(ChartMessages, AResetNeedsItsSymbolAlone) {
    ChartUpdate update;
    ErrorInfo error;
    EXPECT_TRUE(readUpdate(*test::messageOf(MSGKIND_NOTICE, "chart", R"({"symbol":"a","reset":1})"),
                           6, &update, &error));
    EXPECT_TRUE(update.isReset);
    EXPECT_EQ(update.chart.symbolCode, "a");
    EXPECT_TRUE(update.record.isNull());
}

}  // namespace
}  // namespace tvk::services
