#include "modules/services/RemoteChartService.h"

#include <limits>
#include <map>
#include <set>
#include <utility>

#include "modules/services/detail/AgentLink.h"
#include "modules/services/detail/ChartMessages.h"
#include "modules/services/detail/ListenerTable.h"
#include "modules/services/detail/Messages.h"
#include "modules/services/detail/Requests.h"
#include "tvk/agent/AsyncChartRequestOperation.h"
#include "tvk/agent/ChartListener.h"
#include "tvk/agent/ChartNoticeMessageListener.h"
#include "tvk/errors/KestrinConstants.h"

namespace tvk {

using services::AgentLink;
using services::ChartKey;
using services::Exchange;
using services::ListenerTable;
using services::Operation;
using services::Outcome;
using services::Requests;

namespace {

class ChartOperation;

struct ChartKind {
    using Service = ChartService;
    using Listener = ChartListener;
    using Handle = AsyncChartRequestOperation;
    using Operation = ChartOperation;
    static constexpr auto ON_TIMEOUT = &ChartListener::onHistoryTimeout;
    static constexpr auto ON_CANCELED = &ChartListener::onHistoryCanceled;
    static constexpr auto ON_ERROR = &ChartListener::onHistoryError;
};

class ChartOperation : public Operation<ChartKind> {
public:
    ChartOperation(ChartKey chart, ChartListener * listener, void * userObject)
        : Operation(listener, userObject), chart_(std::move(chart)) {}

    ChartKey const & chart() const { return chart_; }

private:
    ChartKey const chart_;
};

using History = std::vector<RefCountedPtr<ChartHistoricalDataRec>>;

/// What the service knows of a chart.
struct Chart {
    int subscriptions = 0;
    bool isOpen = false;   // at the agent
    bool wasOpen = false;  // so too, in this run or before
    History history;
    RefCountedPtr<ChartRealDataRec> last;

    bool isNeedless() const { return subscriptions == 0 && history.empty() && last.isNull(); }
};

/// The listeners of the service itself stand under one text.
CString const & ofService() {
    static CString const text;
    return text;
}

}  // namespace

class RemoteChartService::Impl final : private AgentLink::Client {
public:
    Impl(RemoteChartService & service, RefCountedPtr<Kestrin> const & agent, int timeoutMilliSec)
        : service_(service),
          link_(agent, timeoutMilliSec, COMPONENT_CODE, *this),
          requests_(service, link_,
                    [this](ChartOperation & operation, KestrinMessage const & reply) {
                        takeHistory(operation, reply);
                    }) {}

    bool start(ErrorInfo * error);
    void stop() { end(nullptr); }
    /// Ends without a word to those who are not owed the outcome of a request.
    void leave(ErrorInfo const * error);

    bool isStopped() const { return state_ == State::STOPPED; }
    bool isRunning() const { return state_ == State::RUNNING; }

    template <class... Range>
    RefCountedPtr<ChartOperation> request(ChartKey const & key, ChartListener * listener,
                                          void * userObject, Range const &... range);

    int subscribe(ChartKey const & key);
    int unsubscribe(ChartKey const & key);
    bool hasSubscription(ChartKey const & key) const;

    Chart const * find(ChartKey const & key) const;
    void clear(ChartKey const & key);

    std::vector<CString> const & periodTypes() const { return periodTypes_; }
    ListenerTable<ChartListener> & listeners() { return listeners_; }
    ListenerTable<ChartNoticeMessageListener> & noticeListeners() { return noticeListeners_; }
    Requests<ChartKind> & requests() { return requests_; }
    unsigned long long droppedNotices() const { return droppedNotices_; }

private:
    enum class State { STOPPED, STARTING, RUNNING };

    RefCounted const & counted() const override { return service_; }
    void agentStopped(ErrorInfo const * error) override { end(error); }
    void realTimeRestarted() override;
    void noticeArrived(KestrinMessage const & notice) override;

    void takePeriods(Outcome const & outcome);
    void run();
    void openAll();
    void open(ChartKey const & key, Chart & chart);
    void end(ErrorInfo const * error);
    void takeHistory(ChartOperation & operation, KestrinMessage const & reply);
    void takeUpdate(ChartKey const & key, RefCountedPtr<ChartRealDataRec> const & record);
    void reset(CString const & symbolCode);
    void resetAll(std::set<CString> const & symbolCodes);

    template <class Condition>
    std::set<CString> symbolsOf(Condition const & condition) const;
    bool isSubscribed(CString const & symbolCode) const;
    bool isRun(unsigned int run) const { return isRunning() && run_ == run; }
    static AgentLink::Topic topicOf(ChartKey const & key) {
        return {services::CHART_NOTICE, services::subjectOf(key)};
    }
    template <class Condition, class Call>
    void tellNoticeListeners(CString const & symbolCode, Condition const & goesOn,
                             Call const & call);
    void forget(std::map<ChartKey, Chart>::iterator entry);

    RemoteChartService & service_;
    AgentLink link_;
    Requests<ChartKind> requests_;
    ListenerTable<ChartListener> listeners_;
    ListenerTable<ChartNoticeMessageListener> noticeListeners_;
    State state_ = State::STOPPED;
    unsigned int run_ = 0;  // tells a start from those before it
    RefCountedPtr<Exchange> starting_;
    std::vector<CString> periodTypes_;
    std::map<ChartKey, Chart> charts_;
    unsigned long long droppedNotices_ = 0;
};

bool RemoteChartService::Impl::start(ErrorInfo * error) {
    if (!isStopped()) {
        return true;
    }
    if (!link_.join(error)) {
        return false;
    }
    RefCountedPtr<ChartService> const alive(&service_);
    state_ = State::STARTING;
    unsigned int const run = ++run_;
    auto const isStarting = [this, run] { return state_ == State::STARTING && run_ == run; };
    RefCountedPtr<Exchange> const exchange =
        link_.ask(services::periodsRequest(), [this, isStarting](Outcome const & outcome) {
            if (isStarting()) {
                takePeriods(outcome);
            }
        });
    if (isStarting()) {
        starting_ = exchange;
    } else {
        exchange->giveUp();  // stopped by somebody whom the agent called meanwhile
    }
    return true;
}

void RemoteChartService::Impl::takePeriods(Outcome const & outcome) {
    starting_ = nullptr;
    ErrorInfo error = outcome.error;
    switch (outcome.kind) {
        case Outcome::REPLIED:
            if (services::readPeriods(*outcome.reply, COMPONENT_CODE, &periodTypes_, &error)) {
                run();
                return;
            }
            break;
        case Outcome::TIMED_OUT:
            error = services::errorOf(COMPONENT_CODE, KestrinConstants::ERR_RequestTimeOut,
                                      "chartPeriods: no answer came in time");
            break;
        case Outcome::CANCELED:
            if (link_.isAgentStopped()) {
                stop();  // the agent was asked to stop, and tells the requests first
                return;
            }
            error = services::errorOf(COMPONENT_CODE, KestrinConstants::ERR_RequestCanceled,
                                      "chartPeriods: the request was cancelled");
            break;
        case Outcome::FAILED:
            break;
    }
    end(&error);
}

void RemoteChartService::Impl::run() {
    state_ = State::RUNNING;
    unsigned int const run = run_;
    std::set<CString> const interrupted =
        symbolsOf([](Chart const & chart) { return chart.subscriptions != 0 && chart.wasOpen; });
    openAll();
    listeners_.pass(
        {ofService()}, [&] { return isRun(run); },
        [&](ChartListener & listener) { listener.onServiceStarted(&service_); });
    if (isRun(run)) {
        resetAll(interrupted);
    }
}

void RemoteChartService::Impl::openAll() {
    std::vector<ChartKey> keys;
    for (auto const & entry : charts_) {
        keys.push_back(entry.first);
    }
    for (ChartKey const & key : keys) {
        auto const entry = charts_.find(key);
        if (entry != charts_.end()) {
            open(key, entry->second);
        }
    }
}

void RemoteChartService::Impl::open(ChartKey const & key, Chart & chart) {
    if (isRunning() && chart.subscriptions != 0 && !chart.isOpen) {
        chart.isOpen = true;
        chart.wasOpen = true;
        link_.open(topicOf(key));
    }
}

void RemoteChartService::Impl::leave(ErrorInfo const * error) {
    // First of all: what a callback asks for from here on is refused.
    state_ = State::STOPPED;
    for (auto & entry : charts_) {
        entry.second.isOpen = false;
    }
    link_.leave();
    if (RefCountedPtr<Exchange> const exchange = std::exchange(starting_, nullptr)) {
        exchange->giveUp();
    }
    requests_.endAll(error);
}

void RemoteChartService::Impl::end(ErrorInfo const * error) {
    if (isStopped()) {
        return;
    }
    RefCountedPtr<ChartService> const alive(&service_);
    leave(error);
    listeners_.pass(
        {ofService()}, [] { return true; },
        [&](ChartListener & listener) { listener.onServiceStopped(&service_, error); });
}

template <class... Range>
RefCountedPtr<ChartOperation> RemoteChartService::Impl::request(ChartKey const & key,
                                                                ChartListener * listener,
                                                                void * userObject,
                                                                Range const &... range) {
    if (!isRunning()) {
        return nullptr;
    }
    RefCountedPtr<ChartService> const alive(&service_);
    RefCountedPtr<ChartOperation> operation(new ChartOperation(key, listener, userObject));
    requests_.ask(operation, services::historyRequest(key, range...));
    return operation;
}

void RemoteChartService::Impl::takeHistory(ChartOperation & operation,
                                           KestrinMessage const & reply) {
    ErrorInfo error;
    History history;
    if (!services::readHistory(reply, COMPONENT_CODE, operation.chart(), &history, &error)) {
        requests_.fail(&operation, error);
        return;
    }
    charts_[operation.chart()].history = history;
    forget(charts_.find(operation.chart()));
    requests_.conclude(&operation, &ChartListener::onHistory, history);
}

int RemoteChartService::Impl::subscribe(ChartKey const & key) {
    Chart & chart = charts_[key];
    int const count = ++chart.subscriptions;
    open(key, chart);
    return count;
}

int RemoteChartService::Impl::unsubscribe(ChartKey const & key) {
    auto const entry = charts_.find(key);
    if (entry == charts_.end() || entry->second.subscriptions == 0) {
        return 0;
    }
    int const count = --entry->second.subscriptions;
    if (count == 0) {
        bool const isOpen = std::exchange(entry->second.isOpen, false);
        entry->second.wasOpen = false;
        forget(entry);
        if (isOpen) {
            link_.close(topicOf(key));
        }
    }
    return count;
}

bool RemoteChartService::Impl::hasSubscription(ChartKey const & key) const {
    Chart const * const chart = find(key);
    return chart != nullptr && chart->subscriptions != 0;
}

Chart const * RemoteChartService::Impl::find(ChartKey const & key) const {
    auto const entry = charts_.find(key);
    return entry == charts_.end() ? nullptr : &entry->second;
}

void RemoteChartService::Impl::clear(ChartKey const & key) {
    auto const entry = charts_.find(key);
    if (entry != charts_.end()) {
        // What goes may call back from its end: only then, and not sooner.
        History const history = std::exchange(entry->second.history, {});
        RefCountedPtr<ChartRealDataRec> const last = std::exchange(entry->second.last, nullptr);
        forget(entry);
    }
}

/// Drops an entry that tells nothing, so that the table does not grow with all charts ever seen.
void RemoteChartService::Impl::forget(std::map<ChartKey, Chart>::iterator entry) {
    if (entry->second.isNeedless()) {
        charts_.erase(entry);
    }
}

void RemoteChartService::Impl::noticeArrived(KestrinMessage const & notice) {
    ErrorInfo error;
    services::ChartUpdate update;
    bool const isRead = services::readUpdate(notice, COMPONENT_CODE, &update, &error);
    if (isRead && update.isReset && isSubscribed(update.chart.symbolCode)) {
        reset(update.chart.symbolCode);
    } else if (isRead && !update.isReset && hasSubscription(update.chart)) {
        takeUpdate(update.chart, update.record);
    } else {
        ++droppedNotices_;
    }
}

void RemoteChartService::Impl::takeUpdate(ChartKey const & key,
                                          RefCountedPtr<ChartRealDataRec> const & record) {
    charts_[key].last = record;
    tellNoticeListeners(
        key.symbolCode, [&] { return hasSubscription(key); },
        [&](ChartNoticeMessageListener & listener) { listener.onRealData(&service_, record); });
}

void RemoteChartService::Impl::realTimeRestarted() {
    if (isRunning()) {
        resetAll(symbolsOf([](Chart const & chart) { return chart.subscriptions != 0; }));
    }
}

void RemoteChartService::Impl::resetAll(std::set<CString> const & symbolCodes) {
    unsigned int const run = run_;
    for (CString const & symbolCode : symbolCodes) {
        if (isRun(run)) {
            reset(symbolCode);
        }
    }
}

void RemoteChartService::Impl::reset(CString const & symbolCode) {
    tellNoticeListeners(
        symbolCode, [&] { return isSubscribed(symbolCode); },
        [&](ChartNoticeMessageListener & listener) {
            listener.onRealDataReset(&service_, symbolCode);
        });
}

template <class Condition, class Call>
void RemoteChartService::Impl::tellNoticeListeners(CString const & symbolCode,
                                                   Condition const & goesOn, Call const & call) {
    unsigned int const run = run_;
    CString const & all = KestrinConstants::WILDCARD;
    auto const stillGoesOn = [&] { return isRun(run) && goesOn(); };
    if (symbolCode == all) {
        noticeListeners_.pass({all}, stillGoesOn, call);
    } else {
        noticeListeners_.pass({all, symbolCode}, stillGoesOn, call);
    }
}

template <class Condition>
std::set<CString> RemoteChartService::Impl::symbolsOf(Condition const & condition) const {
    std::set<CString> symbolCodes;
    for (auto const & [key, chart] : charts_) {
        if (condition(chart)) {
            symbolCodes.insert(key.symbolCode);
        }
    }
    return symbolCodes;
}

bool RemoteChartService::Impl::isSubscribed(CString const & symbolCode) const {
    // The charts of a symbol stand together.
    constexpr auto LEAST = static_cast<PriceKindEnum>(std::numeric_limits<int>::min());
    auto entry = charts_.lower_bound({symbolCode, LEAST, ""});
    while (entry != charts_.end() && entry->first.symbolCode == symbolCode &&
           entry->second.subscriptions == 0) {
        ++entry;
    }
    return entry != charts_.end() && entry->first.symbolCode == symbolCode;
}

RemoteChartService::RemoteChartService(RefCountedPtr<Kestrin> const & agent, int timeoutMilliSec)
    : impl_(std::make_unique<Impl>(*this, agent, timeoutMilliSec)) {}

RemoteChartService::~RemoteChartService() = default;

void RemoteChartService::destroyObject() const {
    if (impl_->isStopped()) {
        ChartService::destroyObject();
        return;
    }
    // The listeners of pending requests are told while the service is still whole, and hold references
    // to it as they like. The last of these comes here again.
    RefCountedPtr<RemoteChartService const> const alive(this);
    impl_->leave(nullptr);
}

bool RemoteChartService::start(ErrorInfo * error) { return impl_->start(error); }

void RemoteChartService::stop() { impl_->stop(); }

bool RemoteChartService::isRunning() const { return impl_->isRunning(); }

void RemoteChartService::addChartListener(ChartListener * listener) {
    impl_->listeners().add(ofService(), listener);
}

bool RemoteChartService::hasChartListener(ChartListener const * listener) const {
    return impl_->listeners().has(ofService(), listener);
}

void RemoteChartService::removeChartListener(ChartListener const * listener) {
    impl_->listeners().remove(ofService(), listener);
}

void RemoteChartService::removeAllChartListeners() { impl_->listeners().clear(); }

std::vector<ChartListener *> RemoteChartService::getChartListeners() const {
    return impl_->listeners().all(ofService());
}

void RemoteChartService::addNoticeMessageListener(CString const & symbolCode,
                                                  ChartNoticeMessageListener * listener) {
    impl_->noticeListeners().add(symbolCode, listener);
}

int RemoteChartService::removeNoticeMessageListener(CString const & symbolCode,
                                                    ChartNoticeMessageListener const * listener) {
    return impl_->noticeListeners().remove(symbolCode, listener) ? 1 : 0;
}

void RemoteChartService::removeAllNoticeMessageListeners() { impl_->noticeListeners().clear(); }

RefCountedPtr<AsyncChartRequestOperation> RemoteChartService::requestHistory(
    CString const & symbolCode, PriceKindEnum priceKind, CString const & periodType,
    unsigned int count, ChartListener * listener, void * userObject) {
    return impl_->request({symbolCode, priceKind, periodType}, listener, userObject, count);
}

RefCountedPtr<AsyncChartRequestOperation> RemoteChartService::requestHistoryBetween(
    CString const & symbolCode, PriceKindEnum priceKind, CString const & periodType,
    CString const & fromDate, CString const & toDate, ChartListener * listener, void * userObject) {
    return impl_->request({symbolCode, priceKind, periodType}, listener, userObject, fromDate,
                          toDate);
}

void RemoteChartService::cancelAllRequests() { impl_->requests().cancelAll(); }

void RemoteChartService::cancelRequestsByListener(ChartListener const * listener) {
    impl_->requests().cancelByListener(listener);
}

int RemoteChartService::subscribe(CString const & symbolCode, PriceKindEnum priceKind,
                                  CString const & periodType) {
    return impl_->subscribe({symbolCode, priceKind, periodType});
}

int RemoteChartService::unsubscribe(CString const & symbolCode, PriceKindEnum priceKind,
                                    CString const & periodType) {
    return impl_->unsubscribe({symbolCode, priceKind, periodType});
}

bool RemoteChartService::hasSubscription(CString const & symbolCode, PriceKindEnum priceKind,
                                         CString const & periodType) const {
    return impl_->hasSubscription({symbolCode, priceKind, periodType});
}

unsigned int RemoteChartService::getHistoryCount(CString const & symbolCode,
                                                 PriceKindEnum priceKind,
                                                 CString const & periodType) const {
    Chart const * const chart = impl_->find({symbolCode, priceKind, periodType});
    return chart == nullptr ? 0 : static_cast<unsigned int>(chart->history.size());
}

RefCountedPtr<ChartHistoricalDataRec> RemoteChartService::getHistoryRecord(
    CString const & symbolCode, PriceKindEnum priceKind, CString const & periodType,
    unsigned int index) const {
    Chart const * const chart = impl_->find({symbolCode, priceKind, periodType});
    return chart == nullptr || index >= chart->history.size() ? nullptr : chart->history[index];
}

RefCountedPtr<ChartRealDataRec> RemoteChartService::getLastRecord(
    CString const & symbolCode, PriceKindEnum priceKind, CString const & periodType) const {
    Chart const * const chart = impl_->find({symbolCode, priceKind, periodType});
    return chart == nullptr ? nullptr : chart->last;
}

void RemoteChartService::clearHistory(CString const & symbolCode, PriceKindEnum priceKind,
                                      CString const & periodType) {
    impl_->clear({symbolCode, priceKind, periodType});
}

std::vector<CString> RemoteChartService::getPeriodTypes() const { return impl_->periodTypes(); }

unsigned long long RemoteChartService::getDroppedNoticeCount() const {
    return impl_->droppedNotices();
}

}  // namespace tvk
