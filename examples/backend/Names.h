#pragma once

/// The names that travel between the back end and its clients: message types, and fields of their bodies.
/// Needs nothing of the back end itself.
namespace backend {

/// Types of requests.
namespace request {
// Of the connection and the session: what an agent sends by itself.
constexpr char LOGIN[] = "login";
constexpr char LOGOUT[] = "logout";
constexpr char START_REAL_TIME[] = "startRealTime";
constexpr char STOP_REAL_TIME[] = "stopRealTime";
constexpr char SUBSCRIBE[] = "subscribe";
constexpr char UNSUBSCRIBE[] = "unsubscribe";
// Of the application.
constexpr char SYMBOLS[] = "symbols";
constexpr char ORDER_NEW[] = "orderNew";
constexpr char ORDER_CANCEL[] = "orderCancel";
constexpr char CHART_PERIODS[] = "chartPeriods";
constexpr char CHART_HISTORY[] = "chartHistory";
constexpr char NEWS_DOCUMENT[] = "newsDocument";
constexpr char ECHO[] = "echo";
constexpr char FAULT[] = "fault";
}  // namespace request

/// Types of notices. The subject of each stands behind it.
namespace notice {
constexpr char QUOTE[] = "quote";        // the code of a symbol
constexpr char ORDER[] = "order";        // the login of whose order it is
constexpr char CHART[] = "chart";        // symbol, price kind and period type, with slashes between
constexpr char HEADLINE[] = "headline";  // HEADLINE_SUBJECT
constexpr char HEADLINE_SUBJECT[] = "all";
}  // namespace notice

/// Fields of bodies.
namespace field {
// hello, welcome, goodbye
constexpr char PROTOCOL[] = "protocol";
constexpr char HEARTBEAT[] = "heartbeatMilliSec";
constexpr char TIME[] = "time";
constexpr char RETRY[] = "retry";
// failures
constexpr char CODE[] = "code";  // and that of a symbol
constexpr char TEXT[] = "text";
constexpr char NETWORK[] = "network";
// login
constexpr char LOGIN_ID[] = "loginId";
constexpr char PASSWORD[] = "password";
constexpr char SESSION[] = "session";
constexpr char LAST_SEQUENCE[] = "lastSequence";
constexpr char RESUMED[] = "resumed";
constexpr char STARTUP[] = "startup";
// subscribe, unsubscribe
constexpr char TYPE[] = "type";
constexpr char SUBJECT[] = "subject";
// symbols
constexpr char SYMBOLS[] = "symbols";
constexpr char NAME[] = "name";
constexpr char TICK[] = "tick";
constexpr char UNIT[] = "unit";
// quotes
constexpr char LAST[] = "last";
constexpr char BID[] = "bid";
constexpr char ASK[] = "ask";
constexpr char HIGH[] = "high";
constexpr char LOW[] = "low";
constexpr char VOLUME[] = "volume";
constexpr char CHANGE[] = "change";
// orders
constexpr char SIDE[] = "side";
constexpr char QUANTITY[] = "quantity";
constexpr char PRICE[] = "price";
constexpr char ORDER_ID[] = "orderId";
constexpr char STATUS[] = "status";
constexpr char FILLED[] = "filled";
constexpr char LEFT[] = "left";
// charts
constexpr char PERIODS[] = "periods";
constexpr char SYMBOL[] = "symbol";
constexpr char PRICE_KIND[] = "priceKind";
constexpr char PERIOD_TYPE[] = "periodType";
constexpr char COUNT[] = "count";
constexpr char FROM[] = "from";
constexpr char TO[] = "to";
constexpr char BARS[] = "bars";
constexpr char DATE[] = "date";
constexpr char OPEN[] = "open";
constexpr char CLOSE[] = "close";
constexpr char RESET[] = "reset";
// news
constexpr char DOCUMENT_TYPE[] = "documentType";
constexpr char DOCUMENT_ID[] = "documentId";
constexpr char XML[] = "xml";
// faults
constexpr char KIND[] = "kind";
constexpr char MILLI_SEC[] = "milliSec";
constexpr char AFTER_BYTES[] = "afterBytes";
constexpr char BYTES_PER_SECOND[] = "bytesPerSecond";
constexpr char FIRST[] = "first";
constexpr char PACED[] = "paced";
constexpr char NUMBER[] = "n";
}  // namespace field

/// Codes of refusals, in the range that is the application's own.
constexpr int REFUSED_SYMBOL = 7001;
constexpr int REFUSED_QUANTITY = 7002;
constexpr int REFUSED_PRICE = 7003;
constexpr int REFUSED_SIDE = 7004;
constexpr int REFUSED_ORDER_ID = 7005;
constexpr int REFUSED_TOO_MANY = 7006;
constexpr int REFUSED_CHART = 7007;
constexpr int REFUSED_DOCUMENT = 7008;
constexpr int REFUSED_FAULT = 7009;
constexpr int REFUSED_SUBSCRIPTION = 7010;

}  // namespace backend
