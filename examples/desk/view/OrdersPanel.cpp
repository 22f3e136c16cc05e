#include "examples/desk/view/OrdersPanel.h"

#include <utility>
#include <vector>

#include "examples/desk/view/GridView.h"
#include "examples/desk/view/Theme.h"

namespace desk {

namespace {

constexpr int BUTTON_WIDTH = 84;

/// In the order of OrderListModel::Column; the status takes what is left.
constexpr int WIDTHS[] = {54, 44, 40, 54, 64, 48, 0};

std::vector<GridView::Column> columns() {
    std::vector<GridView::Column> result;
    for (int index = 0; index < OrderListModel::COLUMN_COUNT; ++index) {
        auto const column = static_cast<OrderListModel::Column>(index);
        result.push_back(
            {OrderListModel::title(column), WIDTHS[index], OrderListModel::isNumber(column)});
    }
    return result;
}

}  // namespace

class OrdersPanel::Grid : public GridView {
public:
    explicit Grid(OrderListModel const & model) : GridView(0, 0, 0, 0, columns()), model_(model) {}

private:
    std::string textOf(int row, int column) const override {
        return model_.text(row, static_cast<OrderListModel::Column>(column));
    }
    Tone toneOf(int row, int column) const override {
        return model_.tone(row, static_cast<OrderListModel::Column>(column));
    }

    OrderListModel const & model_;
};

OrdersPanel::OrdersPanel(OrderListModel const & model)
    : Panel("注文一覧"),
      model_(model),
      grid_(new Grid(model)),
      cancel_(new Fl_Button(0, 0, 0, 0, "注文取消")),
      shownRevision_(model.revision() - 1) {
    cancel_->labelsize(theme::SMALL_SIZE);
    cancel_->callback(canceled, this);
    cancel_->deactivate();
    grid_->onSelected([this](int row) {
        selectedId_ = model_.id(row);
        showButton();
    });
    end();
}

void OrdersPanel::refresh() {
    if (model_.revision() == shownRevision_) {
        return;
    }
    shownRevision_ = model_.revision();
    grid_->setRowCount(model_.rowCount());
    showButton();
    grid_->redraw();
}

void OrdersPanel::layout() {
    int const inset = (theme::PANEL_TITLE_HEIGHT - theme::ROW_HEIGHT) / 2;
    cancel_->resize(x() + w() - BUTTON_WIDTH - inset, y() + inset, BUTTON_WIDTH, theme::ROW_HEIGHT);
    grid_->resize(x(), top(), w(), innerHeight());
}

/// The selection follows the order, whose row moves as new ones come.
void OrdersPanel::showButton() {
    bool canCancel = false;
    for (int row = 0; row < model_.rowCount(); ++row) {
        if (model_.id(row) == selectedId_) {
            grid_->select(row);
            canCancel = model_.isOpen(row);
        }
    }
    if (canCancel) {
        cancel_->activate();
    } else {
        cancel_->deactivate();
    }
}

void OrdersPanel::canceled(Fl_Widget * /*widget*/, void * panel) {
    auto const & self = *static_cast<OrdersPanel *>(panel);
    if (self.onCancel_) {
        self.onCancel_(self.selectedId_);
    }
}

}  // namespace desk
