#include "examples/desk/model/QuoteBoardModel.h"

#include <algorithm>
#include <utility>

#include "examples/desk/Text.h"
#include "examples/desk/model/Figures.h"
#include "examples/support/Fields.h"
#include "tvk/platform/Numbers.h"

namespace desk {

namespace {

struct ColumnInfo {
    char const * title;
    bool isNumber;
    bool flashes = false;
};

/// Prices flash. What follows from them, and a volume that only ever grows, would flash all the time.
constexpr ColumnInfo COLUMNS[] = {
    {"コード", false},    {"銘柄", false},        {"現在値", true, true}, {"前日比", true},
    {"騰落率", true},     {"買気配", true, true}, {"売気配", true, true}, {"高値", true, true},
    {"安値", true, true}, {"出来高", true},       {"時刻", true},
};
static_assert(std::size(COLUMNS) == QuoteBoardModel::COLUMN_COUNT);

/// Against the close of the day before, which the change tells.
double percentOf(double last, double change) {
    double const before = last - change;
    return before != 0 ? change / before * 100 : 0;
}

}  // namespace

char const * QuoteBoardModel::title(Column column) { return COLUMNS[column].title; }

bool QuoteBoardModel::isNumber(Column column) { return COLUMNS[column].isNumber; }

void QuoteBoardModel::setSymbols(std::vector<Symbol> symbols) {
    symbols_ = std::move(symbols);
    rows_.assign(symbols_.size(), Row());
    rowOfCode_.clear();
    for (std::size_t index = 0; index < symbols_.size(); ++index) {
        rows_[index].decimals = decimalsOf(symbols_[index].tick);
        rowOfCode_.emplace(symbols_[index].code, static_cast<int>(index));
    }
    lastChange_ = -FLASH_MILLISEC;
    ++revision_;
}

int QuoteBoardModel::rowOf(std::string const & code) const {
    auto const found = rowOfCode_.find(code);
    return found != rowOfCode_.end() ? found->second : -1;
}

int QuoteBoardModel::takeQuote(tvk::RecordData const & notice, long long now) {
    int const index = rowOf(utf8(textIn(notice, "code")));
    if (index < 0) {
        return -1;
    }
    Row & row = rows_[static_cast<std::size_t>(index)];
    take(row, LAST, notice, "last", now);
    take(row, CHANGE, notice, "change", now);
    take(row, BID, notice, "bid", now);
    take(row, ASK, notice, "ask", now);
    take(row, HIGH, notice, "high", now);
    take(row, LOW, notice, "low", now);
    take(row, VOLUME, notice, "volume", now);
    put(row, PERCENT, percentOf(row.cells[LAST].value, row.cells[CHANGE].value), now);
    if (scalarIn(notice, "time")) {
        row.time = timeText(utf8(textIn(notice, "time")));
    }
    row.hasQuote = true;
    ++revision_;
    return index;
}

std::string QuoteBoardModel::text(int row, Column column) const {
    auto const index = static_cast<std::size_t>(row);
    if (column == CODE) {
        return symbols_[index].code;
    }
    if (column == NAME) {
        return symbols_[index].name;
    }
    Row const & quoted = rows_[index];
    if (!quoted.hasQuote) {
        return {};
    }
    double const value = quoted.cells[column].value;
    switch (column) {
        case CHANGE:
            return signedText(value, quoted.decimals);
        case PERCENT:
            return percentText(value);
        case VOLUME:
            return countText(tvk::platform::truncateToInt64(value));
        case TIME:
            return quoted.time;
        default:
            return priceText(value, quoted.decimals);
    }
}

Tone QuoteBoardModel::tone(int row, Column column) const {
    Row const & quoted = rows_[static_cast<std::size_t>(row)];
    switch (column) {
        case LAST:
        case CHANGE:
        case PERCENT:
            return toneOf(quoted.cells[CHANGE].value);
        case CODE:
        case TIME:
            return Tone::FAINT;
        default:
            return Tone::PLAIN;
    }
}

double QuoteBoardModel::flash(int row, Column column, long long now) const {
    Cell const & cell = rows_[static_cast<std::size_t>(row)].cells[column];
    auto const age = static_cast<double>(now - cell.changedAt);
    return std::clamp(1 - age / static_cast<double>(FLASH_MILLISEC), 0.0, 1.0);
}

Tone QuoteBoardModel::flashTone(int row, Column column) const {
    return rows_[static_cast<std::size_t>(row)].cells[column].way;
}

void QuoteBoardModel::take(Row & row, Column column, tvk::RecordData const & notice,
                           char const * field, long long now) {
    if (scalarIn(notice, field)) {
        put(row, column, doubleIn(notice, field), now);
    }
}

void QuoteBoardModel::put(Row & row, Column column, double value, long long now) {
    Cell & cell = row.cells[column];
    if (COLUMNS[column].flashes && row.hasQuote && value != cell.value) {
        cell.way = toneOf(value - cell.value);
        cell.changedAt = now;
        lastChange_ = now;
    }
    cell.value = value;
}

}  // namespace desk
