#include "examples/desk/model/QuoteBoardModel.h"

#include <gtest/gtest.h>

#include "tests/examples/DeskMessages.h"

namespace {

using desk::QuoteBoardModel;
using desk::Tone;
using tvk::test::messageOf;
using Column = QuoteBoardModel::Column;

constexpr char FIRST_QUOTE[] =
    R"({"code":"7203","last":2540.5,"bid":2540,"ask":2541,"high":2566,"low":2490.5,)"
    R"("volume":2126400,"time":"093015","change":-9.5})";

class DeskQuoteBoardModel : public testing::Test {
protected:
    DeskQuoteBoardModel() {
        model.setSymbols({{"1201", "青潮水産", 1, 100}, {"7203", "みのり自動車", 0.5, 100}});
    }

    int take(std::string const & json, long long now) {
        return model.takeQuote(*messageOf(json), now);
    }

    QuoteBoardModel model;
};

TEST_F(DeskQuoteBoardModel, HasARowForEachSymbol) {
    EXPECT_EQ(model.rowCount(), 2);
    EXPECT_EQ(model.rowOf("7203"), 1);
    EXPECT_EQ(model.rowOf("9999"), -1);
    EXPECT_EQ(model.text(1, Column::CODE), "7203");
    EXPECT_EQ(model.text(1, Column::NAME), "みのり自動車");
    EXPECT_EQ(model.text(1, Column::LAST), "") << "no quote yet";
}

TEST_F(DeskQuoteBoardModel, ShowsAQuote) {
    EXPECT_EQ(take(FIRST_QUOTE, 1000), 1);
    struct Row {
        Column column;
        char const * text;
        Tone tone;
    };
    Row const rows[] = {
        {Column::LAST, "2,540.5", Tone::DOWN},   {Column::CHANGE, "-9.5", Tone::DOWN},
        {Column::PERCENT, "-0.37%", Tone::DOWN}, {Column::BID, "2,540.0", Tone::PLAIN},
        {Column::ASK, "2,541.0", Tone::PLAIN},   {Column::HIGH, "2,566.0", Tone::PLAIN},
        {Column::LOW, "2,490.5", Tone::PLAIN},   {Column::VOLUME, "2,126,400", Tone::PLAIN},
        {Column::TIME, "09:30:15", Tone::FAINT},
    };
    for (Row const & row : rows) {
        SCOPED_TRACE(QuoteBoardModel::title(row.column));
        EXPECT_EQ(model.text(1, row.column), row.text);
        EXPECT_EQ(model.tone(1, row.column), row.tone);
    }
}

TEST_F(DeskQuoteBoardModel, FlashesWhatChanged) {
    take(FIRST_QUOTE, 1000);
    EXPECT_EQ(model.flash(1, Column::LAST, 1000), 0) << "the first quote is no change";
    EXPECT_FALSE(model.isFlashing(1000));

    take(R"({"code":"7203","last":2541,"bid":2539.5,"ask":2541})", 2000);
    EXPECT_EQ(model.flash(1, Column::LAST, 2000), 1);
    EXPECT_EQ(model.flashTone(1, Column::LAST), Tone::UP);
    EXPECT_EQ(model.flashTone(1, Column::BID), Tone::DOWN);
    EXPECT_EQ(model.flash(1, Column::ASK, 2000), 0) << "the same as before";
    EXPECT_EQ(model.flash(0, Column::LAST, 2000), 0) << "another row";
    take(R"({"code":"7203","volume":3126400,"change":-9})", 2000);
    for (Column const calm : {Column::VOLUME, Column::CHANGE, Column::PERCENT, Column::TIME}) {
        EXPECT_EQ(model.flash(1, calm, 2000), 0) << QuoteBoardModel::title(calm);
    }
    EXPECT_TRUE(model.isFlashing(2000));
}

TEST_F(DeskQuoteBoardModel, FadesAFlash) {
    take(FIRST_QUOTE, 1000);
    take(R"({"code":"7203","last":2541})", 2000);
    long long const half = 2000 + QuoteBoardModel::FLASH_MILLISEC / 2;
    long long const end = 2000 + QuoteBoardModel::FLASH_MILLISEC;
    EXPECT_DOUBLE_EQ(model.flash(1, Column::LAST, half), 0.5);
    EXPECT_EQ(model.flash(1, Column::LAST, end), 0);
    EXPECT_TRUE(model.isFlashing(half));
    EXPECT_FALSE(model.isFlashing(end));
}

TEST_F(DeskQuoteBoardModel, KeepsWhatANoticeDoesNotHave) {
    take(FIRST_QUOTE, 1000);
    take(R"({"code":"7203","last":2541})", 2000);
    EXPECT_EQ(model.text(1, Column::HIGH), "2,566.0");
    EXPECT_EQ(model.text(1, Column::TIME), "09:30:15");
}

TEST_F(DeskQuoteBoardModel, LeavesStrangeNoticesAlone) {
    unsigned int const before = model.revision();
    EXPECT_EQ(take(R"({"code":"9999","last":1})", 1000), -1);
    EXPECT_EQ(take("{}", 1000), -1);
    EXPECT_EQ(model.revision(), before);
    EXPECT_EQ(take(R"({"code":"7203","last":[1],"volume":"many","change":{}})", 1000), 1);
    EXPECT_EQ(model.text(1, Column::LAST), "0.0");
    EXPECT_EQ(take(R"({"code":"7203","volume":1e300})", 1000), 1);
    EXPECT_FALSE(model.text(1, Column::VOLUME).empty());
}

TEST_F(DeskQuoteBoardModel, BeginsAnewWithNewSymbols) {
    take(FIRST_QUOTE, 1000);
    unsigned int const before = model.revision();
    model.setSymbols({{"7203", "みのり自動車", 0.5, 100}});
    EXPECT_NE(model.revision(), before);
    EXPECT_EQ(model.rowOf("7203"), 0);
    EXPECT_EQ(model.text(0, Column::LAST), "");
}

}  // namespace
