#pragma once

#include "tvk/platform/Export.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk {

class ChartService;
class Kestrin;
class KestrinErrorManager;
class ThreadPool;
class XmlNewsService;

/// Where the separately built modules of a process find each other: the agent, the error manager, the
/// thread pool, the news service and the chart service. There is one, from the library's load until
/// cleanup().
///
/// Order:     the application fills it at its start, in any order, and calls cleanup() at its end.
///            The members are not linked to each other: the agent's own error manager is set apart.
/// Ownership: one count on each of the four counted members, none on the thread pool. A getter adds
///            no count; who keeps what it gives takes one.
/// Replacing: the new member is counted, the old one released, then the new one stored. So the old
///            one may end inside the setter, and its destructor still finds itself here.
/// Threads:   no lock. Fill it on one thread before others read it.
/// Failure:   nothing is reported; a member that was never set is null.
class TVK_API KestrinContainer {
public:
    KestrinContainer(KestrinContainer const &) = delete;
    KestrinContainer & operator=(KestrinContainer const &) = delete;

    /// Null behind cleanup(), and where there was no memory for it at load.
    static KestrinContainer * instance();
    /// Ends the container and releases agent, error manager, news service and chart service, in this
    /// order; a member that ends in it still finds the container and those behind it. Nothing on a
    /// second call. Not to be called by a member that ends in it, nor by the library: a container that
    /// is not cleaned up stays until the process ends.
    static void cleanup();

    Kestrin * getKestrin() const { return kestrin_.get(); }
    void setKestrin(Kestrin * kestrin);
    KestrinErrorManager * getErrorManager() const { return errorManager_.get(); }
    void setErrorManager(KestrinErrorManager * errorManager);
    ThreadPool * getThreadPool() const { return threadPool_; }
    /// Not owned: set null before the pool ends.
    void setThreadPool(ThreadPool * threadPool);
    XmlNewsService * getXmlNewsService() const { return xmlNewsService_.get(); }
    void setXmlNewsService(XmlNewsService * xmlNewsService);
    ChartService * getChartService() const { return chartService_.get(); }
    void setChartService(ChartService * chartService);

private:
    struct AtLoad;  // makes the instance; stands among the constants, whose load order it shares

    KestrinContainer();
    ~KestrinContainer();

    static AtLoad const AT_LOAD;
    static KestrinContainer * _instance;

    RefCountedPtr<Kestrin> kestrin_;
    RefCountedPtr<KestrinErrorManager> errorManager_;
    ThreadPool * threadPool_ = nullptr;
    RefCountedPtr<XmlNewsService> xmlNewsService_;
    RefCountedPtr<ChartService> chartService_;
};

}  // namespace tvk
