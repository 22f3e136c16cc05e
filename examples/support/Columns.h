#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// The places that a printable text in UTF-8 takes on a terminal: two for a wide character, none
/// for one that combines with the character before it.
std::size_t displayWidth(std::string_view text);

/// Rows of cells that are printed with the cells of a column below each other. Cells are printable
/// texts in UTF-8; the first row holds the headings, and a line is drawn under it.
class Columns {
public:
    /// As many cells as there are headings.
    explicit Columns(std::vector<std::string> headings) : rows_{std::move(headings)} {}

    /// Requires: no more cells than headings; those that are left out stay empty.
    void add(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }

    /// A line for each row, without blanks at its end. Columns in which no row has anything are
    /// left out.
    std::string text() const;

private:
    std::vector<std::vector<std::string>> rows_;
};
