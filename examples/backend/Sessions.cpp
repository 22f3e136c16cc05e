#include "examples/backend/Sessions.h"

#include <array>
#include <utility>

namespace backend {

namespace {

constexpr char WILDCARD[] = "*";

}  // namespace

Session::Session(std::string token, std::string loginId, std::size_t ringSize)
    : token_(std::move(token)), loginId_(std::move(loginId)), ringSize_(ringSize) {}

bool Session::subscribe(Topic const & topic, bool * isNew) {
    if (topics_.size() >= MAXIMUM_TOPICS && topics_.count(topic) == 0) {
        return false;
    }
    *isNew = topics_.insert(topic).second;
    return true;
}

void Session::unsubscribe(Topic const & topic) { topics_.erase(topic); }

bool Session::wants(std::string_view type, std::string_view subject) const {
    if (!isRealTime_ || topics_.empty()) {
        return false;
    }
    std::string const exactType(type);
    std::string const exactSubject(subject);
    return topics_.count({exactType, exactSubject}) != 0 ||
           topics_.count({exactType, WILDCARD}) != 0 ||
           topics_.count({WILDCARD, exactSubject}) != 0 || topics_.count({WILDCARD, WILDCARD}) != 0;
}

void Session::add(NoticeFrame frame) {
    std::size_t const size = frame->size();
    ring_.push_back({std::move(frame), bytes_});
    bytes_ += size;
    if (ring_.size() > ringSize_) {
        ring_.pop_front();
        ++firstKept_;
    }
}

std::pair<unsigned long long, NoticeFrame> Session::takeUnsent() {
    ++sent_;
    return {sent_, ring_[static_cast<std::size_t>(sent_ - firstKept_)].frame};
}

std::size_t Session::unsentBytes() const {
    return bytes_ - bytesUpTo(sent_ > resumedAt_ ? sent_ : resumedAt_);
}

bool Session::resumeBehind(unsigned long long sequence) {
    if (sequence + 1 < firstKept_ || sequence > lastSequence()) {
        return false;
    }
    sent_ = sequence;
    resumedAt_ = lastSequence();
    return true;
}

std::size_t Session::bytesUpTo(unsigned long long sequence) const {
    if (sequence >= lastSequence()) {
        return bytes_;
    }
    unsigned long long const next = sequence + 1 < firstKept_ ? firstKept_ : sequence + 1;
    return ring_[static_cast<std::size_t>(next - firstKept_)].bytesBefore;
}

Session * Sessions::open(std::string const & loginId) {
    if (sessions_.size() >= limits_.maximum) {
        return nullptr;
    }
    std::string const token = newToken();
    Entry & entry = sessions_[token];
    entry.session = std::make_unique<Session>(token, loginId, limits_.ringSize);
    return entry.session.get();
}

Session * Sessions::resume(std::string const & token, std::string const & loginId,
                           unsigned long long lastSequence) {
    auto const found = sessions_.find(token);
    bool const isTheirs = found != sessions_.end() && !found->second.isForgotten &&
                          found->second.session->loginId() == loginId;
    if (!isTheirs || !found->second.session->resumeBehind(lastSequence)) {
        return nullptr;
    }
    found->second.isHeld = true;
    return found->second.session.get();
}

void Sessions::letGo(Session & session, long long now) {
    auto const found = sessions_.find(session.token());
    if (found->second.isForgotten) {
        sessions_.erase(found);
        return;
    }
    found->second.isHeld = false;
    found->second.letGoAt = now;
}

void Sessions::forget(Session & session) {
    sessions_.find(session.token())->second.isForgotten = true;
}

void Sessions::close(Session & session) { sessions_.erase(sessions_.find(session.token())); }

void Sessions::closeOverdue(long long now) {
    std::erase_if(sessions_, [this, now](auto const & known) {
        Entry const & entry = known.second;
        return !entry.isHeld && now - entry.letGoAt >= limits_.graceMilliSec;
    });
}

std::size_t Sessions::publish(std::string_view type, std::string_view subject,
                              std::string_view owner, std::function<NoticeFrame()> const & frame) {
    NoticeFrame made;
    std::size_t taken = 0;
    for (auto & [token, entry] : sessions_) {
        Session & session = *entry.session;
        if ((owner.empty() || owner == session.loginId()) && session.wants(type, subject)) {
            if (made == nullptr) {
                made = frame();
            }
            session.add(made);
            ++taken;
        }
    }
    return taken;
}

bool Sessions::anyWants(std::string_view type, std::string_view subject) const {
    bool isWanted = false;
    forEach(type, subject, [&isWanted](Session const & /*session*/) { isWanted = true; });
    return isWanted;
}

void Sessions::forEach(std::string_view type, std::string_view subject,
                       std::function<void(Session const &)> const & visit) const {
    for (auto const & [token, entry] : sessions_) {
        if (entry.session->wants(type, subject)) {
            visit(*entry.session);
        }
    }
}

/// 128 bits that nobody can guess.
std::string Sessions::newToken() {
    constexpr std::string_view DIGITS = "0123456789abcdef";
    constexpr std::size_t LENGTH = 32;
    std::string token(LENGTH, '0');
    for (char & digit : token) {
        digit = DIGITS[random_() % DIGITS.size()];
    }
    return token;
}

}  // namespace backend
