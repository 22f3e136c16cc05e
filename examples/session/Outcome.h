#pragma once

#include <cstddef>
#include <optional>

#include "tvk/agent/AsyncReplyHandler.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/values/KestrinMessage.h"

namespace session {

/// Keeps the outcome of one request. Must live until there is one.
class Outcome : public tvk::AsyncReplyHandler {
public:
    enum class Kind { NONE, REPLY, TIMEOUT, CANCELED, FAILURE };

    Kind kind() const { return kind_; }
    bool hasCome() const { return kind_ != Kind::NONE; }
    std::size_t count() const { return count_; }  ///< of calls; there must not be a second one
    tvk::RefCountedPtr<tvk::KestrinMessage> const & reply() const { return reply_; }
    tvk::ErrorInfo const & error() const { return error_; }

    void onReply(tvk::RefCountedPtr<tvk::KestrinMessage> const & /*request*/,
                 tvk::RefCountedPtr<tvk::KestrinMessage> const & reply,
                 void * /*userObject*/) override {
        reply_ = reply;
        come(Kind::REPLY);
    }
    void onTimeout(tvk::RefCountedPtr<tvk::KestrinMessage> const & /*request*/,
                   void * /*userObject*/) override {
        come(Kind::TIMEOUT);
    }
    void onCanceled(tvk::RefCountedPtr<tvk::KestrinMessage> const & /*request*/,
                    void * /*userObject*/) override {
        come(Kind::CANCELED);
    }
    void onError(tvk::RefCountedPtr<tvk::KestrinMessage> const & /*request*/,
                 tvk::ErrorInfo const & error, void * /*userObject*/) override {
        error_ = error;
        come(Kind::FAILURE);
    }

private:
    void come(Kind kind) {
        kind_ = kind;
        ++count_;
    }

    Kind kind_ = Kind::NONE;
    std::size_t count_ = 0;
    tvk::RefCountedPtr<tvk::KestrinMessage> reply_;
    tvk::ErrorInfo error_;
};

}  // namespace session
