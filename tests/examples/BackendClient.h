#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <memory>
#include <string>
#include <string_view>

#include "modules/asio/FrameMessages.h"
#include "modules/asio/FrameReader.h"
#include "tvk/json/SimpleObjectCache.h"

namespace tvk::test {

/// A client without an agent: frames go out as the test writes them, and come in one by one. Whatever
/// takes longer than LIMIT_MILLISEC counts as not coming.
class BackendClient {
public:
    static constexpr int LIMIT_MILLISEC = 20'000;

    /// What came. `body` is JSON.
    struct Came {
        int kind = 0;  ///< 0 where nothing came, since the connection has ended or the time was up
        int flags = 0;
        unsigned long long number = 0;
        std::string type;
        std::string subject;
        std::string body;
        RefCountedPtr<KestrinMessage> message;  ///< null where the JSON is bad
    };

    /// Trusts the certificate in that file; plain where there is none.
    explicit BackendClient(unsigned short port, std::string const & trusted = "");
    BackendClient(BackendClient const &) = delete;
    BackendClient & operator=(BackendClient const &) = delete;
    ~BackendClient();

    /// A frame with that JSON as its body.
    static std::string frameOf(int kind, unsigned long long number, std::string_view type,
                               std::string_view json);
    void send(int kind, unsigned long long number, std::string_view type, std::string_view json);
    void sendBytes(std::string_view bytes);
    /// HELLO and the WELCOME to it.
    bool greet();
    bool greet(int heartbeatMilliSec);
    /// The reply to a request; what comes before it is put aside for next().
    Came ask(std::string_view type, std::string_view json);
    /// A login with the right password, and the real-time service.
    Came login(std::string const & loginId, std::string const & token = "",
               unsigned long long lastSequence = 0);

    /// The next frame, put aside or new. Heartbeats are answered and left out.
    Came next(int milliSec = LIMIT_MILLISEC);
    /// The next one of that kind; others are lost.
    Came nextOf(int kind);
    /// Reads to the end of the connection. False where there is none in time.
    bool ends();
    /// All bytes up to the end of the connection, as they come.
    std::string rest();
    void answerHeartbeats(bool on) { answers_ = on; }
    void close();

private:
    using Clock = std::chrono::steady_clock;
    struct Stream;

    Came read(int milliSec);
    std::size_t readSome(char * room, std::size_t size, Clock::time_point end);

    std::unique_ptr<Stream> stream_;
    SimpleObjectCache cache_{SimpleObjectCache::defaultRawDataConverter()};
    FrameMessages messages_{&cache_};
    FrameReader reader_{64U << 20U};
    std::deque<Came> aside_;
    unsigned long long lastNumber_ = 0;
    bool hasEnded_ = false;
    bool answers_ = true;
};

}  // namespace tvk::test
