#pragma once

#include <optional>
#include <string>
#include <vector>

#include "examples/desk/model/Symbol.h"
#include "examples/desk/model/Tone.h"
#include "tvk/values/KestrinMessage.h"
#include "tvk/values/RefCountedPtr.h"

namespace desk {

enum class Side { BUY, SELL };

char const * sideText(Side side);  ///< for the screen

/// What the user has put into the order ticket. Texts are UTF-8, as typed.
struct OrderInput {
    std::string code;
    Side side = Side::BUY;
    std::string quantity;
    bool atMarket = false;  ///< the price is then not looked at
    std::string price;
};

/// An input that was checked.
struct Order {
    std::string code;
    Side side = Side::BUY;
    long long quantity = 0;
    double price = 0;  ///< 0 at the market
};

/// The order ticket: checks what was typed, makes the request, and tells what came of it.
///
/// One order is under way at a time: from sent() until one of the answers.
class OrderTicketModel {
public:
    enum Field { NONE, CODE, QUANTITY, PRICE };

    /// Where the input is at fault, and the text that says so.
    struct Problem {
        Field field = NONE;
        std::string text;
    };

    void setSymbols(std::vector<Symbol> symbols) { symbols_ = std::move(symbols); }
    std::vector<Symbol> const & symbols() const { return symbols_; }

    /// Nothing where the input can be sent.
    std::optional<Problem> problemOf(OrderInput const & input) const;
    /// Requires: the input has no problem.
    static Order orderOf(OrderInput const & input);
    /// The request "orderNew" for it.
    static tvk::RefCountedPtr<tvk::KestrinMessage> messageOf(Order const & order);

    // What happens, in words for the line below the ticket.
    void refuse(Problem const & problem);  ///< the input was not sent
    void sent(Order const & order);
    void takeReply(tvk::RecordData const & reply);
    void takeFailure(std::string const & text);  ///< in words for the user

    bool isUnderWay() const { return isUnderWay_; }
    /// The last one that was sent.
    Order const & order() const { return order_; }
    std::string const & answer() const { return answer_; }
    Tone answerTone() const { return answerTone_; }
    Field fieldAtFault() const { return fieldAtFault_; }
    /// Another number after each change of the answer.
    unsigned int revision() const { return revision_; }

private:
    void say(std::string text, Tone tone, Field fieldAtFault = NONE);

    std::vector<Symbol> symbols_;
    Order order_;
    bool isUnderWay_ = false;
    std::string answer_;
    Tone answerTone_ = Tone::FAINT;
    Field fieldAtFault_ = NONE;
    unsigned int revision_ = 0;
};

}  // namespace desk
