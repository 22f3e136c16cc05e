#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "modules/asio/EventLoop.h"
#include "modules/asio/Frame.h"
#include "tvk/values/KestrinMessage.h"

/// The bytes of a frame, put together without the module's writer.
std::string frameBytes(int kind, int flags, unsigned long long number, std::string_view type,
                       std::string_view subject, std::string_view body);

/// A back end on the loop of the test, whose every word the test may change. Left alone it welcomes, lets
/// everybody log in, agrees to all of the real-time service, and gives back what "echo" brings; it stays
/// silent to other requests. It keeps one session, and resumes it for whoever knows its name.
class FrameServer {
public:
    struct Incoming {
        int kind = 0;
        unsigned long long number = 0;
        std::string type;
        tvk::RefCountedPtr<tvk::KestrinMessage> message;

        std::string field(char const * name) const;
    };
    /// Whether that was all of the answer.
    using Answer = std::function<bool(Incoming const & incoming)>;

    FrameServer();
    ~FrameServer();

    FrameServer(FrameServer const &) = delete;
    FrameServer & operator=(FrameServer const &) = delete;

    std::shared_ptr<tvk::EventLoop> const & loop() const;
    unsigned short port() const;
    /// Drives the context as an application does that owns it; the number of functions that ran.
    std::size_t runContext();

    Answer answer;  ///< asked before the server does what it does by itself
    int heartbeatMilliSec = 10'000;
    std::string startup = R"({"market":"open"})";
    bool remembersSession = true;

    // Words to the connection that is open; nothing where there is none.
    void raw(std::string_view bytes);
    void frame(int kind, int flags, unsigned long long number, std::string_view type,
               std::string_view subject, std::string_view body) {
        raw(frameBytes(kind, flags, number, type, subject, body));
    }
    void reply(Incoming const & request, std::string_view body);
    void fail(Incoming const & request, std::string_view body);
    void notice(std::string_view type, std::string_view subject, std::string_view body);
    void goodbye(std::string_view body);
    /// Behind all words so far.
    void disconnect();
    void readNoMore();  ///< until the next connection
    void accept(bool accepts);

    bool isConnected() const;
    int connections() const;  ///< so far
    std::vector<Incoming> const & received() const;
    std::size_t count(std::string_view type) const;  ///< received of this type
    std::size_t countOfKind(int kind) const;
    unsigned long long sequence() const;  ///< of the last notice
    void setSequence(unsigned long long sequence);
    std::size_t unsentBytes() const;
    void clear();  ///< forgets what was received

private:
    class Impl;

    std::unique_ptr<Impl> impl_;
};
