#pragma once

#include "tests/support/CallRecorder.h"
#include "tvk/agent/ThreadPool.h"

namespace tvk::test {

/// A pool that writes each call into a log, which must outlive it, and runs nothing.
class RecordingThreadPool : public ThreadPool, private CallRecorder {
public:
    explicit RecordingThreadPool(Log & log) : CallRecorder(log) {}
    ~RecordingThreadPool() override { record("~ThreadPool"); }

    // The answers.
    bool yes = true;
    unsigned int threadCount = 0;
    unsigned int pendingCount = 0;

    bool execute(Task * task) override {
        record("execute", task);
        return yes;
    }
    bool executeAfter(Task * task, int milliSeconds) override {
        record("executeAfter", task, milliSeconds);
        return yes;
    }
    bool cancel(Task const * task) override {
        record("cancel", task);
        return yes;
    }
    unsigned int getThreadCount() const override {
        record("getThreadCount");
        return threadCount;
    }
    unsigned int getPendingCount() const override {
        record("getPendingCount");
        return pendingCount;
    }
    void shutdown() override { record("shutdown"); }
};

}  // namespace tvk::test
