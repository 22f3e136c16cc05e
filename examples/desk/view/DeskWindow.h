#pragma once

#include <FL/Fl_Double_Window.H>

#include <functional>
#include <string>

#include "examples/desk/model/Models.h"

namespace desk {

class BoardPanel;
class ChartPanel;
class NewsPanel;
class OrdersPanel;
class StatusBar;
class TicketPanel;

/// The desk's window: it shows the models, and tells what the user wants.
class DeskWindow : public Fl_Double_Window {
public:
    /// What the user may want. Texts are UTF-8; all are to be set.
    struct Actions {
        std::function<void(std::string const & code, std::string const & period)> showChart;
        std::function<void(OrderInput const & input)> placeOrder;
        std::function<void(std::string const & orderId)> cancelOrder;
        std::function<void(std::string const & listId)> showNewsList;
        std::function<void(std::string const & headlineId)> readNews;
        std::function<void()> leave;
    };

    DeskWindow(Models const & models, Actions actions);

    /// Draws what has changed in the models.
    void refresh(long long now);
    void resize(int x, int y, int w, int h) override;

private:
    void followChart();
    void choose(std::string const & code);
    void layout();
    static void closed(Fl_Widget * widget, void * window);

    Models const & models_;
    Actions actions_;
    // FLTK owns them.
    BoardPanel * board_;
    ChartPanel * chart_;
    TicketPanel * ticket_;
    OrdersPanel * orders_;
    NewsPanel * news_;
    StatusBar * status_;
    std::string chosen_;
};

}  // namespace desk
