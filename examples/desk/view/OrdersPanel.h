#pragma once

#include <FL/Fl_Button.H>

#include <functional>
#include <string>

#include "examples/desk/model/OrderListModel.h"
#include "examples/desk/view/Panel.h"

namespace desk {

/// The orders of the session, with a button that cancels the selected one.
class OrdersPanel : public Panel {
public:
    explicit OrdersPanel(OrderListModel const & model);

    void onCancel(std::function<void(std::string const & orderId)> function) {
        onCancel_ = std::move(function);
    }
    void refresh();

private:
    class Grid;

    void layout() override;
    void showButton();
    static void canceled(Fl_Widget * widget, void * panel);

    OrderListModel const & model_;
    Grid * grid_;  // FLTK owns both
    Fl_Button * cancel_;
    std::function<void(std::string const &)> onCancel_;
    unsigned int shownRevision_;
    std::string selectedId_;
};

}  // namespace desk
