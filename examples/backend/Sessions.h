#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <utility>

namespace backend {

/// Type and subject of a notice; either may be "*" in a subscription.
using Topic = std::pair<std::string, std::string>;

/// A notice as bytes, but for its sequence number, which each session gives it. Many sessions share it.
using NoticeFrame = std::shared_ptr<std::string const>;

/// What stands of a client between its connections: subscriptions, the real-time service, and the last
/// notices, numbered from 1 on without a gap.
///
/// A notice is sent when a connection has taken it. It is kept beyond that, up to the size of the ring,
/// for a client that comes back and has not seen it.
class Session {
public:
    static constexpr std::size_t MAXIMUM_TOPICS = 10'000;

    Session(std::string token, std::string loginId, std::size_t ringSize);

    std::string const & token() const { return token_; }
    std::string const & loginId() const { return loginId_; }

    /// False where the topics would be too many. `*isNew` tells a topic that was not there yet.
    bool subscribe(Topic const & topic, bool * isNew);
    void unsubscribe(Topic const & topic);
    std::set<Topic> const & topics() const { return topics_; }
    void setRealTime(bool isOn) { isRealTime_ = isOn; }
    bool isRealTime() const { return isRealTime_; }
    /// Whether a notice is to be added: the service is on, and a subscription fits.
    bool wants(std::string_view type, std::string_view subject) const;

    void add(NoticeFrame frame);
    unsigned long long lastSequence() const { return firstKept_ + ring_.size() - 1; }
    unsigned long long sentSequence() const { return sent_; }
    bool hasUnsent() const { return sent_ < lastSequence(); }
    /// The next notice to send, which counts as sent now. Requires: hasUnsent() and not hasLost().
    std::pair<unsigned long long, NoticeFrame> takeUnsent();
    /// Whether the ring has let go of what was not sent.
    bool hasLost() const { return sent_ + 1 < firstKept_; }
    std::size_t unsentCount() const { return static_cast<std::size_t>(lastSequence() - sent_); }
    /// Bytes that wait to be sent, without those that were there already when the client came back.
    std::size_t unsentBytes() const;

    /// The client has everything up to `sequence`. False, and nothing changed, where the ring does not
    /// reach back so far, or that number was never given.
    bool resumeBehind(unsigned long long sequence);

private:
    struct Kept {
        NoticeFrame frame;
        std::size_t bytesBefore = 0;  // of all notices of the session
    };

    std::size_t bytesUpTo(unsigned long long sequence) const;

    std::string const token_;
    std::string const loginId_;
    std::size_t const ringSize_;
    std::set<Topic> topics_;
    bool isRealTime_ = false;
    std::deque<Kept> ring_;
    unsigned long long firstKept_ = 1;  // the number of the first in the ring
    unsigned long long sent_ = 0;
    unsigned long long resumedAt_ = 0;  // the last there was then
    std::size_t bytes_ = 0;             // of all notices so far
};

/// The sessions of a back end. A session is held by a connection, or waits for one for the grace time.
/// Times are milliseconds of any clock that does not go back.
class Sessions {
public:
    struct Limits {
        std::size_t ringSize = 100'000;
        long long graceMilliSec = 30'000;
        std::size_t maximum = 1'000;
    };

    explicit Sessions(Limits const & limits) : limits_(limits) {}

    /// A new session, held from now on; null where there are too many.
    Session * open(std::string const & loginId);
    /// The session of that token and user, held from now on, set to send what is behind `lastSequence`.
    /// Null where there is none, or not so much of it. One that is held still changes hands.
    Session * resume(std::string const & token, std::string const & loginId,
                     unsigned long long lastSequence);
    /// Nobody holds it any more; it ends when the grace time is over and nobody has come for it. A
    /// forgotten one ends here.
    void letGo(Session & session, long long now);
    /// It goes on as it is, but cannot be resumed.
    void forget(Session & session);
    void close(Session & session);
    void closeOverdue(long long now);

    /// Adds the notice to each session that wants it; to those of one user where there is an owner. The
    /// frame is made when the first one wants it. Returns how many took it.
    std::size_t publish(std::string_view type, std::string_view subject, std::string_view owner,
                        std::function<NoticeFrame()> const & frame);
    bool anyWants(std::string_view type, std::string_view subject) const;
    /// For each session that wants it.
    void forEach(std::string_view type, std::string_view subject,
                 std::function<void(Session const &)> const & visit) const;

    std::size_t count() const { return sessions_.size(); }

private:
    struct Entry {
        std::unique_ptr<Session> session;
        bool isHeld = true;
        bool isForgotten = false;
        long long letGoAt = 0;
    };

    std::string newToken();

    Limits const limits_;
    std::map<std::string, Entry, std::less<>> sessions_;  // by token
    std::random_device random_;
};

}  // namespace backend
