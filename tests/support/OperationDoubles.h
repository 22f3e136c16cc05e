#pragma once

#include "tests/support/CallText.h"
#include "tests/support/Recorded.h"
#include "tvk/agent/AbstractAsyncRequestOperation.h"

namespace tvk::test {

/// A handle without the base class that writes each question and each mark into a log.
class LoggedOperation : public AsyncRequestOperation {
public:
    /// `log` must outlive the handle.
    explicit LoggedOperation(Log & log) : log_(&log) {}

    bool canceled = false;
    bool fired = false;

    void cancel() override { record("cancel"); }
    bool isCanceled() const override {
        record("isCanceled");
        return canceled;
    }
    bool isPending() const override {
        record("isPending");
        return true;
    }
    bool isFired() const override {
        record("isFired");
        return fired;
    }
    void setFired(bool value) override {
        record("setFired", value);
        fired = value;
    }
    RefCountedPtr<KestrinMessage> getRequest() const override {
        record("getRequest");
        return nullptr;
    }
    AsyncReplyHandler * getReplyHandler() const override {
        record("getReplyHandler");
        return nullptr;
    }
    void * getUserObject() const override {
        record("getUserObject");
        return nullptr;
    }

private:
    template <class... Arguments>
    void record(char const * name, Arguments const &... arguments) const {
        log_->push_back(callText(name, arguments...));
    }

    Log * log_;
};

/// The least that a handle of a concrete agent can be.
class PlainOperation : public AbstractAsyncRequestOperation {
public:
    using AbstractAsyncRequestOperation::AbstractAsyncRequestOperation;

    void cancel() override {
        canceled = true;
        pending = false;
    }

    using AbstractAsyncRequestOperation::canceled;
    using AbstractAsyncRequestOperation::pending;
};

}  // namespace tvk::test
