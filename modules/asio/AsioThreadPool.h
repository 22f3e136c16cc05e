#pragma once

#include <memory>

#include "modules/asio/Export.h"
#include "tvk/agent/ThreadPool.h"

namespace tvk {

/// A pool of a fixed number of threads, which it starts at once and which end with it.
///
/// Entries with a time ahead cost no thread. Two entries of the same time start in the order in which they
/// were entered. cancel looks through all that wait.
class TVK_ASIO_API AsioThreadPool : public ThreadPool {
public:
    /// With 0 there are as many threads as the machine runs at once.
    explicit AsioThreadPool(unsigned int threadCount = 0);
    ~AsioThreadPool() override;  // NOLINT(bugprone-exception-escape)

    AsioThreadPool(AsioThreadPool const &) = delete;
    AsioThreadPool & operator=(AsioThreadPool const &) = delete;

    bool execute(Task * task) override;
    bool executeAfter(Task * task, int milliSeconds) override;
    bool cancel(Task const * task) override;
    unsigned int getThreadCount() const override;
    unsigned int getPendingCount() const override;
    void shutdown() override;

private:
    class Impl;

    std::unique_ptr<Impl> impl_;
};

}  // namespace tvk
