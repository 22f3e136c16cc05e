#include "modules/asio/detail/Link.h"

#include <gtest/gtest.h>

#include <asio/buffer.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/write.hpp>

#include "tests/modules/asio/LinkProbe.h"
#include "tvk/errors/KestrinConstants.h"

namespace {

using asio::ip::tcp;
using tvk::EventLoop;
using tvk::KestrinConstants;
using tvk::TcpOptions;

/// A server on a loopback port that gives back what it gets.
class Echo {
public:
    explicit Echo(asio::io_context & context)
        : acceptor_(context, tcp::endpoint(asio::ip::address_v4::loopback(), 0)), socket_(context) {
        acceptor_.async_accept(socket_, [this](asio::error_code const & code) {
            if (!code) {
                read();
            }
        });
    }

    unsigned short port() const { return acceptor_.local_endpoint().port(); }
    void hangUp() { socket_.close(); }

private:
    void read() {
        socket_.async_read_some(asio::buffer(room_),
                                [this](asio::error_code const & code, std::size_t count) {
                                    if (!code) {
                                        asio::write(socket_, asio::buffer(room_, count));
                                        read();
                                    }
                                });
    }

    tcp::acceptor acceptor_;
    tcp::socket socket_;
    char room_[4096];
};

TcpOptions plainTo(unsigned short port) {
    TcpOptions options;
    options.host = "127.0.0.1";
    options.port = port;
    options.plain = true;
    return options;
}

TEST(LinkTest, CarriesBytesBothWays) {
    asio::io_context context;
    EventLoop loop(context);
    Echo server(context);
    LinkProbe probe(loop, plainTo(server.port()));
    ASSERT_TRUE(probe.openAndWait());
    ASSERT_TRUE(probe.writeAndWait("hello"));
    ASSERT_TRUE(probe.waitForBytes(5));
    EXPECT_EQ(probe.bytes(), "hello");
    server.hangUp();
    ASSERT_TRUE(probe.waitForFailure());
    EXPECT_EQ(probe.error().getErrorCode(), KestrinConstants::ERR_ConnectionClosedByRemotePeer);
    EXPECT_FALSE(probe.eventFromInside());
}

}  // namespace
