#include "bench/RoadServer.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>

namespace tvk::bench {

namespace {

constexpr std::size_t HEAD_SIZE = 24;
constexpr std::uint64_t KEPT_TIMES = 1U << 20U;
constexpr std::size_t FLOOD_BYTES = 64 * 1024;

enum : int {
    REPLY = 2,
    NOTICE = 3,
    HELLO = 16,
    WELCOME = 17,
    HEARTBEAT = 18,
    HEARTBEAT_ANSWER = 19
};

void append(std::string & bytes, std::uint64_t number, int size) {
    for (int shift = 8 * (size - 1); shift >= 0; shift -= 8) {
        bytes.push_back(static_cast<char>(number >> static_cast<unsigned>(shift)));
    }
}

std::uint64_t numberAt(std::string_view bytes, std::size_t position, std::size_t size) {
    std::uint64_t number = 0;
    for (char const byte : bytes.substr(position, size)) {
        number = number << 8U | static_cast<unsigned char>(byte);
    }
    return number;
}

}  // namespace

std::string frameOf(int kind, std::uint64_t number, std::string_view type, std::string_view subject,
                    std::string_view body) {
    std::string frame;
    append(frame, HEAD_SIZE - 4 + type.size() + subject.size() + body.size(), 4);
    append(frame, static_cast<unsigned>(kind), 1);
    append(frame, 0, 1);
    append(frame, type.size(), 2);
    append(frame, subject.size(), 2);
    append(frame, 0, 2);
    append(frame, type.size() + subject.size(), 4);
    append(frame, number, 8);
    return frame.append(type).append(subject).append(body);
}

RoadServer::RoadServer(std::vector<Topic> const & topics)
    : topics_(topics), sentAt_(new std::atomic<Clock::rep>[KEPT_TIMES]()) {
    listening_ = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto * const generic = reinterpret_cast<sockaddr *>(&address);
    if (listening_ < 0 || bind(listening_, generic, size) != 0 || listen(listening_, 1) != 0 ||
        getsockname(listening_, generic, &size) != 0 || pipe(wake_) != 0) {
        throw std::runtime_error("there is no port to be had");
    }
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this] { serve(); });
}

RoadServer::~RoadServer() {
    close(wake_[1]);
    shutdown(listening_, SHUT_RDWR);
    thread_.join();
    close(wake_[0]);
    close(listening_);
}

void RoadServer::sendNotices(std::uint64_t count, Clock::duration interval) {
    {
        std::lock_guard const lock(mutex_);
        orders_.push_back({count, interval});
    }
    if (write(wake_[1], "o", 1) != 1) {
        throw std::runtime_error("the server cannot be woken");
    }
}

Clock::time_point RoadServer::sentAt(std::uint64_t number) const {
    return Clock::time_point(Clock::duration(sentAt_[number % KEPT_TIMES].load()));
}

void RoadServer::serve() {
    connection_ = accept(listening_, nullptr, nullptr);
    if (connection_ < 0) {
        return;
    }
    int const on = 1;
    setsockopt(connection_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    std::string bytes;
    for (;;) {
        pollfd events[2] = {{connection_, POLLIN, 0}, {wake_[0], POLLIN, 0}};
        if (poll(events, 2, -1) < 0) {
            break;
        }
        if (events[1].revents != 0) {
            char which = 0;
            if (read(wake_[0], &which, 1) != 1) {
                break;
            }
            std::unique_lock lock(mutex_);
            Order const order = orders_.front();
            orders_.erase(orders_.begin());
            lock.unlock();
            carryOut(order);
        }
        if (events[0].revents != 0) {
            char room[65536];
            ssize_t const count = recv(connection_, room, sizeof room, 0);
            if (count <= 0) {
                break;
            }
            bytes.append(room, static_cast<std::size_t>(count));
            std::size_t begin = 0;
            while (bytes.size() - begin >= HEAD_SIZE) {
                std::size_t const size = 4 + numberAt(bytes, begin, 4);
                if (bytes.size() - begin < size) {
                    break;
                }
                answer(std::string_view(bytes).substr(begin, size));
                begin += size;
            }
            bytes.erase(0, begin);
            sendAll(answers_);
            answers_.clear();
        }
    }
    close(connection_);
}

void RoadServer::answer(std::string_view frame) {
    auto const kind = static_cast<int>(numberAt(frame, 4, 1));
    std::uint64_t const number = numberAt(frame, 16, 8);
    std::string_view const type = frame.substr(HEAD_SIZE, numberAt(frame, 6, 2));
    std::string_view const body = frame.substr(HEAD_SIZE + numberAt(frame, 12, 4));
    if (kind == HELLO) {
        answers_ +=
            frameOf(WELCOME, 0, "", "", R"({"protocol":1,"time":1,"heartbeatMilliSec":60000})");
    } else if (kind == HEARTBEAT) {
        answers_ += frameOf(HEARTBEAT_ANSWER, number, "", "", "");
    } else if (type == "login") {
        answers_ += frameOf(REPLY, number, type, "",
                            R"({"code":"0","text":"","time":1,"session":"s","resumed":false})");
    } else if (number != 0) {
        answers_ += frameOf(REPLY, number, type, "", body);
    }
}

std::string RoadServer::noticeOf(std::uint64_t number) const {
    Topic const & topic = topics_[number % topics_.size()];
    char body[256];
    std::snprintf(body, sizeof body,
                  R"({"code":"%s","last":%.1f,"bid":%.1f,"ask":%.1f,"high":1999.0,"low":1000.0,)"
                  R"("volume":%llu,"time":"093015","change":-12.5,"n":%llu})",
                  topic.subject.c_str(), priceOf(number), priceOf(number) - 0.5,
                  priceOf(number) + 0.5, static_cast<unsigned long long>(100 * (number % 5000)),
                  static_cast<unsigned long long>(number));
    return frameOf(NOTICE, number, topic.type, topic.subject, body);
}

void RoadServer::carryOut(Order const & order) {
    std::string bytes;
    Clock::time_point due = Clock::now();
    for (std::uint64_t i = 0; i < order.count; ++i) {
        ++lastNumber_;
        bytes += noticeOf(lastNumber_);
        if (order.interval == Clock::duration::zero()) {
            if (bytes.size() >= FLOOD_BYTES || i + 1 == order.count) {
                sendAll(bytes);
                bytes.clear();
            }
            continue;
        }
        due += order.interval;
        std::this_thread::sleep_until(due);
        sentAt_[lastNumber_ % KEPT_TIMES].store(Clock::now().time_since_epoch().count());
        sendAll(bytes);
        bytes.clear();
    }
}

void RoadServer::sendAll(std::string_view bytes) const {
    while (!bytes.empty()) {
        ssize_t const count = send(connection_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count <= 0) {
            return;  // the client has gone, which the next read tells
        }
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

}  // namespace tvk::bench
