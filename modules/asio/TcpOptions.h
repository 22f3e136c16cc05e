#pragma once

#include "modules/asio/Export.h"
#include "tvk/inet/InetClientInfo.h"
#include "tvk/platform/CString.h"

namespace tvk {

class ErrorInfo;

/// How an agent reaches its back end, and what bounds it. A plain value; times are milliseconds, sizes
/// bytes.
struct TVK_ASIO_API TcpOptions {
    TcpOptions();
    TcpOptions(TcpOptions const &);
    TcpOptions & operator=(TcpOptions const &);
    ~TcpOptions();

    /// False, and `*error` when not null, where a value makes no sense.
    bool check(ErrorInfo * error) const;

    CString host;             ///< name or address; the certificate must be its
    unsigned short port = 0;  ///< in the order of the machine
    bool plain = false;       ///< without TLS: names, passwords and orders are then open to read
    /// The proxy, "host:port", is asked for a tunnel (HTTP CONNECT), by the user and password when there
    /// are any. The certificate file holds the trusted authorities as PEM; without one they are the
    /// system's. The user agent names the client to proxy and back end.
    InetClientInfo inet;

    int connectMilliSec = 10'000;  ///< for one attempt: name, connection, proxy and TLS together
    int requestMilliSec = 10'000;  ///< the agent's own time-out, see AbstractKestrin::getTimeout
    int heartbeatMilliSec = 15'000;

    // Where a connection is lost. The wait before an attempt begins with the first value, grows by the
    // factor up to the maximum, and is shortened by a random part of it, at most `jitter`.
    bool reconnect = true;
    int backOffFirstMilliSec = 250;
    int backOffMaximumMilliSec = 30'000;
    double backOffFactor = 2.0;
    double jitter = 0.5;          ///< 0 to 1
    int maximumAttempts = 0;      ///< in a row without success; 0 for no limit
    unsigned int jitterSeed = 0;  ///< other than 0: the same random parts each time

    unsigned int maximumFrameSize = 16U << 20U;
    unsigned int maximumQueuedBytes = 64U << 20U;  ///< that wait to be sent
    unsigned int maximumReadAhead = 4U << 20U;     ///< that wait to be delivered
    unsigned int maximumOpenRequests = 100'000;
};

}  // namespace tvk
