#include "examples/desk/view/TicketPanel.h"

#include <FL/Fl.H>
#include <FL/fl_draw.H>

#include <utility>

#include "examples/desk/view/Theme.h"

namespace desk {

namespace {

constexpr int LABEL_WIDTH = 40;
constexpr int SIDE_WIDTH = 56;
constexpr int QUANTITY_WIDTH = 92;
constexpr int PRICE_WIDTH = 92;
constexpr int ORDER_WIDTH = 92;
constexpr int ROWS = 3;

/// Symbols in FLTK's labels begin with @, levels in its menus with /.
std::string asMenuText(std::string const & text) {
    std::string result;
    for (char const character : text) {
        if (character == '/' || character == '\\' || character == '&' || character == '@') {
            result += character == '@' ? '@' : '\\';
        }
        result += character;
    }
    return result;
}

}  // namespace

TicketPanel::TicketPanel(OrderTicketModel const & model)
    : Panel("注文"),
      model_(model),
      symbol_(new Fl_Choice(0, 0, 0, 0, "銘柄 ")),
      buy_(new Fl_Button(0, 0, 0, 0, "買")),
      sell_(new Fl_Button(0, 0, 0, 0, "売")),
      quantity_(new Fl_Input(0, 0, 0, 0, "数量 ")),
      price_(new Fl_Input(0, 0, 0, 0, "指値 ")),
      atMarket_(new Fl_Check_Button(0, 0, 0, 0, "成行")),
      order_(new Fl_Button(0, 0, 0, 0, "発注")),
      answer_(new Fl_Box(0, 0, 0, 0)),
      shownRevision_(model.revision() - 1) {
    for (Fl_Button * const side : {buy_, sell_}) {
        side->type(FL_RADIO_BUTTON);
        side->callback(sideChosen, this);
    }
    buy_->value(1);
    atMarket_->callback(marketChosen, this);
    order_->callback(ordered, this);
    order_->color(theme::accent());
    order_->shortcut(FL_Enter);
    answer_->align(FL_ALIGN_LEFT | FL_ALIGN_INSIDE | FL_ALIGN_CLIP);
    answer_->labelsize(theme::SMALL_SIZE);
    showSide();
    end();
}

int TicketPanel::neededHeight() {
    return theme::PANEL_TITLE_HEIGHT + ROWS * (theme::CONTROL_HEIGHT + theme::GAP);
}

void TicketPanel::refresh() {
    if (model_.symbols().size() != shownSymbols_) {
        fillSymbols();
    }
    if (model_.revision() == shownRevision_) {
        return;
    }
    shownRevision_ = model_.revision();
    answer_->copy_label(theme::fitted(model_.answer(), answer_->w(), theme::SMALL_SIZE).c_str());
    answer_->labelcolor(theme::text(model_.answerTone()));
    markFault(*quantity_, model_.fieldAtFault() == OrderTicketModel::QUANTITY);
    markFault(*price_, model_.fieldAtFault() == OrderTicketModel::PRICE);
    if (model_.isUnderWay()) {
        order_->deactivate();
    } else {
        order_->activate();
    }
    redraw();
}

void TicketPanel::fill(std::string const & code, std::string const & price) {
    auto const & symbols = model_.symbols();
    for (std::size_t index = 0; index < symbols.size(); ++index) {
        if (symbols[index].code == code) {
            symbol_->value(static_cast<int>(index));
            quantity_->value(std::to_string(symbols[index].unit).c_str());
        }
    }
    price_->value(price.c_str());
    markFault(*quantity_, false);
    markFault(*price_, false);
}

void TicketPanel::layout() {
    int const height = theme::CONTROL_HEIGHT;
    int const left = x() + theme::GAP + LABEL_WIDTH;
    int const right = x() + w() - theme::GAP;
    int row = top();
    sell_->resize(right - SIDE_WIDTH, row, SIDE_WIDTH, height);
    buy_->resize(sell_->x() - SIDE_WIDTH, row, SIDE_WIDTH, height);
    symbol_->resize(left, row, buy_->x() - theme::GAP - left, height);

    row += height + theme::GAP;
    quantity_->resize(left, row, QUANTITY_WIDTH, height);
    price_->resize(left + QUANTITY_WIDTH + theme::GAP + LABEL_WIDTH, row, PRICE_WIDTH, height);
    atMarket_->resize(price_->x() + PRICE_WIDTH + theme::GAP, row,
                      right - price_->x() - PRICE_WIDTH - theme::GAP, height);

    row += height + theme::GAP;
    order_->resize(left, row, ORDER_WIDTH, height);
    answer_->resize(left + ORDER_WIDTH + theme::GAP, row, right - left - ORDER_WIDTH - theme::GAP,
                    height);
}

OrderInput TicketPanel::input() const {
    OrderInput result;
    int const chosen = symbol_->value();
    if (chosen >= 0 && static_cast<std::size_t>(chosen) < model_.symbols().size()) {
        result.code = model_.symbols()[static_cast<std::size_t>(chosen)].code;
    }
    result.side = buy_->value() != 0 ? Side::BUY : Side::SELL;
    result.quantity = quantity_->value();
    result.atMarket = atMarket_->value() != 0;
    result.price = price_->value();
    return result;
}

void TicketPanel::fillSymbols() {
    symbol_->clear();
    for (Symbol const & symbol : model_.symbols()) {
        symbol_->add(asMenuText(symbol.code + "  " + symbol.name).c_str());
    }
    shownSymbols_ = model_.symbols().size();
}

void TicketPanel::showSide() {
    bool const isBuying = buy_->value() != 0;
    Fl_Color const plain = FL_BACKGROUND_COLOR;
    buy_->color(plain, theme::flash(Tone::UP, 1, plain));
    sell_->color(plain, theme::flash(Tone::DOWN, 1, plain));
    buy_->labelcolor(theme::text(isBuying ? Tone::PLAIN : Tone::FAINT));
    sell_->labelcolor(theme::text(isBuying ? Tone::FAINT : Tone::PLAIN));
    buy_->redraw();
    sell_->redraw();
}

void TicketPanel::markFault(Fl_Input & input, bool isAtFault) {
    input.color(isAtFault ? theme::flash(Tone::WARNING, 1, theme::field()) : theme::field());
    input.redraw();
}

void TicketPanel::sideChosen(Fl_Widget * /*widget*/, void * panel) {
    static_cast<TicketPanel *>(panel)->showSide();
}

void TicketPanel::marketChosen(Fl_Widget * /*widget*/, void * panel) {
    auto & self = *static_cast<TicketPanel *>(panel);
    if (self.atMarket_->value() != 0) {
        self.price_->deactivate();
    } else {
        self.price_->activate();
    }
}

void TicketPanel::ordered(Fl_Widget * /*widget*/, void * panel) {
    auto const & self = *static_cast<TicketPanel *>(panel);
    if (self.onOrder_) {
        self.onOrder_(self.input());
    }
}

}  // namespace desk
