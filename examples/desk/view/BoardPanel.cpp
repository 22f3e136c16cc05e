#include "examples/desk/view/BoardPanel.h"

#include <utility>
#include <vector>

#include "examples/desk/view/Theme.h"

namespace desk {

namespace {

/// In the order of QuoteBoardModel::Column; the name takes what is left.
constexpr int WIDTHS[] = {52, 0, 68, 60, 64, 66, 66, 66, 66, 78, 70};

std::vector<GridView::Column> columns() {
    std::vector<GridView::Column> result;
    for (int index = 0; index < QuoteBoardModel::COLUMN_COUNT; ++index) {
        auto const column = static_cast<QuoteBoardModel::Column>(index);
        result.push_back(
            {QuoteBoardModel::title(column), WIDTHS[index], QuoteBoardModel::isNumber(column)});
    }
    return result;
}

}  // namespace

class BoardPanel::Grid : public GridView {
public:
    explicit Grid(QuoteBoardModel const & model) : GridView(0, 0, 0, 0, columns()), model_(model) {}

    void setNow(long long now) { now_ = now; }

private:
    using Column = QuoteBoardModel::Column;

    std::string textOf(int row, int column) const override {
        return model_.text(row, static_cast<Column>(column));
    }
    Tone toneOf(int row, int column) const override {
        return model_.tone(row, static_cast<Column>(column));
    }
    Fl_Color backgroundOf(int row, int column, Fl_Color plain) const override {
        auto const cell = static_cast<Column>(column);
        double const strength = model_.flash(row, cell, now_);
        return strength > 0 ? theme::flash(model_.flashTone(row, cell), strength, plain) : plain;
    }

    QuoteBoardModel const & model_;
    long long now_ = 0;
};

BoardPanel::BoardPanel(QuoteBoardModel const & model)
    : Panel("株価ボード"),
      model_(model),
      grid_(new Grid(model)),
      shownRevision_(model.revision() - 1) {
    end();
}

void BoardPanel::onSelected(std::function<void(std::string const & code)> function) {
    grid_->onSelected([this, function = std::move(function)](int row) {
        function(model_.text(row, QuoteBoardModel::CODE));
    });
}

void BoardPanel::refresh(long long now) {
    grid_->setNow(now);
    bool const isFlashing = model_.isFlashing(now);
    if (model_.revision() != shownRevision_ || isFlashing || wasFlashing_) {
        grid_->setRowCount(model_.rowCount());
        grid_->redraw();
        shownRevision_ = model_.revision();
        wasFlashing_ = isFlashing;
    }
}

void BoardPanel::select(std::string const & code) { grid_->select(model_.rowOf(code)); }

void BoardPanel::layout() { grid_->resize(x(), top(), w(), innerHeight()); }

}  // namespace desk
