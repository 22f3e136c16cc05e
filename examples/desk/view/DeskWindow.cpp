#include "examples/desk/view/DeskWindow.h"

#include <utility>

#include "examples/desk/view/BoardPanel.h"
#include "examples/desk/view/ChartPanel.h"
#include "examples/desk/view/NewsPanel.h"
#include "examples/desk/view/OrdersPanel.h"
#include "examples/desk/view/StatusBar.h"
#include "examples/desk/view/Theme.h"
#include "examples/desk/view/TicketPanel.h"

namespace desk {

namespace {

constexpr int WIDTH = 1140;
constexpr int HEIGHT = 740;
constexpr int NARROWEST = 1080;
constexpr int LOWEST = 660;
constexpr int RIGHT_WIDTH = 372;
constexpr int BOARD_ROWS = 12;
constexpr int STATUS_HEIGHT = 26;
constexpr int BOARD_HEIGHT = theme::PANEL_TITLE_HEIGHT + (BOARD_ROWS + 1) * theme::ROW_HEIGHT + 2;

}  // namespace

DeskWindow::DeskWindow(Models const & models, Actions actions)
    : Fl_Double_Window(WIDTH, HEIGHT, "トレーディングデスク"),
      models_(models),
      actions_(std::move(actions)),
      board_(new BoardPanel(models.board)),
      chart_(new ChartPanel(models.chart)),
      ticket_(new TicketPanel(models.ticket)),
      orders_(new OrdersPanel(models.orders)),
      news_(new NewsPanel(models.news)),
      status_(new StatusBar(models.status)) {
    end();
    color(theme::window());
    size_range(NARROWEST, LOWEST);
    callback(closed, this);
    board_->onSelected([this](std::string const & code) {
        choose(code);
        actions_.showChart(code, models_.chart.period());
    });
    chart_->onPeriod(
        [this](std::string const & period) { actions_.showChart(models_.chart.code(), period); });
    ticket_->onOrder([this](OrderInput const & input) { actions_.placeOrder(input); });
    orders_->onCancel([this](std::string const & orderId) { actions_.cancelOrder(orderId); });
    news_->onList([this](std::string const & listId) { actions_.showNewsList(listId); });
    news_->onRead([this](std::string const & headlineId) { actions_.readNews(headlineId); });
    layout();
}

void DeskWindow::refresh(long long now) {
    board_->refresh(now);
    chart_->refresh();
    ticket_->refresh();
    orders_->refresh();
    news_->refresh();
    status_->refresh(now);
    followChart();
}

void DeskWindow::resize(int x, int y, int w, int h) {
    Fl_Double_Window::resize(x, y, w, h);
    layout();
}

/// A chart that was not chosen here, as the first one is, as soon as there is a quote to begin with.
void DeskWindow::followChart() {
    std::string const & code = models_.chart.code();
    int const row = models_.board.rowOf(code);
    if (code != chosen_ && row >= 0 && !models_.board.text(row, QuoteBoardModel::LAST).empty()) {
        choose(code);
    }
}

/// The board, the chart and the ticket turn to the same symbol.
void DeskWindow::choose(std::string const & code) {
    chosen_ = code;
    board_->select(code);
    int const row = models_.board.rowOf(code);
    if (row >= 0) {
        ticket_->fill(code, models_.board.text(row, QuoteBoardModel::LAST));
    }
}

void DeskWindow::layout() {
    int const gap = theme::GAP;
    int const rightLeft = w() - gap - RIGHT_WIDTH;
    int const leftWidth = rightLeft - 2 * gap;
    int const bottom = h() - STATUS_HEIGHT - gap;
    int const lowerTop = gap + BOARD_HEIGHT + gap;
    int const ordersTop = gap + TicketPanel::neededHeight() + gap;
    board_->resize(gap, gap, leftWidth, BOARD_HEIGHT);
    chart_->resize(gap, lowerTop, leftWidth, bottom - lowerTop);
    ticket_->resize(rightLeft, gap, RIGHT_WIDTH, TicketPanel::neededHeight());
    orders_->resize(rightLeft, ordersTop, RIGHT_WIDTH, lowerTop - gap - ordersTop);
    news_->resize(rightLeft, lowerTop, RIGHT_WIDTH, bottom - lowerTop);
    status_->resize(0, h() - STATUS_HEIGHT, w(), STATUS_HEIGHT);
}

void DeskWindow::closed(Fl_Widget * /*widget*/, void * window) {
    static_cast<DeskWindow *>(window)->actions_.leave();
}

}  // namespace desk
