#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <array>
#include <asio.hpp>
#include <chrono>
#include <deque>
#include <functional>
#include <stdexcept>
#include <unordered_map>

#include "bench/RoadServer.h"
#include "bench/peers/Peers.h"

namespace tvk::bench {

namespace {

using Document = rapidjson::GenericDocument<rapidjson::UTF8<>, rapidjson::MemoryPoolAllocator<>>;
using Handler = std::function<void(Document const & notice)>;
using ReplyHandler = std::function<void(Document const & reply)>;

enum : int { REQUEST = 1, REPLY = 2, NOTICE = 3, HELLO = 16 };

constexpr std::size_t HEAD_SIZE = 24;
constexpr std::size_t MAXIMUM_FRAME = 16U << 20U;
constexpr std::chrono::seconds TIME_OUT(10);

template <class Number>
Number numberAt(char const * bytes) {
    Number number = 0;
    for (std::size_t i = 0; i < sizeof number; ++i) {
        number = static_cast<Number>(static_cast<std::uint64_t>(number) << 8U |
                                     static_cast<unsigned char>(bytes[i]));
    }
    return number;
}

/// The client that one writes by hand: Asio, a Document over a pool that is used again, and standard
/// tables of std::function.
class RapidJsonRoad : public Road {
public:
    void connect(unsigned short port, std::vector<Topic> const & keys, NoticeSink & sink) override {
        for (Topic const & key : keys) {
            handlers_[key.type + '-' + key.subject].push_back(
                [this, &sink](Document const & notice) {
                    sink.told(notice["n"].GetUint64(), notice["last"].GetDouble());
                    ++calls_;
                });
        }
        socket_.connect({asio::ip::address_v4::loopback(), port});
        socket_.set_option(asio::ip::tcp::no_delay(true));
        post(frameOf(HELLO, 0, "", "", R"({"protocol":1})"));
        read();
        std::size_t replies = 0;
        auto const count = [&replies](Document const &) { ++replies; };
        request("login", R"({"loginId":"a","password":"b"})", count);
        request("startRealTime", "{}", count);
        while (replies < 2) {
            context_.run_one();
        }
    }

    void receive(std::uint64_t calls) override {
        std::uint64_t const wanted = calls_ + calls;
        while (calls_ < wanted) {
            context_.run_one();
        }
    }

    std::uint64_t ask(std::uint64_t requests, std::uint64_t open) override {
        std::uint64_t asked = 0;
        std::uint64_t answered = 0;
        std::uint64_t sum = 0;
        std::function<void()> const askOne = [&] {
            text_.Clear();
            rapidjson::Writer<rapidjson::StringBuffer> writer(text_);
            writer.StartObject();
            writer.Key("n");
            writer.Uint64(++asked);
            writer.EndObject();
            request("echo", {text_.GetString(), text_.GetSize()}, [&](Document const & reply) {
                sum += reply["n"].GetUint64();
                ++answered;
                if (asked < requests) {
                    askOne();
                }
            });
        };
        while (asked < std::min(open, requests)) {
            askOne();
        }
        while (answered < requests) {
            context_.run_one();
        }
        return sum;
    }

private:
    void request(std::string_view type, std::string_view body, ReplyHandler handler) {
        ++lastRequest_;
        open_.emplace(lastRequest_, std::move(handler));
        deadlines_.emplace_back(Clock::now() + TIME_OUT, lastRequest_);
        if (deadlines_.size() == 1) {
            awaitDeadline();
        }
        post(frameOf(REQUEST, lastRequest_, type, "", body));
    }

    void awaitDeadline() {
        timer_.expires_at(deadlines_.front().first);
        timer_.async_wait([this](asio::error_code error) {
            if (error) {
                return;
            }
            while (!deadlines_.empty() && deadlines_.front().first <= Clock::now()) {
                if (open_.erase(deadlines_.front().second) != 0) {
                    throw std::runtime_error("a request timed out");
                }
                deadlines_.pop_front();
            }
            if (!deadlines_.empty()) {
                awaitDeadline();
            }
        });
    }

    void post(std::string const & frame) {
        waiting_ += frame;
        if (!isWriting_) {
            write();
        }
    }

    void write() {
        isWriting_ = true;
        underWay_.swap(waiting_);
        asio::async_write(socket_, asio::buffer(underWay_),
                          [this](asio::error_code error, std::size_t) {
                              if (error) {
                                  throw asio::system_error(error);
                              }
                              underWay_.clear();
                              isWriting_ = false;
                              if (!waiting_.empty()) {
                                  write();
                              }
                          });
    }

    void read() {
        if (bytes_.size() - end_ < bytes_.size() / 2) {
            std::copy(bytes_.begin() + static_cast<std::ptrdiff_t>(begin_),
                      bytes_.begin() + static_cast<std::ptrdiff_t>(end_), bytes_.begin());
            end_ -= begin_;
            begin_ = 0;
            if (bytes_.size() - end_ < bytes_.size() / 2) {
                bytes_.resize(2 * bytes_.size());
            }
        }
        socket_.async_read_some(asio::buffer(bytes_.data() + end_, bytes_.size() - end_),
                                [this](asio::error_code error, std::size_t count) {
                                    if (error) {
                                        throw asio::system_error(error);
                                    }
                                    end_ += count;
                                    takeFrames();
                                    read();
                                });
    }

    void takeFrames() {
        while (end_ - begin_ >= HEAD_SIZE) {
            std::size_t const size = 4U + numberAt<std::uint32_t>(&bytes_[begin_]);
            if (size < HEAD_SIZE || size > MAXIMUM_FRAME) {
                throw std::runtime_error("a frame has a bad size");
            }
            if (end_ - begin_ < size) {
                return;
            }
            take({&bytes_[begin_], size});
            begin_ += size;
        }
    }

    void take(std::string_view frame) {
        auto const headSize = numberAt<std::uint32_t>(&frame[12]);
        auto const typeSize = numberAt<std::uint16_t>(&frame[6]);
        auto const subjectSize = numberAt<std::uint16_t>(&frame[8]);
        if (HEAD_SIZE + headSize > frame.size() || std::size_t{typeSize} + subjectSize > headSize) {
            throw std::runtime_error("a frame does not fit");
        }
        int const kind = frame[4];
        if (kind != NOTICE && kind != REPLY) {
            return;
        }
        pool_.Clear();
        Document document(&pool_);
        std::string_view const body = frame.substr(HEAD_SIZE + headSize);
        if (document.Parse(body.data(), body.size()).HasParseError() || !document.IsObject()) {
            throw std::runtime_error("a body is no JSON");
        }
        auto const number = numberAt<std::uint64_t>(&frame[16]);
        if (kind == NOTICE) {
            if (number != lastNotice_ + 1) {
                throw std::runtime_error("a notice is missing");
            }
            lastNotice_ = number;
            deliver(frame.substr(HEAD_SIZE, typeSize),
                    frame.substr(HEAD_SIZE + typeSize, subjectSize), document);
        } else if (auto const entry = open_.find(number); entry != open_.end()) {
            ReplyHandler const handler = std::move(entry->second);
            open_.erase(entry);
            handler(document);
        }
    }

    void deliver(std::string_view type, std::string_view subject, Document const & notice) {
        std::array<std::pair<std::string_view, std::string_view>, 4> const keys = {
            {{ANY, ANY}, {type, ANY}, {ANY, subject}, {type, subject}}};
        for (auto const & [keyType, keySubject] : keys) {
            key_.assign(keyType).append(1, '-').append(keySubject);
            if (auto const found = handlers_.find(key_); found != handlers_.end()) {
                for (Handler const & handler : found->second) {
                    handler(notice);
                }
            }
        }
    }

    asio::io_context context_{1};
    asio::ip::tcp::socket socket_{context_};
    asio::steady_timer timer_{context_};
    std::vector<char> bytes_ = std::vector<char>(64U * 1024);
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    std::string waiting_;
    std::string underWay_;
    bool isWriting_ = false;

    std::array<char, 64U * 1024> poolRoom_;
    rapidjson::MemoryPoolAllocator<> pool_{poolRoom_.data(), poolRoom_.size()};
    rapidjson::StringBuffer text_;
    std::string key_;
    std::unordered_map<std::string, std::vector<Handler>> handlers_;
    std::unordered_map<std::uint64_t, ReplyHandler> open_;
    std::deque<std::pair<Clock::time_point, std::uint64_t>> deadlines_;
    std::uint64_t lastRequest_ = 0;
    std::uint64_t lastNotice_ = 0;
    std::uint64_t calls_ = 0;
};

}  // namespace

void addRapidJsonRoad(Peers & peers) { addPeer<RapidJsonRoad>(peers.roads, "rapidjson_asio"); }

}  // namespace tvk::bench
