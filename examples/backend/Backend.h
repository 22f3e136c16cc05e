#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "examples/backend/Faults.h"

namespace backend {

/// A small back end on a loopback port, for examples, tests and benchmarks: sessions, quotes, orders, charts
/// and news, and faults on request. README.md tells what it understands.
///
///     backend::Backend backEnd({.quoteMilliSec = 50});
///     std::string problem;
///     if (!backEnd.start(&problem)) { .. }
///     connectTo("127.0.0.1", backEnd.port());
///
/// Threads: it has one of its own, on which everything happens. The operations below may be called from
///          any other thread, and share no values with it.
class Backend {
public:
    struct Options {
        unsigned short port = 0;  ///< 0 for any that is free
        std::string address = "127.0.0.1";
        std::string certFile;  ///< PEM, with those in between; empty for a plain connection
        std::string keyFile;   ///< PEM
        unsigned int seed = 1;
        int quoteMilliSec = 200;  ///< between the moves of the market; 0 for a market that stands
        int headlineMilliSec = 5'000;    ///< between headlines; 0 for none
        std::size_t ringSize = 100'000;  ///< notices that a session keeps
        int graceMilliSec = 30'000;      ///< that a session waits for its client to come back
        int heartbeatMilliSec = 15'000;
        int helloMilliSec = 10'000;  ///< for the handshake and the greeting
        unsigned int maximumFrameSize = 16U << 20U;
        std::size_t maximumQueuedBytes = 64U << 20U;  ///< for one client that is slow to read
        std::size_t maximumConnections = 1'000;
        std::size_t maximumSessions = 1'000;
        /// Hears in UTF-8, on the thread of the back end, of connections, sessions and requests.
        std::function<void(std::string const & line)> log;
    };

    struct Counts {
        std::size_t connections = 0;  ///< open now
        std::size_t sessions = 0;     ///< there now, without a connection as well
        unsigned long long accepted = 0;
        unsigned long long requests = 0;  ///< that were read, logins and the like included
        unsigned long long replies = 0;   ///< that were given, failures included
        unsigned long long notices = 0;   ///< that sessions got
        unsigned long long resumed = 0;   ///< logins that went on with their session
        unsigned long long dropped = 0;   ///< clients that were too slow to read
    };

    explicit Backend(Options options);
    Backend(Backend const &) = delete;
    Backend & operator=(Backend const &) = delete;
    /// Stops.
    ~Backend();

    /// Listens. False, with a reason, where the port or the certificate cannot be had. Once.
    bool start(std::string * problem);
    /// Cuts all connections, and ends the thread. Nothing where it does not run. Not while another
    /// operation is under way.
    void stop();

    /// The one that it listens at, in the order of the machine; 0 before start().
    unsigned short port() const;

    /// As if each client that is connected had asked for the fault. Where there is none, the next one will
    /// have, before it is greeted. Returns when it has happened, or has begun to.
    void inject(Fault const & fault);

    Counts counts() const;

private:
    struct Impl;

    std::unique_ptr<Impl> impl_;
};

}  // namespace backend
