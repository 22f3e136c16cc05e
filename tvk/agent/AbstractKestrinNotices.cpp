// The two tables of notices: who wants which, and what is subscribed.

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <new>
#include <string_view>

#include "tvk/agent/AbstractKestrin.h"
#include "tvk/agent/KestrinNoticeMessageHandler.h"
#include "tvk/errors/KestrinConstants.h"

namespace tvk {

namespace {

// Room that the two queries begin with: more handlers for one subject are rare.
constexpr std::size_t USUAL_HANDLERS = 8;
constexpr std::size_t USUAL_POSSIBLE_HANDLERS = 16;

constexpr std::size_t LONGEST_TEXT = std::numeric_limits<int>::max();

}  // namespace

std::size_t AbstractKestrin::CodeHash::operator()(CString const & code) const {
    return std::hash<std::string_view>()(
        {code.GetString(), static_cast<std::size_t>(code.GetLength())});
}

// Deliberate: nothing is escaped, so the pairs (a-b, c) and (a, b-c) are one. An agent whose types
// or subjects hold a hyphen overrides this, for both tables at once.
CString AbstractKestrin::createSubjectCode(CString const & type, CString const & subject) const {
    auto const typeLength = static_cast<std::size_t>(type.GetLength());
    auto const subjectLength = static_cast<std::size_t>(subject.GetLength());
    std::size_t const length = typeLength + 1 + subjectLength;
    if (length > LONGEST_TEXT) {
        throw std::bad_alloc();
    }
    // Filled in place: each notice asks for four codes, and three appends take nearly twice as long.
    CString code;
    char * const bytes = code.GetBuffer(static_cast<int>(length));
    std::memcpy(bytes, type.GetString(), typeLength);
    bytes[typeLength] = '-';
    std::memcpy(bytes + typeLength + 1, subject.GetString(), subjectLength);
    code.ReleaseBuffer(static_cast<int>(length));
    return code;
}

void AbstractKestrin::addMessageHandler(CString const & type, CString const & subject,
                                        KestrinNoticeMessageHandler * handler) {
    CString const code = createSubjectCode(type, subject);
    auto const entry = messageHandlers_.find(code);
    if (entry != messageHandlers_.end()) {
        entry->second.push_back(handler);
    } else {
        messageHandlers_.emplace(code, std::list{handler});
    }
}

int AbstractKestrin::removeMessageHandler(CString const & type, CString const & subject,
                                          KestrinNoticeMessageHandler const * handler) {
    auto const entry = messageHandlers_.find(createSubjectCode(type, subject));
    if (entry == messageHandlers_.end()) {
        return 0;
    }
    auto & handlers = entry->second;
    auto const place = std::find(handlers.begin(), handlers.end(), handler);
    if (place == handlers.end()) {
        return 0;
    }
    handlers.erase(place);
    return 1;
}

bool AbstractKestrin::hasMessageHandler(CString const & type, CString const & subject,
                                        KestrinNoticeMessageHandler const * handler) {
    auto const entry = messageHandlers_.find(createSubjectCode(type, subject));
    return entry != messageHandlers_.end() &&
           std::find(entry->second.begin(), entry->second.end(), handler) != entry->second.end();
}

int AbstractKestrin::removeMessageHandlers(CString const & type, CString const & subject) {
    auto const entry = messageHandlers_.find(createSubjectCode(type, subject));
    if (entry == messageHandlers_.end()) {
        return 0;
    }
    auto const removed = static_cast<int>(entry->second.size());
    messageHandlers_.erase(entry);
    return removed;
}

int AbstractKestrin::removeAllMessageHandlers() {
    std::size_t removed = 0;
    for (auto const & entry : messageHandlers_) {
        removed += entry.second.size();
    }
    messageHandlers_.clear();
    return static_cast<int>(removed);
}

std::vector<KestrinNoticeMessageHandler *> AbstractKestrin::getMessageHandlers(
    CString const & type, CString const & subject) const {
    std::vector<KestrinNoticeMessageHandler *> handlers;
    handlers.reserve(USUAL_HANDLERS);
    auto const entry = messageHandlers_.find(createSubjectCode(type, subject));
    if (entry != messageHandlers_.end()) {
        handlers.assign(entry->second.begin(), entry->second.end());
    }
    return handlers;
}

std::vector<KestrinNoticeMessageHandler *> AbstractKestrin::getAllPossibleMessageHandlers(
    CString const & type, CString const & subject) const {
    std::vector<KestrinNoticeMessageHandler *> handlers;
    handlers.reserve(USUAL_POSSIBLE_HANDLERS);
    auto const putInFront = [&](CString const & eachType, CString const & eachSubject) {
        auto const entry = messageHandlers_.find(createSubjectCode(eachType, eachSubject));
        if (entry != messageHandlers_.end()) {
            handlers.insert(handlers.begin(), entry->second.begin(), entry->second.end());
        }
    };
    putInFront(type, subject);
    putInFront(KestrinConstants::WILDCARD, subject);
    putInFront(type, KestrinConstants::WILDCARD);
    putInFront(KestrinConstants::WILDCARD, KestrinConstants::WILDCARD);
    return handlers;
}

int AbstractKestrin::subscribe(CString const & type, CString const & subject) {
    CString const code = createSubjectCode(type, subject);
    auto const entry = subscriptions_.find(code);
    int count = 1;
    if (entry == subscriptions_.end()) {
        subscriptions_.emplace(code, std::make_unique<InternalSubscriptionInfo>(
                                         InternalSubscriptionInfo{type, subject, count}));
    } else {
        count = ++entry->second->count;
    }
    if (count == 1) {
        doSubscribe(type, subject);
    }
    return count;
}

int AbstractKestrin::unsubscribe(CString const & type, CString const & subject) {
    auto const entry = subscriptions_.find(createSubjectCode(type, subject));
    if (entry == subscriptions_.end() || entry->second->count == 0) {
        return 0;
    }
    // An entry at 0 stays: the next subscribe opens it again.
    int const count = --entry->second->count;
    if (count == 0) {
        doUnsubscribe(type, subject);
    }
    return count;
}

bool AbstractKestrin::hasSubscription(CString const & type, CString const & subject) const {
    auto const entry = subscriptions_.find(createSubjectCode(type, subject));
    return entry != subscriptions_.end() && entry->second->count != 0;
}

}  // namespace tvk
