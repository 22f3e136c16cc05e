#pragma once

#include "tvk/platform/Export.h"

namespace tvk {

/// Runs tasks on threads of its own. A module implements it, the application registers it with
/// KestrinContainer::setThreadPool, and other modules find it there. The library itself calls none of
/// its operations and starts no thread.
///
/// Entries:   each execute and executeAfter that gives true is one entry, and one call of run. An
///            entry waits until its time has come and a thread is free; those whose time has come start
///            in the order of their times.
/// Ownership: tasks are not owned. A task must live until run has been entered for each of its entries,
///            or they were cancelled; the pool does not touch it behind that, so a task may end inside
///            run. The container does not own the pool: take it out there before it ends.
/// Threads:   every operation may be called from every thread at any time, also from inside run, but
///            for shutdown and the end of the pool, which belong to the owner alone. Tasks run beside
///            each other and beside the application: counts of references are not atomic, so what
///            several of them share they guard.
class TVK_API ThreadPool {
public:
    /// Something to run.
    class TVK_API Task {
    public:
        virtual ~Task();

        /// Called once for each entry, on a thread of the pool. Throws nothing.
        virtual void run() = 0;
    };

    /// Ends as if by shutdown.
    virtual ~ThreadPool();

    /// Enters the task, not null, to run as soon as it can. False behind shutdown.
    virtual bool execute(Task * task) = 0;
    /// The same with a time that lies that many milliseconds ahead; below 1 it is execute.
    virtual bool executeAfter(Task * task, int milliSeconds) = 0;
    /// Takes out all entries of the task that wait. True where there was one. Does not wait for a run
    /// that is under way, and does not look at the task.
    virtual bool cancel(Task const * task) = 0;
    virtual unsigned int getThreadCount() const = 0;   ///< how many tasks can run at once
    virtual unsigned int getPendingCount() const = 0;  ///< entries that wait, those ahead included
    /// Takes out all entries that wait, and returns when the last run has returned. Nothing on a second
    /// call. Not from inside run.
    virtual void shutdown() = 0;
};

}  // namespace tvk
