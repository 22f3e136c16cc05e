#pragma once

#include <FL/Fl_Table_Row.H>

#include <functional>
#include <string>
#include <vector>

#include "examples/desk/model/Tone.h"

namespace desk {

/// A table of texts, of which one row at most is selected. Whoever derives says what stands in it.
class GridView : public Fl_Table_Row {
public:
    struct Column {
        char const * title;
        int width;  ///< pixels; one column of width 0 takes what is left
        bool isNumber;
    };

    GridView(int x, int y, int w, int h, std::vector<Column> columns);

    void setRowCount(int count);
    /// Called with the row that the user chose.
    void onSelected(std::function<void(int row)> function) { onSelected_ = std::move(function); }
    int selectedRow();  ///< -1 where none is
    void select(int row);
    void resize(int x, int y, int w, int h) override;

protected:
    virtual std::string textOf(int row, int column) const = 0;
    virtual Tone toneOf(int row, int column) const = 0;
    virtual Fl_Color backgroundOf(int row, int column, Fl_Color plain) const;

private:
    void draw_cell(TableContext context, int row, int column, int x, int y, int w, int h) override;
    void drawTitle(int column, int x, int y, int w, int h);
    void drawRow(int row, int column, int x, int y, int w, int h);
    void spreadColumns();
    static void selected(Fl_Widget * widget, void *);

    std::vector<Column> columns_;
    std::function<void(int)> onSelected_;
};

}  // namespace desk
