#include "examples/support/Columns.h"

#include <algorithm>
#include <iterator>

#include "tvk/text/StringUtil.h"

namespace {

struct Range {
    int first;
    int last;
};

// The wide and the combining characters that text of code page 932 can come from, and their
// neighbours. Half-width katakana, U+FF61 to U+FF9F, take one place.
constexpr Range WIDE[] = {
    {0x1100, 0x115F}, {0x2E80, 0x303E},   {0x3041, 0x4DBF},   {0x4E00, 0xA4CF},
    {0xAC00, 0xD7A3}, {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},   {0xFF01, 0xFF60},
    {0xFFE0, 0xFFE6}, {0x1F300, 0x1F64F}, {0x1F900, 0x1F9FF}, {0x20000, 0x3FFFD},
};
constexpr Range COMBINING[] = {
    {0x0300, 0x036F},
    {0x200B, 0x200F},
    {0x3099, 0x309A},
    {0xFE00, 0xFE0F},
};

template <std::size_t N>
bool isIn(Range const (&ranges)[N], int character) {
    return std::any_of(std::begin(ranges), std::end(ranges), [character](Range const & range) {
        return character >= range.first && character <= range.last;
    });
}

std::size_t widthOf(int character) {
    if (isIn(COMBINING, character)) {
        return 0;
    }
    return isIn(WIDE, character) ? 2 : 1;
}

constexpr std::size_t BETWEEN_COLUMNS = 2;

void endLine(std::string & out) {
    out.erase(out.find_last_not_of(' ') + 1);
    out += '\n';
}

}  // namespace

std::size_t displayWidth(std::string_view text) {
    auto const length = static_cast<unsigned int>(text.size());
    std::size_t width = 0;
    for (unsigned int at = 0, step = 0; at < length; at += step) {
        width += widthOf(tvk::StringUtil::nextUtf8Char(text.data(), length, at, &step));
    }
    return width;
}

std::string Columns::text() const {
    std::size_t const count = rows_.front().size();
    std::vector<std::size_t> widths(count, 0);  // 0 for a column that is left out
    for (auto row = rows_.begin() + 1; row != rows_.end(); ++row) {
        for (std::size_t i = 0; i < row->size(); ++i) {
            widths[i] = std::max(widths[i], displayWidth((*row)[i]));
        }
    }
    for (std::size_t i = 0; i < count; ++i) {
        if (widths[i] > 0) {
            widths[i] = std::max(widths[i], displayWidth(rows_.front()[i]));
        }
    }

    std::string out;
    for (auto row = rows_.begin(); row != rows_.end(); ++row) {
        for (std::size_t i = 0; i < row->size(); ++i) {
            if (widths[i] > 0) {
                std::string const & cell = (*row)[i];
                out += cell;
                out.append(widths[i] - displayWidth(cell) + BETWEEN_COLUMNS, ' ');
            }
        }
        endLine(out);
        if (row == rows_.begin()) {
            for (std::size_t const width : widths) {
                if (width > 0) {
                    out.append(width, '-').append(BETWEEN_COLUMNS, ' ');
                }
            }
            endLine(out);
        }
    }
    return out;
}
