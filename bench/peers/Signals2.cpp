#include <boost/signals2.hpp>
#include <boost/version.hpp>
#include <unordered_map>

#include "bench/peers/Peers.h"
#include "tvk/agent/Kestrin.h"

namespace tvk::bench {

namespace {

namespace signals2 = boost::signals2;

/// As the library has it: a signal may be used on many threads.
template <class Signature>
using LockedSignal = signals2::signal<Signature>;

/// For one thread at a time, which is all that tvk's agent promises.
template <class Signature>
using UnlockedSignal =
    typename signals2::signal_type<Signature,
                                   signals2::keywords::mutex_type<signals2::dummy_mutex>>::type;

template <template <class Signature> class Signal>
class SignalRouter : public NoticeRouter {
public:
    void addHandler(Topic const & topic, std::uint32_t handler) override {
        signals_[keyOf(topic.type, topic.subject)].connect(
            [this, handler](Kestrin *, RefCountedPtr<KestrinMessage> const &) {
                sum_.add(handler);
            });
    }
    CallSum deliverAll(std::span<Topic const> topics) override {
        sum_ = {};
        for (Topic const & topic : topics) {
            call(ANY, ANY);
            call(topic.type, ANY);
            call(ANY, topic.subject);
            call(topic.type, topic.subject);
        }
        return sum_;
    }

private:
    std::string const & keyOf(std::string const & type, std::string const & subject) {
        return key_.assign(type).append(1, '-').append(subject);
    }
    void call(std::string const & type, std::string const & subject) {
        auto const place = signals_.find(keyOf(type, subject));
        if (place != signals_.end()) {
            place->second(nullptr, notice_);
        }
    }

    RefCountedPtr<KestrinMessage> notice_;
    CallSum sum_;
    std::string key_;  // kept, so that a look-up allocates nothing
    std::unordered_map<std::string, Signal<void(Kestrin *, RefCountedPtr<KestrinMessage> const &)>>
        signals_;
};

template <template <class Signature> class Signal>
class SignalSource : public EventSource {
public:
    void addListener(std::uint32_t listener) override {
        connected_.connect([this, listener](Kestrin *) { sum_.add(listener); });
    }
    CallSum fire(std::size_t events) override {
        sum_ = {};
        for (; events > 0; --events) {
            connected_(nullptr);
        }
        return sum_;
    }

private:
    CallSum sum_;
    Signal<void(Kestrin *)> connected_;
};

}  // namespace

void addSignals2(Peers & peers) {
    addPeer<SignalRouter<LockedSignal>>(peers.noticeRouters, "signals2");
    addPeer<SignalRouter<UnlockedSignal>>(peers.noticeRouters, "signals2_unlocked");
    addPeer<SignalSource<LockedSignal>>(peers.eventSources, "signals2");
    addPeer<SignalSource<UnlockedSignal>>(peers.eventSources, "signals2_unlocked");
    peers.libraries.push_back(std::string("Boost.Signals2 ") + BOOST_LIB_VERSION);
}

}  // namespace tvk::bench
