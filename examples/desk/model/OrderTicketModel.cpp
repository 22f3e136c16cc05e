#include "examples/desk/model/OrderTicketModel.h"

#include <utility>

#include "examples/desk/Text.h"
#include "examples/desk/model/Figures.h"
#include "examples/desk/model/OrderStatus.h"
#include "examples/support/Fields.h"
#include "examples/support/Messages.h"
#include "tvk/values/NumberData.h"

namespace desk {

namespace {

using Problem = OrderTicketModel::Problem;

std::optional<Problem> problemOfQuantity(std::string const & text, Symbol const & symbol) {
    std::optional<long long> const quantity = typedCount(text);
    if (!quantity || *quantity == 0) {
        return Problem{OrderTicketModel::QUANTITY, "数量を正しく入力してください。"};
    }
    if (*quantity % symbol.unit != 0) {
        return Problem{OrderTicketModel::QUANTITY,
                       "数量は" + countText(symbol.unit) + "株単位で入力してください。"};
    }
    return std::nullopt;
}

std::optional<Problem> problemOfPrice(std::string const & text, Symbol const & symbol) {
    std::optional<double> const price = typedPrice(text);
    if (!price || *price == 0) {
        return Problem{OrderTicketModel::PRICE, "指値を正しく入力してください。"};
    }
    if (!isOnTick(*price, symbol.tick)) {
        return Problem{OrderTicketModel::PRICE,
                       "指値は" + priceText(symbol.tick, decimalsOf(symbol.tick)) +
                           "円刻みで入力してください。"};
    }
    return std::nullopt;
}

}  // namespace

char const * sideText(Side side) { return side == Side::BUY ? "買" : "売"; }

std::optional<Problem> OrderTicketModel::problemOf(OrderInput const & input) const {
    Symbol const * const symbol = symbolOf(symbols_, input.code);
    if (symbol == nullptr) {
        return Problem{CODE, "銘柄を選んでください。"};
    }
    if (auto const problem = problemOfQuantity(input.quantity, *symbol)) {
        return problem;
    }
    return input.atMarket ? std::nullopt : problemOfPrice(input.price, *symbol);
}

Order OrderTicketModel::orderOf(OrderInput const & input) {
    return {input.code, input.side, typedCount(input.quantity).value_or(0),
            input.atMarket ? 0 : typedPrice(input.price).value_or(0)};
}

tvk::RefCountedPtr<tvk::KestrinMessage> OrderTicketModel::messageOf(Order const & order) {
    auto message = requestOfType("orderNew");
    message->setFieldValue("code", ansi(order.code));
    message->setFieldValue("side", CString(order.side == Side::BUY ? "buy" : "sell"));
    message->setFieldValue("quantity", new tvk::NumberData(order.quantity));
    message->setFieldValue("price", new tvk::NumberData(order.price));
    return message;
}

void OrderTicketModel::refuse(Problem const & problem) {
    say(problem.text, Tone::WARNING, problem.field);
}

void OrderTicketModel::sent(Order const & order) {
    order_ = order;
    isUnderWay_ = true;
    say("注文を送信しています…", Tone::FAINT);
}

void OrderTicketModel::takeReply(tvk::RecordData const & reply) {
    isUnderWay_ = false;
    say("注文番号 " + utf8(textIn(reply, "orderId")) + "：" +
            orderStatusText(utf8(textIn(reply, "status"))),
        Tone::PLAIN);
}

void OrderTicketModel::takeFailure(std::string const & text) {
    isUnderWay_ = false;
    say(text, Tone::WARNING);
}

void OrderTicketModel::say(std::string text, Tone tone, Field fieldAtFault) {
    answer_ = std::move(text);
    answerTone_ = tone;
    fieldAtFault_ = fieldAtFault;
    ++revision_;
}

}  // namespace desk
