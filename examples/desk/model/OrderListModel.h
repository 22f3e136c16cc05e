#pragma once

#include <string>
#include <vector>

#include "examples/desk/model/OrderTicketModel.h"
#include "examples/desk/model/Tone.h"

namespace tvk {
class RecordData;
}

namespace desk {

/// The orders of this session, the newest first.
///
/// The answer to an order and the first notices of it may come in either order: each adds what it
/// knows.
class OrderListModel {
public:
    enum Column { ID, CODE, SIDE, QUANTITY, PRICE, FILLED, STATUS, COLUMN_COUNT };

    static char const * title(Column column);
    static bool isNumber(Column column);

    void setSymbols(std::vector<Symbol> symbols) { symbols_ = std::move(symbols); }
    /// The back end took `order`, and this is its reply.
    void takeReply(Order const & order, tvk::RecordData const & reply);
    void takeNotice(tvk::RecordData const & notice);  ///< an "order" notice

    int rowCount() const { return static_cast<int>(orders_.size()); }
    std::string text(int row, Column column) const;
    Tone tone(int row, Column column) const;
    std::string const & id(int row) const;
    bool isOpen(int row) const;  ///< may be cancelled

    /// Another number after each change.
    unsigned int revision() const { return revision_; }

private:
    struct Entry {
        std::string id;
        bool hasOrder = false;  ///< known from its reply
        Order order;
        std::string status;
        long long filled = 0;
        long long left = 0;
        double fillPrice = 0;
    };

    Entry & entryOf(std::string const & id);
    std::string priceOf(Entry const & entry) const;

    std::vector<Symbol> symbols_;
    std::vector<Entry> orders_;
    unsigned int revision_ = 0;
};

}  // namespace desk
