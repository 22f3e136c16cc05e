#include <algorithm>
#include <optional>

#include "bench/RoadServer.h"
#include "bench/Rows.h"

namespace tvk::bench {

namespace {

constexpr std::size_t KEYS = 1000;
constexpr std::uint64_t HANDLERS_EACH = 2;  // the one of its key, and the one of all subjects
constexpr std::uint64_t FLOOD = 20'000;
constexpr std::uint64_t PACED = 20'000;
constexpr Clock::duration PACE = std::chrono::microseconds(100);
constexpr std::uint64_t REQUESTS = 20'000;
constexpr int ROUNDS = 5;

std::vector<Topic> topics() {
    std::vector<Topic> all;
    for (std::size_t i = 0; i < KEYS; ++i) {
        std::string const code = std::to_string(1301 + i);
        all.push_back({"quote", code, "quote", code.c_str()});
    }
    return all;
}

std::vector<Topic> keys() {
    std::vector<Topic> all = topics();
    all.push_back({"quote", ANY, "quote", ANY.c_str()});
    return all;
}

/// Checks that each notice comes once, in order, with its price, and remembers when it came first.
class Watch : public NoticeSink {
public:
    void told(std::uint64_t number, double price) override {
        requireAgreement(number == calls_ / HANDLERS_EACH + 1 &&
                         price == RoadServer::priceOf(number));
        if (calls_ % HANDLERS_EACH == 0 && keepsTimes_) {
            times_.push_back(Clock::now());
        }
        ++calls_;
    }

    void keepTimes() { keepsTimes_ = true; }
    std::vector<Clock::time_point> const & times() const { return times_; }
    std::uint64_t count() const { return calls_ / HANDLERS_EACH; }

private:
    std::uint64_t calls_ = 0;
    bool keepsTimes_ = false;
    std::vector<Clock::time_point> times_;
};

/// A server, and a client at its port.
struct Connected {
    explicit Connected(Peer<Road> const & peer) : road(peer.make()) {
        road->connect(server.port(), keys(), watch);
    }

    void flood(std::uint64_t count) {
        server.sendNotices(count);
        road->receive(count * HANDLERS_EACH);
    }

    Watch watch;
    RoadServer server{topics()};
    std::unique_ptr<Road> road;
};

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

double perSecond(std::uint64_t count, Clock::duration time) {
    return static_cast<double>(count) / std::chrono::duration<double>(time).count();
}

/// Microseconds from the server's call of the system to the first handler's.
Figures measureDelay(Peer<Road> const & peer) {
    Connected connected(peer);
    connected.flood(FLOOD);
    std::uint64_t const first = connected.watch.count() + 1;
    connected.watch.keepTimes();
    connected.server.sendNotices(PACED, PACE);
    connected.road->receive(PACED * HANDLERS_EACH);
    std::vector<double> delays;
    for (std::uint64_t i = 0; i < PACED; ++i) {
        auto const delay = connected.watch.times()[i] - connected.server.sentAt(first + i);
        delays.push_back(std::chrono::duration<double, std::micro>(delay).count());
    }
    std::sort(delays.begin(), delays.end());
    auto const at = [&delays](std::size_t thousandth) {
        return delays[(delays.size() - 1) * thousandth / 1000];
    };
    return {{"median_us", at(500)}, {"p99_us", at(990)}, {"p999_us", at(999)}};
}

/// On the clock of the wall, server and client beside each other.
Figures measureFlood(Peer<Road> const & peer) {
    Connected connected(peer);
    connected.flood(FLOOD);
    std::vector<double> rates;
    for (int round = 0; round < ROUNDS; ++round) {
        Clock::time_point const start = Clock::now();
        connected.flood(10 * FLOOD);
        rates.push_back(perSecond(10 * FLOOD, Clock::now() - start));
    }
    return {{"a_second", median(rates)}};
}

Figures measureRequests(Peer<Road> const & peer, std::uint64_t open) {
    Connected connected(peer);
    std::vector<double> rates;
    for (int round = 0; round < ROUNDS; ++round) {
        Clock::time_point const start = Clock::now();
        std::uint64_t const sum = connected.road->ask(REQUESTS, open);
        rates.push_back(perSecond(REQUESTS, Clock::now() - start));
        requireAgreement(sum == REQUESTS * (REQUESTS + 1) / 2);
    }
    return {{"a_second", median(rates)}};
}

}  // namespace

void addRoadRows(Peers const & peers) {
    for (Peer<Road> const & peer : peers.roads) {
        addRow("road/notices", peer.name, [&]() -> TimedWork {
            auto const connected = std::make_shared<Connected>(peer);
            return {{0, FLOOD}, [connected] { connected->flood(FLOOD); }};
        });
    }
    for (Peer<Road> const & peer : peers.roads) {
        addMeasuredRow("road_rate/notices", peer.name, [&] { return measureFlood(peer); });
    }
    for (std::uint64_t const open : {1, 1000}) {
        for (Peer<Road> const & peer : peers.roads) {
            addMeasuredRow("road_rate/requests_" + std::to_string(open) + "_open", peer.name,
                           [&, open] { return measureRequests(peer, open); });
        }
    }
    for (Peer<Road> const & peer : peers.roads) {
        addMeasuredRow("road_delay/10k_a_second", peer.name, [&] { return measureDelay(peer); });
    }
}

}  // namespace tvk::bench
