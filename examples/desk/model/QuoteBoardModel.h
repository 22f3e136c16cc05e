#pragma once

#include <array>
#include <string>
#include <unordered_map>
#include <vector>

#include "examples/desk/model/Symbol.h"
#include "examples/desk/model/Tone.h"

namespace tvk {
class RecordData;
}

namespace desk {

/// The quote board: a row for each symbol, with the newest quote of each, and how long ago a cell
/// changed.
///
/// Texts are UTF-8. Times are milliseconds of any clock that does not go back, the same one in all
/// calls.
class QuoteBoardModel {
public:
    enum Column {
        CODE,
        NAME,
        LAST,
        CHANGE,
        PERCENT,
        BID,
        ASK,
        HIGH,
        LOW,
        VOLUME,
        TIME,
        COLUMN_COUNT
    };
    static constexpr long long FLASH_MILLISEC = 500;

    static char const * title(Column column);
    static bool isNumber(Column column);  ///< to be set at the right

    /// Begins anew with these rows and no quotes.
    void setSymbols(std::vector<Symbol> symbols);
    std::vector<Symbol> const & symbols() const { return symbols_; }
    int rowCount() const { return static_cast<int>(rows_.size()); }
    int rowOf(std::string const & code) const;  ///< -1 where there is none

    /// Takes a "quote" notice. The row that it changed, or -1 where its code has none. What the notice
    /// does not have keeps its value.
    int takeQuote(tvk::RecordData const & notice, long long now);

    std::string text(int row, Column column) const;  ///< empty before the first quote
    Tone tone(int row, Column column) const;
    /// 1 for a price that has just changed, falling to 0 within FLASH_MILLISEC. The first quote of a row
    /// is no change.
    double flash(int row, Column column, long long now) const;
    /// Which way the cell changed last.
    Tone flashTone(int row, Column column) const;
    bool isFlashing(long long now) const { return now < lastChange_ + FLASH_MILLISEC; }

    /// Another number after each change.
    unsigned int revision() const { return revision_; }

private:
    struct Cell {
        double value = 0;
        Tone way = Tone::PLAIN;
        long long changedAt = -FLASH_MILLISEC;
    };
    struct Row {
        int decimals = 0;
        bool hasQuote = false;
        std::array<Cell, COLUMN_COUNT> cells;
        std::string time;
    };

    void take(Row & row, Column column, tvk::RecordData const & notice, char const * field,
              long long now);
    void put(Row & row, Column column, double value, long long now);

    std::vector<Symbol> symbols_;
    std::vector<Row> rows_;
    std::unordered_map<std::string, int> rowOfCode_;
    long long lastChange_ = -FLASH_MILLISEC;
    unsigned int revision_ = 0;
};

}  // namespace desk
