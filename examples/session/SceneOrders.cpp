// An order that is filled, and one that is cancelled.

#include <map>
#include <string>

#include "examples/backend/Names.h"
#include "examples/session/Stage.h"
#include "examples/session/Texts.h"
#include "examples/session/Watcher.h"
#include "examples/support/Messages.h"
#include "tvk/values/NumberData.h"

namespace session {

namespace {

namespace field = backend::field;
using tvk::KestrinMessage;

struct Progress {
    std::string status;
    long long filled = 0;
    long long left = 0;
    double price = 0;
};

using Book = std::map<std::string, Progress>;

/// The identifier of the order; empty where it was refused, which has been reported then.
std::string place(Stage & stage, char const * side, long long quantity, double price) {
    auto const request = requestOfType(backend::request::ORDER_NEW);
    request->setFieldValue(field::CODE, stage.symbol);
    request->setFieldValue(field::SIDE, side);
    request->setFieldValue(field::QUANTITY, new tvk::NumberData(quantity));
    request->setFieldValue(field::PRICE, new tvk::NumberData(price));
    tvk::ErrorInfo error;
    auto const reply = stage.agent.request(request, &error);
    if (reply.isNull()) {
        stage.alerts.report(error);
        stage.alerts.dismiss();
        return "";
    }
    return shownField(*reply, field::ORDER_ID);
}

bool cancel(Stage & stage, std::string const & orderId) {
    auto const request = requestOfType(backend::request::ORDER_CANCEL);
    request->setFieldValue(field::ORDER_ID, ansi(orderId));
    tvk::ErrorInfo error;
    return !stage.agent.request(request, &error).isNull();
}

void buyAtTheMarket(Stage & stage, Book const & book) {
    long long const quantity = stage.unit;
    std::string const id = place(stage, "buy", quantity, 0);
    auto const isFilled = [&] {
        auto const order = book.find(id);
        return order != book.end() && order->second.status == "filled";
    };
    bool const filled = !id.empty() && stage.until(isFilled);
    stage.account.expect(
        filled && book.at(id).filled == quantity && book.at(id).left == 0 && book.at(id).price > 0,
        "an order at the market is filled");
}

void changeTheMindAbout(Stage & stage, Book const & book) {
    // A tick is what a price is least likely to fall to: nobody sells for it.
    std::string const id = place(stage, "buy", stage.unit, stage.tick);
    auto const isCancelled = [&] {
        auto const order = book.find(id);
        return order != book.end() && order->second.status == "canceled";
    };
    bool const cancelled = !id.empty() && cancel(stage, id) && stage.until(isCancelled);
    stage.account.expect(cancelled && book.at(id).filled == 0,
                         "an order far from the market waits until it is cancelled");
}

}  // namespace

void trade(Stage & stage) {
    stage.account.section("Orders");
    Book book;
    Watcher const watcher(
        stage.agent, backend::notice::ORDER, ansi(stage.options.user),
        [&](KestrinMessage const & notice) {
            Progress & order = book[shownField(notice, field::ORDER_ID)];
            order = {shownField(notice, field::STATUS), numberIn(notice, field::FILLED),
                     numberIn(notice, field::LEFT), doubleIn(notice, field::PRICE)};
            stage.account.say("order", shownField(notice, field::ORDER_ID) + " " + order.status +
                                           ", filled " + std::to_string(order.filled) + ", left " +
                                           std::to_string(order.left) + ", price " +
                                           shownField(notice, field::PRICE));
        });
    buyAtTheMarket(stage, book);
    changeTheMindAbout(stage, book);
}

}  // namespace session
