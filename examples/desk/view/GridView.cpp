#include "examples/desk/view/GridView.h"

#include <FL/Fl.H>
#include <FL/fl_draw.H>

#include <algorithm>
#include <utility>

#include "examples/desk/view/Theme.h"

namespace desk {

namespace {

constexpr int NARROWEST = 40;

Fl_Align alignOf(bool isNumber) {
    return (isNumber ? FL_ALIGN_RIGHT : FL_ALIGN_LEFT) | FL_ALIGN_INSIDE;
}

}  // namespace

GridView::GridView(int x, int y, int w, int h, std::vector<Column> columns)
    : Fl_Table_Row(x, y, w, h), columns_(std::move(columns)) {
    type(SELECT_SINGLE);
    // A filled box would be drawn over the scroll bars.
    box(FL_NO_BOX);
    table_box(FL_NO_BOX);
    color(theme::panel());
    cols(static_cast<int>(columns_.size()));
    col_header(1);
    col_header_height(theme::ROW_HEIGHT);
    row_height_all(theme::ROW_HEIGHT);
    when(FL_WHEN_RELEASE);
    callback(selected);
    end();
    spreadColumns();
}

void GridView::setRowCount(int count) {
    if (count != rows()) {
        rows(count);
        row_height_all(theme::ROW_HEIGHT);
        spreadColumns();
    }
}

int GridView::selectedRow() {
    for (int row = 0; row < rows(); ++row) {
        if (row_selected(row) == 1) {
            return row;
        }
    }
    return -1;
}

void GridView::select(int row) {
    if (row != selectedRow()) {
        select_all_rows(0);
        if (row >= 0) {
            select_row(row);
        }
    }
}

void GridView::resize(int x, int y, int w, int h) {
    Fl_Table_Row::resize(x, y, w, h);
    spreadColumns();
}

Fl_Color GridView::backgroundOf(int /*row*/, int /*column*/, Fl_Color plain) const { return plain; }

void GridView::draw_cell(TableContext context, int row, int column, int x, int y, int w, int h) {
    if (context == CONTEXT_COL_HEADER) {
        drawTitle(column, x, y, w, h);
    } else if (context == CONTEXT_CELL) {
        drawRow(row, column, x, y, w, h);
    }
}

void GridView::drawTitle(int column, int x, int y, int w, int h) {
    Column const & info = columns_[static_cast<std::size_t>(column)];
    fl_color(theme::heading());
    fl_rectf(x, y, w, h);
    fl_color(theme::text(Tone::FAINT));
    fl_font(theme::FONT, theme::SMALL_SIZE);
    theme::drawText(info.title, x + theme::CELL_PADDING, y, w - 2 * theme::CELL_PADDING, h,
                    alignOf(info.isNumber));
}

void GridView::drawRow(int row, int column, int x, int y, int w, int h) {
    Fl_Color const plain = row_selected(row) == 1 ? theme::selection()
                           : row % 2 == 0         ? theme::panel()
                                                  : theme::stripe();
    fl_color(backgroundOf(row, column, plain));
    fl_rectf(x, y, w, h);
    fl_color(theme::text(toneOf(row, column)));
    fl_font(theme::FONT, theme::TEXT_SIZE);
    theme::drawText(textOf(row, column), x + theme::CELL_PADDING, y, w - 2 * theme::CELL_PADDING, h,
                    alignOf(columns_[static_cast<std::size_t>(column)].isNumber));
}

void GridView::spreadColumns() {
    int left = w();
    if (rows() * theme::ROW_HEIGHT > h() - theme::ROW_HEIGHT) {
        left -= Fl::scrollbar_size();
    }
    for (Column const & column : columns_) {
        left -= column.width;
    }
    for (int index = 0; index < cols(); ++index) {
        int const width = columns_[static_cast<std::size_t>(index)].width;
        col_width(index, width > 0 ? width : std::max(left, NARROWEST));
    }
}

void GridView::selected(Fl_Widget * widget, void *) {
    auto & grid = *static_cast<GridView *>(widget);
    if (grid.callback_context() == CONTEXT_CELL && grid.onSelected_ && Fl::event() == FL_RELEASE) {
        grid.onSelected_(grid.callback_row());
    }
}

}  // namespace desk
