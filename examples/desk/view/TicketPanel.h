#pragma once

#include <FL/Fl_Box.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Check_Button.H>
#include <FL/Fl_Choice.H>
#include <FL/Fl_Input.H>

#include <functional>
#include <string>

#include "examples/desk/model/OrderTicketModel.h"
#include "examples/desk/view/Panel.h"

namespace desk {

/// The order ticket: what is typed, and the answer below it.
class TicketPanel : public Panel {
public:
    explicit TicketPanel(OrderTicketModel const & model);

    void onOrder(std::function<void(OrderInput const & input)> function) {
        onOrder_ = std::move(function);
    }
    void refresh();
    /// Puts a symbol in, with a quantity of one unit and a price to begin with. UTF-8.
    void fill(std::string const & code, std::string const & price);
    static int neededHeight();

private:
    void layout() override;
    OrderInput input() const;
    void fillSymbols();
    void showSide();
    void markFault(Fl_Input & input, bool isAtFault);

    static void sideChosen(Fl_Widget * widget, void * panel);
    static void marketChosen(Fl_Widget * widget, void * panel);
    static void ordered(Fl_Widget * widget, void * panel);

    OrderTicketModel const & model_;
    // FLTK owns them.
    Fl_Choice * symbol_;
    Fl_Button * buy_;
    Fl_Button * sell_;
    Fl_Input * quantity_;
    Fl_Input * price_;
    Fl_Check_Button * atMarket_;
    Fl_Button * order_;
    Fl_Box * answer_;
    std::function<void(OrderInput const &)> onOrder_;
    std::size_t shownSymbols_ = 0;
    unsigned int shownRevision_;
};

}  // namespace desk
