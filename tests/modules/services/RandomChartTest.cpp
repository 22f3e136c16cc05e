// RemoteChartService on random sequences of calls and answers: beside a plain model of it, and with
// listeners that call it from inside every callback.

#include <algorithm>
#include <array>
#include <list>
#include <map>
#include <random>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "tests/modules/services/support/RemoteChartFixture.h"

namespace tvk {
namespace {

using test::ASK_PERIODS;
using test::barsAnswer;
using test::ChartEar;
using test::ChartNoticeEar;
using test::FakeKestrin;
using test::Log;
using test::PERIODS;
using test::updateNotice;

struct Key {
    std::string symbol;
    int kind;
    std::string period;

    bool operator<(Key const & other) const {
        return std::tie(symbol, kind, period) < std::tie(other.symbol, other.kind, other.period);
    }
    bool operator==(Key const & other) const = default;
    PriceKindEnum priceKind() const { return static_cast<PriceKindEnum>(kind); }
    std::string subject() const { return symbol + '/' + std::to_string(kind) + '/' + period; }
};

Key const KEYS[] = {{"7203", 1, "5"}, {"7203", 2, "5"}, {"7203", 1, "D"}, {"9984", 1, "5"}};
constexpr int EARS = 3;
char const * const TEXTS[] = {"*", "7203", "9984"};

class Dice {
public:
    explicit Dice(unsigned int seed) : engine_(seed) {}
    int below(int limit) { return static_cast<int>(engine_() % static_cast<unsigned int>(limit)); }

private:
    std::mt19937 engine_;
};

/// A service that is a handful of lists, and writes down what the real one should do.
class Model {
public:
    enum State { STOPPED, STARTING, RUNNING };
    struct Pending {
        int id;
        int ear;
        Key key;
    };

    State state = STOPPED;
    std::vector<int> listeners;
    std::vector<std::pair<std::string, int>> noticeListeners;
    std::map<Key, int> subscriptions;
    std::set<Key> wereOpen;
    std::vector<Pending> pending;
    std::map<Key, std::vector<int>> histories;
    std::map<Key, int> last;
    Log log;

    void start() {
        if (state == STOPPED) {
            state = STARTING;
            log.push_back(ASK_PERIODS);
        }
    }
    void periodsCame() {
        state = RUNNING;
        for (auto const & [key, count] : subscriptions) {
            if (count > 0) {
                log.push_back("subscribe chart " + key.subject());
            }
        }
        for (int const ear : listeners) {
            log.push_back(name(ear) + " started");
        }
        std::set<std::string> symbols;
        for (Key const & key : wereOpen) {
            symbols.insert(key.symbol);
        }
        for (auto const & [key, count] : subscriptions) {
            if (count > 0) {
                wereOpen.insert(key);
            }
        }
        reset(symbols);
    }
    void stop(std::string const & outcome, std::string const & why) {
        if (state == STOPPED) {
            return;
        }
        if (state == RUNNING) {
            std::set<std::string> subjects;
            for (auto const & [key, count] : subscriptions) {
                if (count > 0) {
                    subjects.insert(key.subject());
                }
            }
            for (std::string const & subject : subjects) {
                log.push_back("unsubscribe chart " + subject);
            }
        }
        state = STOPPED;
        cancel([](Pending const &) { return true; }, outcome);
        for (int const ear : listeners) {
            log.push_back(name(ear) + " stopped " + why);
        }
    }
    template <class Condition>
    void cancel(Condition const & condition, std::string const & outcome) {
        std::vector<Pending> left;
        for (Pending const & each : pending) {
            if (condition(each)) {
                log.push_back(name(each.ear) + ' ' + outcome);
            } else {
                left.push_back(each);
            }
        }
        pending = left;
    }
    void end(int id, std::string const & outcome) {
        cancel([&](Pending const & each) { return each.id == id; }, outcome);
    }
    int subscribe(Key const & key) {
        int const count = ++subscriptions[key];
        if (count == 1 && state == RUNNING) {
            wereOpen.insert(key);
            log.push_back("subscribe chart " + key.subject());
        }
        return count;
    }
    int unsubscribe(Key const & key) {
        int & count = subscriptions[key];
        if (count == 0) {
            return 0;
        }
        if (--count == 0) {
            wereOpen.erase(key);
            if (state == RUNNING) {
                log.push_back("unsubscribe chart " + key.subject());
            }
        }
        return count;
    }
    bool isSubscribed(Key const & key) const {
        auto const found = subscriptions.find(key);
        return found != subscriptions.end() && found->second > 0;
    }
    void update(Key const & key, int close) {
        if (state == RUNNING && isSubscribed(key)) {
            last[key] = close;
            tell(key.symbol, "update " + key.symbol + ' ' + std::to_string(close));
        }
    }
    void reset(std::set<std::string> const & symbols) {
        for (std::string const & symbol : symbols) {
            tell(symbol, "reset " + symbol);
        }
    }
    std::set<std::string> subscribedSymbols() const {
        std::set<std::string> symbols;
        for (auto const & [key, count] : subscriptions) {
            if (count > 0) {
                symbols.insert(key.symbol);
            }
        }
        return symbols;
    }
    static std::string name(int ear) { return std::to_string(ear); }

private:
    void tell(std::string const & symbol, std::string const & what) {
        for (std::string const & text : {std::string("*"), symbol}) {
            for (auto const & [under, ear] : noticeListeners) {
                if (under == text) {
                    log.push_back("n" + name(ear) + ' ' + what);
                }
            }
        }
    }
};

class Duel {
public:
    explicit Duel(unsigned int seed) : dice_(seed) {}

    void run(int steps) {
        for (int step = 0; step < steps && !testing::Test::HasFailure(); ++step) {
            SCOPED_TRACE(step);
            model_.log.clear();
            log_.clear();
            act();
            compare();
        }
    }

private:
    struct Asked {
        int id;
        FakeKestrin::OperationPtr atAgent;
        RefCountedPtr<AsyncChartRequestOperation> handle;
    };

    void act() {
        switch (dice_.below(14)) {
            case 0:
                return dice_.below(4) == 0 ? stop() : start();
            case 1:
                return answerStart();
            case 2:
            case 3:
                return ask();
            case 4:
            case 5:
                return answer();
            case 6:
                return cancel();
            case 7: {
                Key const key = someKey();
                EXPECT_EQ(
                    service_->subscribe(key.symbol.c_str(), key.priceKind(), key.period.c_str()),
                    model_.subscribe(key));
                return;
            }
            case 8: {
                Key const key = someKey();
                EXPECT_EQ(
                    service_->unsubscribe(key.symbol.c_str(), key.priceKind(), key.period.c_str()),
                    model_.unsubscribe(key));
                return;
            }
            case 9:
            case 10:
                return notify();
            case 11:
                return changeListeners();
            case 12:
                return changeNoticeListeners();
            default: {
                Key const key = someKey();
                service_->clearHistory(key.symbol.c_str(), key.priceKind(), key.period.c_str());
                model_.histories.erase(key);
                model_.last.erase(key);
            }
        }
    }

    void start() {
        bool const asks = model_.state == Model::STOPPED;
        EXPECT_TRUE(service_->start(nullptr));
        model_.start();
        if (asks) {
            periods_ = agent_->newest();
        }
    }
    void stop() {
        service_->stop();
        model_.stop("canceled", "null");
    }
    void answerStart() {
        if (model_.state != Model::STARTING) {
            return;
        }
        if (dice_.below(4) == 0) {
            agent_->fail(periods_, test::backEndError());
            model_.stop("", "7001 no such chart");
        } else {
            agent_->reply(periods_, PERIODS);
            model_.periodsCame();
        }
    }
    void ask() {
        Key const key = someKey();
        int const ear = dice_.below(EARS);
        auto const handle =
            service_->requestHistory(key.symbol.c_str(), key.priceKind(), key.period.c_str(), 2,
                                     &ears_.at(index(ear)), this);
        ASSERT_EQ(!handle.isNull(), model_.state == Model::RUNNING);
        if (handle) {
            model_.pending.push_back({++lastId_, ear, key});
            asked_.push_back({lastId_, agent_->newest(), handle});
            model_.log = log_;  // the wording of requests is not this test's
        }
    }
    void answer() {
        if (model_.pending.empty()) {
            return;
        }
        Model::Pending const request =
            model_.pending[index(dice_.below(static_cast<int>(model_.pending.size())))];
        Asked const asked = *std::find_if(asked_.begin(), asked_.end(), [&](Asked const & each) {
            return each.id == request.id;
        });
        switch (dice_.below(5)) {
            case 0:
                agent_->timeOut(asked.atAgent);
                return model_.end(request.id, "timeout");
            case 1:
                agent_->fail(asked.atAgent, test::backEndError());
                return model_.end(request.id, "error 7001 no such chart");
            case 2:
                agent_->reply(asked.atAgent, "{}");
                return model_.end(request.id,
                                  "error 7 chartHistory: the field \"symbol\" is missing");
            default: {
                std::vector<int> const closes(index(dice_.below(4)), dice_.below(100));
                agent_->reply(asked.atAgent, barsAnswer(closes, request.key.symbol,
                                                        request.key.kind, request.key.period));
                model_.histories[request.key] = closes;
                return model_.end(request.id, "history " + std::to_string(closes.size()));
            }
        }
    }
    void cancel() {
        int const ear = dice_.below(EARS);
        switch (dice_.below(6)) {
            case 0:
                service_->cancelAllRequests();
                return model_.cancel([](Model::Pending const &) { return true; }, "canceled");
            case 1:
                service_->cancelRequestsByListener(&ears_.at(index(ear)));
                return model_.cancel([&](Model::Pending const & each) { return each.ear == ear; },
                                     "canceled");
            default:
                if (!asked_.empty()) {
                    Asked const asked = asked_[index(dice_.below(static_cast<int>(asked_.size())))];
                    asked.handle->cancel();
                    model_.end(asked.id, "canceled");
                }
        }
    }
    void notify() {
        Key const key = someKey();
        int const close = dice_.below(1000);
        switch (dice_.below(6)) {
            case 0:
                agent_->fireOnRealTimeServiceStarted(true);
                if (model_.state == Model::RUNNING) {
                    model_.reset(model_.subscribedSymbols());
                }
                return;
            case 1:
                agent_->notify("chart", key.subject().c_str(),
                               R"({"symbol":")" + key.symbol + R"(","reset":true})");
                if (model_.state == Model::RUNNING && model_.isSubscribed(key)) {
                    model_.reset({key.symbol});
                }
                return;
            default:
                agent_->notify("chart", key.subject().c_str(),
                               updateNotice(close, key.symbol, key.kind, key.period));
                model_.update(key, close);
        }
    }
    void changeListeners() {
        int const ear = dice_.below(EARS);
        auto & listeners = model_.listeners;
        if (dice_.below(2) == 0) {
            service_->addChartListener(&ears_.at(index(ear)));
            listeners.push_back(ear);
        } else {
            service_->removeChartListener(&ears_.at(index(ear)));
            auto const place = std::find(listeners.begin(), listeners.end(), ear);
            if (place != listeners.end()) {
                listeners.erase(place);
            }
        }
    }
    void changeNoticeListeners() {
        int const ear = dice_.below(EARS);
        char const * const text = TEXTS[dice_.below(3)];
        auto & listeners = model_.noticeListeners;
        if (dice_.below(2) == 0) {
            service_->addNoticeMessageListener(text, &noticeEars_.at(index(ear)));
            listeners.emplace_back(text, ear);
        } else {
            auto const place =
                std::find(listeners.begin(), listeners.end(), std::pair(std::string(text), ear));
            EXPECT_EQ(service_->removeNoticeMessageListener(text, &noticeEars_.at(index(ear))),
                      place == listeners.end() ? 0 : 1);
            if (place != listeners.end()) {
                listeners.erase(place);
            }
        }
    }

    void compare() {
        ASSERT_EQ(log_, model_.log);
        EXPECT_EQ(service_->isRunning(), model_.state == Model::RUNNING);
        EXPECT_EQ(service_->getChartListeners().size(), model_.listeners.size());
        for (Key const & key : KEYS) {
            CString const symbol = key.symbol.c_str();
            CString const period = key.period.c_str();
            EXPECT_EQ(service_->hasSubscription(symbol, key.priceKind(), period),
                      model_.isSubscribed(key));
            EXPECT_EQ(agent_->hasSubscription("chart", key.subject().c_str()),
                      model_.state == Model::RUNNING && model_.isSubscribed(key));
            EXPECT_EQ(service_->getHistoryCount(symbol, key.priceKind(), period),
                      model_.histories[key].size());
            auto const last = service_->getLastRecord(symbol, key.priceKind(), period);
            ASSERT_EQ(!last.isNull(), model_.last.count(key) != 0);
            if (last) {
                EXPECT_EQ(last->getClosePrice(), std::to_string(model_.last[key]).c_str());
            }
        }
        std::size_t const open = model_.pending.size() + (model_.state == Model::STARTING ? 1 : 0);
        EXPECT_EQ(agent_->open.size(), open);
        for (Asked const & asked : asked_) {
            bool const isPending =
                std::any_of(model_.pending.begin(), model_.pending.end(),
                            [&](Model::Pending const & each) { return each.id == asked.id; });
            EXPECT_EQ(asked.handle->isPending(), isPending);
        }
        if (asked_.size() > 50) {
            asked_.erase(asked_.begin(), asked_.begin() + 10);
        }
    }

    Key someKey() { return KEYS[dice_.below(static_cast<int>(std::size(KEYS)))]; }
    static std::size_t index(int number) { return static_cast<std::size_t>(number); }

    Dice dice_;
    Log log_;
    RefCountedPtr<FakeKestrin> agent_{new FakeKestrin(log_)};
    std::array<ChartEar, EARS> ears_{ChartEar(log_, "0"), ChartEar(log_, "1"), ChartEar(log_, "2")};
    std::array<ChartNoticeEar, EARS> noticeEars_{
        ChartNoticeEar(log_, "n0"), ChartNoticeEar(log_, "n1"), ChartNoticeEar(log_, "n2")};
    RefCountedPtr<RemoteChartService> service_{new RemoteChartService(agent_)};
    Model model_;
    FakeKestrin::OperationPtr periods_;
    std::vector<Asked> asked_;
    int lastId_ = 0;
};

TEST(RandomChart, DoesWhatThePlainModelDoes) {
    for (unsigned int seed = 1; seed <= 20 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Duel(seed).run(1000);
    }
}

/// Calls everything from inside everything, and watches what must hold whatever the order.
class Storm {
public:
    explicit Storm(unsigned int seed) : dice_(seed) {
        for (ChartEar & ear : ears_) {
            ear.during = [this, &ear] { heard(ear); };
        }
        for (ChartNoticeEar & ear : noticeEars_) {
            ear.during = [this, &ear] { heard(ear); };
        }
    }

    void run(int steps) {
        for (int step = 0; step < steps && !testing::Test::HasFailure(); ++step) {
            SCOPED_TRACE(step);
            act();
        }
        depth_ = MAXIMUM_DEPTH;  // quiet now
        agent_->cancelsLate = false;
        service_ = nullptr;
        EXPECT_EQ(agent_->getRefCount(), 1);
        for (auto const & operation : std::vector<FakeKestrin::OperationPtr>(agent_->open)) {
            EXPECT_TRUE(operation->isCanceled());
            agent_->cancelNow(operation);  // late
        }
        EXPECT_TRUE(agent_->getKestrinListeners().empty());
        EXPECT_EQ(agent_->removeAllMessageHandlers(), 0);
        for (Key const & key : KEYS) {
            EXPECT_FALSE(agent_->hasSubscription("chart", key.subject().c_str()));
        }
        for (Request const & request : requests_) {
            EXPECT_EQ(request.outcomes, 1);
        }
    }

private:
    static constexpr int MAXIMUM_DEPTH = 4;

    struct Request {
        ChartEar const * ear;
        int outcomes = 0;
    };

    void heard(ChartEar & ear) {
        if (auto const operation = std::exchange(ear.operation, nullptr)) {
            auto & request = *static_cast<Request *>(ear.userObject);
            EXPECT_EQ(request.ear, &ear);
            EXPECT_EQ(++request.outcomes, 1);
            EXPECT_FALSE(ear.wasPending);
            EXPECT_FALSE(isAsking_);
        } else {
            EXPECT_TRUE(ear.service->hasChartListener(&ear));
        }
        actInside();
    }
    void heard(ChartNoticeEar & ear) {
        EXPECT_TRUE(ear.service->isRunning());
        int entries = 0;
        for (char const * const text : TEXTS) {
            entries += noticeEntries_[{text, &ear}];
        }
        EXPECT_GT(entries, 0);
        actInside();
    }
    void actInside() {
        if (depth_ < MAXIMUM_DEPTH && dice_.below(2) == 0) {
            ++depth_;
            act();
            --depth_;
        }
    }

    void act() {
        RefCountedPtr<RemoteChartService> const service = service_;
        Key const key = KEYS[dice_.below(static_cast<int>(std::size(KEYS)))];
        CString const symbol = key.symbol.c_str();
        CString const period = key.period.c_str();
        ChartEar & ear = ears_.at(static_cast<std::size_t>(dice_.below(EARS)));
        ChartNoticeEar & noticeEar = noticeEars_.at(static_cast<std::size_t>(dice_.below(EARS)));
        std::string const text = TEXTS[dice_.below(3)];
        switch (dice_.below(26)) {
            case 0:
                return service->stop();
            case 1:
            case 2:
                service->start(nullptr);
                return;
            case 3:
            case 4:
            case 5:
            case 6:
                requests_.push_back({&ear, 0});
                isAsking_ = true;
                if (service
                        ->requestHistory(symbol, key.priceKind(), period, 1, &ear,
                                         &requests_.back())
                        .isNull()) {
                    requests_.pop_back();
                }
                isAsking_ = false;
                return;
            case 7:
                return service->cancelAllRequests();
            case 8:
                return service->cancelRequestsByListener(&ear);
            case 9:
            case 10:
                service->subscribe(symbol, key.priceKind(), period);
                return;
            case 11:
                service->unsubscribe(symbol, key.priceKind(), period);
                return;
            case 12:
                return service->addChartListener(&ear);
            case 13:
                return service->removeChartListener(&ear);
            case 14:
                service->addNoticeMessageListener(text.c_str(), &noticeEar);
                ++noticeEntries_[{text, &noticeEar}];
                return;
            case 15:
                noticeEntries_[{text, &noticeEar}] -=
                    service->removeNoticeMessageListener(text.c_str(), &noticeEar);
                return;
            case 16:
                return service->clearHistory(symbol, key.priceKind(), period);
            case 17:
                return agent_->fireOnRealTimeServiceStarted(true);
            case 18:
            case 19:
                return agent_->notify("chart", key.subject().c_str(),
                                      updateNotice(1, key.symbol, key.kind, key.period));
            case 20:
                agent_->cancelsLate = dice_.below(3) == 0;
                return;
            case 21:
                return dice_.below(10) == 0 ? replaceService() : agent_->fireConnected();
            default:
                return answer();
        }
    }

    void answer() {
        if (agent_->open.empty()) {
            return;
        }
        auto const operation = agent_->open[static_cast<std::size_t>(
            dice_.below(static_cast<int>(agent_->open.size())))];
        if (operation->isCanceled()) {
            return agent_->cancelNow(operation);  // late
        }
        RefCountedPtr<KestrinMessage> const request = operation->getRequest();
        bool const isStart = request->header().getMessageTypeId() == "chartPeriods";
        switch (dice_.below(isStart ? 8 : 4)) {
            case 0:
                return agent_->timeOut(operation);
            case 1:
                return agent_->fail(operation, test::backEndError());
            case 2:
                return agent_->cancelNow(operation);
            default:
                return agent_->reply(
                    operation, isStart ? PERIODS
                                       : barsAnswer({1, 2}, test::bytesOf(text(*request, "symbol")),
                                                    request->getFieldValue("priceKind")->intValue(),
                                                    test::bytesOf(text(*request, "periodType"))));
        }
    }
    static CString text(KestrinMessage const & message, char const * field) {
        return message.getFieldValue(field)->asString();
    }

    /// Drops the last reference, unless somebody up the stack holds one.
    void replaceService() {
        noticeEntries_.clear();
        service_->removeAllChartListeners();
        service_->removeAllNoticeMessageListeners();
        service_ = new RemoteChartService(agent_);
    }

    Dice dice_;
    Log log_;
    int depth_ = 0;
    bool isAsking_ = false;
    RefCountedPtr<FakeKestrin> agent_{new FakeKestrin(log_)};
    std::array<ChartEar, EARS> ears_{ChartEar(log_, "0"), ChartEar(log_, "1"), ChartEar(log_, "2")};
    std::array<ChartNoticeEar, EARS> noticeEars_{
        ChartNoticeEar(log_, "n0"), ChartNoticeEar(log_, "n1"), ChartNoticeEar(log_, "n2")};
    std::map<std::pair<std::string, ChartNoticeEar const *>, int> noticeEntries_;
    std::list<Request> requests_;
    RefCountedPtr<RemoteChartService> service_{new RemoteChartService(agent_)};
};

TEST(RandomChart, KeepsItsPromisesWhateverIsCalledFromInside) {
    for (unsigned int seed = 1; seed <= 20 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Storm(seed).run(1000);
    }
}

}  // namespace
}  // namespace tvk
