#pragma once

#include <memory>

#include "modules/services/Export.h"
#include "tvk/agent/Kestrin.h"
#include "tvk/agent/XmlNewsService.h"

namespace tvk {

/// A news service that asks a back end through an agent, and reads the news with Expat.
/// docs/services.md has the messages.
///
///     RefCountedPtr<XmlNewsService> const news(new RemoteNewsService(agent));
///     news->start(&error);
///     news->requestDocument(XmlNewsService::TYPE_MASTER_INDEX, "", &listener, nullptr);
///
/// Start:      wants an agent that is logged in, and subscribes to the headlines.
/// Agent:      the service outlives a lost connection and a new login; headlines that came meanwhile
///             may be lost. It stops with the agent: with its error, or as if it were asked to where
///             the agent was. Between a stop and the next start the agent knows nothing of the
///             service.
/// Mistakes:   an answer that cannot be read ends in onDocumentError, with ERR_XmlParsingError and
///             the name of the field. A headline that cannot be read is dropped and counted.
/// Passes:     a listener that is removed and added again meanwhile waits for the next pass. One that
///             stops the service ends the pass.
/// Ownership:  holds a count on the agent. The last reference may go inside a callback. With it the
///             pending requests are cancelled.
/// Threads:    those of the agent: all callbacks come from inside calls of the agent or of the
///             application.
class TVK_SERVICES_API RemoteNewsService : public XmlNewsService {
public:
    static constexpr int COMPONENT_CODE = 9;  ///< of the errors that the service itself finds
    static constexpr int DEFAULT_TIMEOUT_MILLI_SEC = 10'000;

    /// Requires: `agent` is not null. The time-out is that of each request.
    explicit RemoteNewsService(RefCountedPtr<Kestrin> const & agent,
                               int timeoutMilliSec = DEFAULT_TIMEOUT_MILLI_SEC);
    RemoteNewsService(RemoteNewsService const &) = delete;
    RemoteNewsService & operator=(RemoteNewsService const &) = delete;

    bool start(ErrorInfo * error) override;
    void stop() override;
    bool isRunning() const override;

    void addNewsListener(XmlNewsListener * listener) override;
    bool hasNewsListener(XmlNewsListener const * listener) const override;
    void removeNewsListener(XmlNewsListener const * listener) override;
    void removeAllNewsListeners() override;

    RefCountedPtr<AsyncNewsRequestOperation> requestDocument(int documentType,
                                                             CString const & documentId,
                                                             XmlNewsListener * listener,
                                                             void * userObject) override;
    void cancelAllRequests() override;
    void cancelRequestsByListener(XmlNewsListener const * listener) override;

    /// Headlines that were dropped, since the service was made.
    unsigned long long getDroppedNoticeCount() const;

protected:
    ~RemoteNewsService() override;
    void destroyObject() const override;

private:
    class Impl;

    std::unique_ptr<Impl> const impl_;
};

}  // namespace tvk
