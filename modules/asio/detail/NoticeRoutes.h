#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "tvk/agent/KestrinNoticeMessageHandler.h"
#include "tvk/platform/CString.h"

namespace tvk::detail {

/// Who gets the notices of one type and subject.
struct NoticeRoute {
    CString type;
    CString subject;
    std::vector<KestrinNoticeMessageHandler *> handlers;
};

/// The routes of the notices that came lately, so that a stream of them asks the agent's tables once for
/// each type and subject. To be forgotten whenever a handler is added or removed.
class NoticeRoutes {
public:
    using Route = std::shared_ptr<NoticeRoute const>;

    /// Null where it is not known. Both texts as they stand in the frame.
    Route const & find(std::string_view type, std::string_view subject) {
        static Route const NONE;
        key_.assign(type);
        key_.push_back('\0');  // no type has one
        key_.append(subject);
        auto const entry = routes_.find(key_);
        return entry != routes_.end() ? entry->second : NONE;
    }
    /// The one that find has just missed.
    Route const & add(NoticeRoute route) {
        if (routes_.size() >= MAXIMUM) {
            routes_.clear();
        }
        return routes_[key_] = std::make_shared<NoticeRoute const>(std::move(route));
    }
    void forget() { routes_.clear(); }

private:
    static constexpr std::size_t MAXIMUM = 10'000;

    std::string key_;
    std::unordered_map<std::string, Route> routes_;
};

}  // namespace tvk::detail
