#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "bench/Work.h"

namespace tvk::bench {

using Clock = std::chrono::steady_clock;

/// The other end of a road: serves one client on a loopback port, on a thread of its own, by blocking
/// calls of the system alone. Requests are answered at once, "echo" with its own body and all others
/// with what a session needs; notices come when they are asked for.
class RoadServer {
public:
    /// Listens. The notices are about these topics in turn.
    explicit RoadServer(std::vector<Topic> const & topics);
    RoadServer(RoadServer const &) = delete;
    RoadServer & operator=(RoadServer const &) = delete;
    ~RoadServer();

    unsigned short port() const { return port_; }

    /// Sends so many more notices: all as fast as the client takes them, or one each interval. Returns
    /// at once. The client has started the real-time service before.
    void sendNotices(std::uint64_t count, Clock::duration interval = {});
    /// When the notice of this number, from 1 on, was handed to the system.
    Clock::time_point sentAt(std::uint64_t number) const;

    /// The last price that the notice of this number tells.
    static double priceOf(std::uint64_t number) {
        return 1000.0 + static_cast<double>(number % 1000);
    }

private:
    struct Order {
        std::uint64_t count;
        Clock::duration interval;
    };

    void serve();
    void answer(std::string_view frame);
    void carryOut(Order const & order);
    std::string noticeOf(std::uint64_t number) const;
    void sendAll(std::string_view bytes) const;

    std::vector<Topic> topics_;
    int listening_ = -1;
    int connection_ = -1;
    int wake_[2] = {-1, -1};
    unsigned short port_ = 0;
    std::uint64_t lastNumber_ = 0;
    std::string answers_;  // to the requests that came together, which go together

    std::mutex mutex_;
    std::vector<Order> orders_;
    std::unique_ptr<std::atomic<Clock::rep>[]> sentAt_;
    std::thread thread_;
};

/// The bytes of a frame, as docs/frames.md tells.
std::string frameOf(int kind, std::uint64_t number, std::string_view type, std::string_view subject,
                    std::string_view body);

}  // namespace tvk::bench
