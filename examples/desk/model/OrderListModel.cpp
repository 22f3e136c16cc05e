#include "examples/desk/model/OrderListModel.h"

#include <algorithm>
#include <iterator>

#include "examples/desk/Text.h"
#include "examples/desk/model/Figures.h"
#include "examples/desk/model/OrderStatus.h"
#include "examples/support/Fields.h"

namespace desk {

namespace {

struct ColumnInfo {
    char const * title;
    bool isNumber;
};

constexpr ColumnInfo COLUMNS[] = {
    {"番号", false}, {"銘柄", false}, {"売買", false}, {"数量", true},
    {"価格", true},  {"約定", true},  {"状態", false},
};
static_assert(std::size(COLUMNS) == OrderListModel::COLUMN_COUNT);

}  // namespace

char const * OrderListModel::title(Column column) { return COLUMNS[column].title; }

bool OrderListModel::isNumber(Column column) { return COLUMNS[column].isNumber; }

void OrderListModel::takeReply(Order const & order, tvk::RecordData const & reply) {
    Entry & entry = entryOf(utf8(textIn(reply, "orderId")));
    entry.order = order;
    entry.hasOrder = true;
    // A notice that came before the reply is newer than what the reply says.
    if (entry.status.empty()) {
        entry.status = utf8(textIn(reply, "status"));
        entry.left = order.quantity;
    }
    ++revision_;
}

void OrderListModel::takeNotice(tvk::RecordData const & notice) {
    Entry & entry = entryOf(utf8(textIn(notice, "orderId")));
    entry.status = utf8(textIn(notice, "status"));
    entry.filled = numberIn(notice, "filled");
    entry.left = numberIn(notice, "left");
    entry.fillPrice = doubleIn(notice, "price");
    ++revision_;
}

std::string OrderListModel::text(int row, Column column) const {
    Entry const & entry = orders_[static_cast<std::size_t>(row)];
    switch (column) {
        case ID:
            return entry.id;
        case CODE:
            return entry.order.code;
        case SIDE:
            return entry.hasOrder ? sideText(entry.order.side) : "";
        case QUANTITY:
            return countText(entry.hasOrder ? entry.order.quantity : entry.filled + entry.left);
        case PRICE:
            return priceOf(entry);
        case FILLED:
            return countText(entry.filled);
        default:
            return orderStatusText(entry.status);
    }
}

Tone OrderListModel::tone(int row, Column column) const {
    Entry const & entry = orders_[static_cast<std::size_t>(row)];
    if (column == SIDE) {
        return entry.order.side == Side::BUY ? Tone::UP : Tone::DOWN;
    }
    return column == ID || !isOpen(row) ? Tone::FAINT : Tone::PLAIN;
}

std::string const & OrderListModel::id(int row) const {
    return orders_[static_cast<std::size_t>(row)].id;
}

bool OrderListModel::isOpen(int row) const {
    return isOpenStatus(orders_[static_cast<std::size_t>(row)].status);
}

OrderListModel::Entry & OrderListModel::entryOf(std::string const & id) {
    auto const found = std::find_if(orders_.begin(), orders_.end(),
                                    [&](Entry const & entry) { return entry.id == id; });
    if (found != orders_.end()) {
        return *found;
    }
    Entry entry;
    entry.id = id;
    return *orders_.insert(orders_.begin(), entry);
}

std::string OrderListModel::priceOf(Entry const & entry) const {
    Symbol const * const symbol = symbolOf(symbols_, entry.order.code);
    int const decimals = symbol != nullptr ? decimalsOf(symbol->tick) : 0;
    if (entry.hasOrder && entry.order.price > 0) {
        return priceText(entry.order.price, decimals);
    }
    return entry.filled > 0 ? priceText(entry.fillPrice, decimals) : "成行";
}

}  // namespace desk
