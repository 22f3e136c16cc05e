#include "examples/backend/Market.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "examples/backend/Names.h"
#include "examples/backend/Texts.h"
#include "examples/support/Fields.h"
#include "tvk/values/ListDataImpl.h"
#include "tvk/values/MappedMessage.h"
#include "tvk/values/MappedRecordData.h"
#include "tvk/values/StringData.h"

namespace backend {

using tvk::FieldValue;
using tvk::KestrinMessage;
using tvk::ListDataImpl;
using tvk::MappedMessage;
using tvk::MappedRecordData;
using tvk::RecordData;
using tvk::RefCountedPtr;
using tvk::StringData;

namespace {

constexpr std::array<PriceKindEnum, 4> PRICE_KINDS = {PRICEKIND_LAST, PRICEKIND_BID, PRICEKIND_ASK,
                                                      PRICEKIND_MID};

MarketAnswer refused(std::string_view type, int code, std::string_view text) {
    return {failureOf(type, code, text), true, {}};
}

MarketAnswer replied(MessagePtr reply) { return {std::move(reply), false, {}}; }

/// Of each symbol, where the market is now.
std::vector<Opening> openingsOf(ChartHistory const & charts, Minute now) {
    std::vector<Opening> openings;
    for (std::size_t symbol = 0; symbol < SYMBOL_COUNT; ++symbol) {
        openings.push_back(charts.opening(symbol, now));
    }
    return openings;
}

Minute dayOf(Minute minute) { return minute / MINUTES_PER_DAY; }

/// The bar's fields; what chart they belong to stands elsewhere.
void setBar(RecordData & record, Bar const & bar) {
    setText(record, field::DATE, dateText(bar.minute));
    setText(record, field::TIME, timeText(bar.minute));
    setPrice(record, field::OPEN, bar.open);
    setPrice(record, field::HIGH, bar.high);
    setPrice(record, field::LOW, bar.low);
    setPrice(record, field::CLOSE, bar.close);
    setNumber(record, field::VOLUME, bar.volume);
}

void setChart(RecordData & record, std::string_view code, PriceKindEnum kind,
              std::string_view periodType) {
    setText(record, field::SYMBOL, code);
    setNumber(record, field::PRICE_KIND, kind);
    setText(record, field::PERIOD_TYPE, periodType);
}

std::string chartSubject(std::string_view code, PriceKindEnum kind, std::string_view periodType) {
    return std::string(code) + "/" + std::to_string(kind) + "/" + std::string(periodType);
}

std::optional<Chart> chartIn(RecordData const & body) {
    auto const symbol = findSymbol(utf8In(body, field::SYMBOL));
    auto const period = periodOf(utf8In(body, field::PERIOD_TYPE));
    auto const kind =
        std::find(PRICE_KINDS.begin(), PRICE_KINDS.end(), numberIn(body, field::PRICE_KIND));
    if (!symbol || !period || kind == PRICE_KINDS.end()) {
        return std::nullopt;
    }
    return Chart{*symbol, *kind, *period};
}

/// The day in the field, which `open` stands for where it is empty; none where it makes no sense.
std::optional<Minute> dayIn(RecordData const & body, char const * name, Minute open) {
    std::string const date = utf8In(body, name);
    return body.hasField(name) && date.empty() ? std::optional(open) : minuteOfDate(date);
}

/// The bars that the request asks for, by their number or by dates; none where it makes no sense.
std::optional<std::vector<Bar>> barsFor(RecordData const & body, Chart const & chart,
                                        ChartHistory const & charts, Minute now) {
    if (body.hasField(field::COUNT)) {
        long long const count = numberIn(body, field::COUNT);
        std::size_t const bars =
            count == 0 ? ChartHistory::MAXIMUM_BARS : static_cast<std::size_t>(count);
        return count < 0 ? std::nullopt : std::optional(charts.last(chart, bars, now));
    }
    auto const from = dayIn(body, field::FROM, 0);
    auto const to = dayIn(body, field::TO, now);
    return from && to ? std::optional(charts.between(chart, *from, *to, now)) : std::nullopt;
}

bool covers(std::string const & wanted, std::string_view actual) {
    return wanted == "*" || wanted == actual;
}

}  // namespace

MessagePtr messageOfType(std::string_view type) {
    MessagePtr message(new MappedMessage);
    message->header().setMessageTypeId(ansi(type));
    return message;
}

MessagePtr failureOf(std::string_view type, int code, std::string_view text) {
    MessagePtr message = messageOfType(type);
    setNumber(*message, field::CODE, code);
    setText(*message, field::TEXT, text);
    setFlag(*message, field::NETWORK, false);
    return message;
}

Market::Market(unsigned int seed, long long now, NoticeSink & sink)
    : sink_(sink),
      charts_(seed),
      quotes_(seed, openingsOf(charts_, minuteOf(now))),
      news_(seed, now),
      today_(dayOf(minuteOf(now))) {}

bool Market::answers(std::string_view type) const {
    constexpr std::array<std::string_view, 6> TYPES = {
        request::SYMBOLS,       request::ORDER_NEW,     request::ORDER_CANCEL,
        request::CHART_PERIODS, request::CHART_HISTORY, request::NEWS_DOCUMENT};
    return std::find(TYPES.begin(), TYPES.end(), type) != TYPES.end();
}

MarketAnswer Market::answer(KestrinMessage const & request, std::string const & loginId,
                            long long now) {
    CString const & type = request.header().getMessageTypeId();
    if (type == request::SYMBOLS) {
        return symbols();
    }
    if (type == request::ORDER_NEW) {
        return orderNew(request, loginId);
    }
    if (type == request::ORDER_CANCEL) {
        return orderCancel(request, loginId);
    }
    if (type == request::CHART_PERIODS) {
        return chartPeriods();
    }
    if (type == request::CHART_HISTORY) {
        return chartHistory(request, now);
    }
    return newsDocument(request);
}

MarketAnswer Market::symbols() {
    RefCountedPtr<ListDataImpl> const list(new ListDataImpl(field::SYMBOLS));
    for (Symbol const & symbol : SYMBOLS) {
        RefCountedPtr<MappedRecordData> const record(new MappedRecordData);
        setText(*record, field::CODE, symbol.code);
        setText(*record, field::NAME, symbol.name);
        setPrice(*record, field::TICK, symbol.tick);
        setNumber(*record, field::UNIT, symbol.unit);
        list->addElement(record);
    }
    MessagePtr const reply = messageOfType(request::SYMBOLS);
    reply->setFieldValue(field::SYMBOLS, RefCountedPtr<FieldValue>(list));
    return replied(reply);
}

MarketAnswer Market::orderNew(KestrinMessage const & request, std::string const & loginId) {
    std::string const code = utf8In(request, field::CODE);
    std::string const side = utf8In(request, field::SIDE);
    OrderOutcome outcome = orders_.place(
        {loginId, code, side, doubleIn(request, field::QUANTITY), doubleIn(request, field::PRICE)});
    if (outcome.refusal != 0) {
        return refused(request::ORDER_NEW, outcome.refusal, outcome.text);
    }
    MessagePtr const reply = messageOfType(request::ORDER_NEW);
    setText(*reply, field::ORDER_ID, outcome.orderId);
    setText(*reply, field::STATUS, outcome.status);
    return {reply, false, std::move(outcome.events)};
}

MarketAnswer Market::orderCancel(KestrinMessage const & request, std::string const & loginId) {
    OrderOutcome outcome = orders_.cancel(loginId, utf8In(request, field::ORDER_ID));
    if (outcome.refusal != 0) {
        return refused(request::ORDER_CANCEL, outcome.refusal, outcome.text);
    }
    MessagePtr const reply = messageOfType(request::ORDER_CANCEL);
    setText(*reply, field::ORDER_ID, outcome.orderId);
    setText(*reply, field::STATUS, outcome.status);
    return {reply, false, std::move(outcome.events)};
}

MarketAnswer Market::chartPeriods() {
    RefCountedPtr<ListDataImpl> const list(new ListDataImpl(field::PERIODS));
    for (std::string_view const type : periodTypes()) {
        list->addElement(new StringData(ansi(type)));
    }
    MessagePtr const reply = messageOfType(request::CHART_PERIODS);
    reply->setFieldValue(field::PERIODS, RefCountedPtr<FieldValue>(list));
    return replied(reply);
}

MarketAnswer Market::chartHistory(KestrinMessage const & request, long long now) const {
    auto const chart = chartIn(request);
    auto const bars = chart ? barsFor(request, *chart, charts_, minuteOf(now)) : std::nullopt;
    if (!bars) {
        return refused(request::CHART_HISTORY, REFUSED_CHART, "チャートの指定が正しくありません");
    }
    RefCountedPtr<ListDataImpl> const list(
        new ListDataImpl(static_cast<unsigned int>(bars->size()), field::BARS));
    for (Bar const & bar : *bars) {
        RefCountedPtr<MappedRecordData> const record(new MappedRecordData);
        setBar(*record, bar);
        list->addElement(record);
    }
    MessagePtr const reply = messageOfType(request::CHART_HISTORY);
    setChart(*reply, SYMBOLS[chart->symbol].code, chart->kind, utf8In(request, field::PERIOD_TYPE));
    reply->setFieldValue(field::BARS, RefCountedPtr<FieldValue>(list));
    return replied(reply);
}

MarketAnswer Market::newsDocument(KestrinMessage const & request) const {
    long long const type = numberIn(request, field::DOCUMENT_TYPE);
    auto const xml = news_.document(type, utf8In(request, field::DOCUMENT_ID));
    if (!xml) {
        return refused(request::NEWS_DOCUMENT, REFUSED_DOCUMENT, "ニュースが見つかりません");
    }
    MessagePtr const reply = messageOfType(request::NEWS_DOCUMENT);
    setText(*reply, field::XML, *xml);
    return replied(reply);
}

void Market::publish(std::vector<OrderEvent> const & events) {
    for (OrderEvent const & event : events) {
        MessagePtr const message = messageOfType(notice::ORDER);
        setText(*message, field::ORDER_ID, event.orderId);
        setText(*message, field::STATUS, event.status);
        setNumber(*message, field::FILLED, event.filled);
        setNumber(*message, field::LEFT, event.left);
        setPrice(*message, field::PRICE, event.price);
        sink_.publish({notice::ORDER, event.owner, event.owner, message});
    }
}

std::vector<Notice> Market::current(Topic const & topic, long long now) const {
    std::vector<Notice> notices;
    if (covers(topic.first, notice::QUOTE)) {
        for (std::size_t symbol = 0; symbol < SYMBOL_COUNT; ++symbol) {
            if (covers(topic.second, SYMBOLS[symbol].code)) {
                notices.push_back(quoteNotice(symbol, now));
            }
        }
    }
    return notices;
}

void Market::moveQuotes(long long now) {
    Minute const minute = minuteOf(now);
    if (dayOf(minute) != today_) {
        beginDay(now);
    }
    for (std::size_t const symbol : quotes_.step()) {
        Quote const & quote = quotes_.of(symbol);
        charts_.record(symbol, minute, quote);
        if (sink_.wants(notice::QUOTE, SYMBOLS[symbol].code)) {
            sink_.publish(quoteNotice(symbol, now));
        }
        publish(orders_.quote(symbol, quote));
        publishBars(symbol, minute);
    }
}

void Market::writeHeadline(long long now) {
    std::string const xml = news_.write(now);
    MessagePtr const message = messageOfType(notice::HEADLINE);
    setText(*message, field::XML, xml);
    sink_.publish({notice::HEADLINE, notice::HEADLINE_SUBJECT, "", message});
}

void Market::beginDay(long long now) {
    today_ = dayOf(minuteOf(now));
    quotes_.beginDay();
    for (std::size_t symbol = 0; symbol < SYMBOL_COUNT; ++symbol) {
        publishCharts(symbol, [&](PriceKindEnum /*kind*/, std::string_view /*periodType*/) {
            MessagePtr const message = messageOfType(notice::CHART);
            setText(*message, field::SYMBOL, SYMBOLS[symbol].code);
            setFlag(*message, field::RESET, true);
            return message;
        });
    }
}

Notice Market::quoteNotice(std::size_t symbol, long long now) const {
    Quote const & quote = quotes_.of(symbol);
    MessagePtr const message = messageOfType(notice::QUOTE);
    setText(*message, field::CODE, SYMBOLS[symbol].code);
    setPrice(*message, field::LAST, quote.last);
    setPrice(*message, field::BID, quote.bid);
    setPrice(*message, field::ASK, quote.ask);
    setPrice(*message, field::HIGH, quote.high);
    setPrice(*message, field::LOW, quote.low);
    setNumber(*message, field::VOLUME, quote.volume);
    setText(*message, field::TIME, timeTextOf(now));
    setPrice(*message, field::CHANGE, quote.change);
    return {notice::QUOTE, std::string(SYMBOLS[symbol].code), "", message};
}

void Market::publishBars(std::size_t symbol, Minute now) {
    publishCharts(symbol, [&](PriceKindEnum kind, std::string_view periodType) {
        MessagePtr const message = messageOfType(notice::CHART);
        setChart(*message, SYMBOLS[symbol].code, kind, periodType);
        setBar(*message, charts_.current({symbol, kind, *periodOf(periodType)}, now));
        return message;
    });
}

/// What `make` makes of each chart of the symbol that somebody wants.
void Market::publishCharts(
    std::size_t symbol, std::function<MessagePtr(PriceKindEnum, std::string_view)> const & make) {
    for (PriceKindEnum const kind : PRICE_KINDS) {
        for (std::string_view const type : periodTypes()) {
            std::string const subject = chartSubject(SYMBOLS[symbol].code, kind, type);
            if (sink_.wants(notice::CHART, subject)) {
                sink_.publish({notice::CHART, subject, "", make(kind, type)});
            }
        }
    }
}

}  // namespace backend
