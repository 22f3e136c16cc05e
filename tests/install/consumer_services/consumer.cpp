// A program of somebody else that brings an agent, and knows nothing of the XML parser.

#include <modules/services/RemoteChartService.h>
#include <modules/services/RemoteNewsService.h>
#include <tvk/tvk.h>

#include <cstdio>

using tvk::AsyncReplyHandler;
using tvk::AsyncRequestOperation;
using tvk::ErrorInfo;
using tvk::KestrinMessage;
using tvk::RefCountedPtr;

/// Never connected.
class Agent : public tvk::AbstractKestrin {
public:
    bool start(ErrorInfo *) override { return false; }
    void stop() override {}
    bool login(CString const &, CString const &, ErrorInfo *) override { return false; }
    bool relogin(ErrorInfo *) override { return false; }
    bool startRealTimeService(ErrorInfo *) override { return false; }
    void stopRealTimeService() override {}
    bool send(RefCountedPtr<KestrinMessage> const &, ErrorInfo *) override { return false; }
    RefCountedPtr<KestrinMessage> request(RefCountedPtr<KestrinMessage> const &, int,
                                          ErrorInfo *) override {
        return nullptr;
    }
    RefCountedPtr<AsyncRequestOperation> asyncRequest(RefCountedPtr<KestrinMessage> const &, int,
                                                      AsyncReplyHandler *, void *) override {
        return nullptr;
    }
    long long getServerTimeMilliSec() const override { return 0; }

protected:
    void doLogout() override {}
    void doSubscribe(CString const &, CString const &) override {}
    void doUnsubscribe(CString const &, CString const &) override {}
    void doHeartbeat() override {}
    void doCancelAllAsyncRequests(void *) override {}
    void doCancelAsyncRequestsByHandler(AsyncReplyHandler const *, CString const &) override {}
    void doCancelAsyncRequestsByHandler(AsyncReplyHandler const *) override {}
};

int main() {
    RefCountedPtr<tvk::Kestrin> const agent(new Agent);
    RefCountedPtr<tvk::ChartService> const charts(new tvk::RemoteChartService(agent));
    RefCountedPtr<tvk::XmlNewsService> const news(new tvk::RemoteNewsService(agent));
    ErrorInfo error;
    bool const isStarted = charts->start(&error) || news->start(nullptr);
    std::puts(error.getErrorMessage());
    return !isStarted && error.getErrorMessage() == "not logged in" ? 0 : 1;
}
