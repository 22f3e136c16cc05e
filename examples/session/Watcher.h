#pragma once

#include <functional>
#include <utility>

#include "tvk/agent/Kestrin.h"
#include "tvk/agent/KestrinNoticeMessageHandler.h"
#include "tvk/platform/CString.h"
#include "tvk/values/KestrinMessage.h"

namespace session {

/// A part of the application that watches notices while it lives: registered and subscribed from its
/// construction on, taken out at its end.
class Watcher : public tvk::KestrinNoticeMessageHandler {
public:
    using Take = std::function<void(tvk::KestrinMessage const & notice)>;

    Watcher(tvk::Kestrin & agent, CString const & type, CString const & subject, Take take)
        : agent_(agent), type_(type), subject_(subject), take_(std::move(take)) {
        agent_.addMessageHandler(type_, subject_, this);
        agent_.subscribe(type_, subject_);
    }
    Watcher(Watcher const &) = delete;
    Watcher & operator=(Watcher const &) = delete;
    ~Watcher() override {
        agent_.unsubscribe(type_, subject_);
        agent_.removeMessageHandler(type_, subject_, this);
    }

    void onNotice(tvk::Kestrin * /*agent*/,
                  tvk::RefCountedPtr<tvk::KestrinMessage> const & notice) override {
        take_(*notice);
    }

private:
    tvk::Kestrin & agent_;
    CString const type_;
    CString const subject_;
    Take const take_;
};

}  // namespace session
