#include "modules/asio/detail/Link.h"

#include <gtest/gtest.h>

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <future>
#include <memory>
#include <random>
#include <string>

#include "modules/asio/DesktopLoop.h"
#include "tests/modules/asio/LinkProbe.h"
#include "tests/modules/asio/ScriptServer.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/values/FieldValue.h"

namespace {

using asio::ip::tcp;
using tvk::DesktopLoop;
using tvk::ErrorInfo;
using tvk::EventLoop;
using tvk::KestrinConstants;
using tvk::TcpOptions;
using Socket = ScriptServer::Socket;

TcpOptions plainTo(unsigned short port, char const * host = "127.0.0.1") {
    TcpOptions options;
    options.host = host;
    options.port = port;
    options.plain = true;
    return options;
}

std::string randomText(std::size_t size, unsigned int seed) {
    std::mt19937 random(seed);
    std::string text(size, '\0');
    for (char & byte : text) {
        byte = static_cast<char>(random());
    }
    return text;
}

/// Closes the connection out of order.
void reset(Socket & socket) {
    socket.set_option(asio::socket_base::linger(true, 0));
    socket.close();
}

/// A port on which nobody listens, as long as the object lives.
class ClosedPort {
public:
    ClosedPort() : socket_(context_, {asio::ip::address_v4::loopback(), 0}) {}
    unsigned short number() const { return socket_.local_endpoint().port(); }

private:
    asio::io_context context_;
    tcp::socket socket_;  // bound, not listening
};

/// Each test runs on both kinds of loop.
class LinkTest : public testing::TestWithParam<bool> {
protected:
    LinkTest() {
        if (GetParam()) {
            loop_ = std::make_unique<DesktopLoop>([] {});
        } else {
            loop_ = std::make_unique<EventLoop>(context_);
        }
    }

    void expectFailure(LinkProbe & probe, int code) {
        ASSERT_TRUE(probe.waitForFailure());
        EXPECT_EQ(probe.error().getErrorCode(), code) << probe.error().toString();
        EXPECT_STREQ(probe.error().getDomain(), KestrinConstants::ErrorDomain_Kestrin);
        auto const hint = probe.error().getUserInfo(ErrorInfo::OrvKey_ErrorTypeHint);
        ASSERT_FALSE(hint.isNull());
        EXPECT_STREQ(static_cast<tvk::FieldValue *>(hint.get())->asString(),
                     ErrorInfo::ErrorType_NetworkFailure);
        EXPECT_FALSE(probe.eventFromInside());
        int const events = probe.eventCount();
        driveAll(*loop_);
        EXPECT_EQ(probe.eventCount(), events) << "nothing comes behind a failure";
    }

    asio::io_context context_;
    std::unique_ptr<EventLoop> loop_;
};

std::string nameOfLoop(testing::TestParamInfo<bool> const & loop) {
    return loop.param ? "Desktop" : "Context";
}

INSTANTIATE_TEST_SUITE_P(, LinkTest, testing::Bool(), nameOfLoop);

TEST_P(LinkTest, CarriesBytesBothWays) {
    ScriptServer server(echo<Socket>);
    for (char const * host : {"127.0.0.1", "localhost"}) {
        LinkProbe probe(*loop_, plainTo(server.port(), host));
        ASSERT_TRUE(probe.openAndWait());
        ASSERT_TRUE(probe.writeAndWait("hello"));
        ASSERT_TRUE(probe.waitForBytes(5));
        ASSERT_TRUE(probe.writeAndWait(", again"));
        ASSERT_TRUE(probe.waitForBytes(12));
        EXPECT_EQ(probe.bytes(), "hello, again");
        EXPECT_FALSE(probe.eventFromInside());
    }
}

TEST_P(LinkTest, CarriesMoreThanAnyBufferHolds) {
    ScriptServer server(echo<Socket>);
    std::string const text = randomText(9'000'001, 1);
    LinkProbe probe(*loop_, plainTo(server.port()), 70'000);
    ASSERT_TRUE(probe.openAndWait());
    ASSERT_TRUE(probe.writeAndWait(text));
    ASSERT_TRUE(probe.waitForBytes(text.size()));
    EXPECT_TRUE(probe.bytes() == text);
}

TEST_P(LinkTest, ReadsNoMoreThanTheRoomHolds) {
    ScriptServer server([](Socket & socket) {
        say(socket, "abcdefghij");
        waitForEnd(socket);
    });
    LinkProbe probe(*loop_, plainTo(server.port()), 3);
    ASSERT_TRUE(probe.openAndWait());
    ASSERT_TRUE(probe.waitForBytes(10));
    EXPECT_EQ(probe.bytes(), "abcdefghij");
    EXPECT_GE(probe.eventCount(), 1 + 4);
}

TEST_P(LinkTest, ReadsOnlyWhenAsked) {
    std::promise<void> said;
    ScriptServer server([&](Socket & socket) {
        say(socket, "abc");
        said.set_value();
        waitForEnd(socket);
    });
    LinkProbe probe(*loop_, plainTo(server.port()), 2);
    probe.readsOn = false;
    ASSERT_TRUE(probe.openAndWait());
    said.get_future().wait();
    driveAll(*loop_);
    EXPECT_EQ(probe.bytes(), "");
    probe.readOn();
    ASSERT_TRUE(probe.waitForBytes(2));
    driveAll(*loop_);
    EXPECT_EQ(probe.bytes(), "ab");
    probe.readOn();
    ASSERT_TRUE(probe.waitForBytes(3));
}

TEST_P(LinkTest, TellsThatTheOtherSideClosed) {
    ScriptServer server([](Socket & socket) { say(socket, "bye"); });
    LinkProbe probe(*loop_, plainTo(server.port()));
    ASSERT_TRUE(probe.openAndWait());
    expectFailure(probe, KestrinConstants::ERR_ConnectionClosedByRemotePeer);
    EXPECT_EQ(probe.bytes(), "bye");
}

TEST_P(LinkTest, TellsThatTheConnectionBroke) {
    ScriptServer server([](Socket & socket) {
        readUntil(socket, "x");
        reset(socket);
    });
    LinkProbe probe(*loop_, plainTo(server.port()));
    ASSERT_TRUE(probe.openAndWait());
    probe.write("x");
    expectFailure(probe, KestrinConstants::ERR_NetworkIOError);
    ASSERT_NE(probe.error().getCause(), nullptr);
    EXPECT_EQ(probe.error().getCause()->getErrorCode(), ECONNRESET);
    EXPECT_STREQ(probe.error().getCause()->getDomain(), ErrorInfo::ErrorDomain_POSIX);
}

TEST_P(LinkTest, WritingToAConnectionThatBrokeIsAnErrorAndNoSignal) {
    ScriptServer server([](Socket & socket) {
        readUntil(socket, "x");
        reset(socket);
    });
    LinkProbe probe(*loop_, plainTo(server.port()));
    probe.readsOn = false;
    ASSERT_TRUE(probe.openAndWait());
    while (!probe.failed() && probe.writeAndWait("xxxx")) {
    }
    expectFailure(probe, KestrinConstants::ERR_NetworkIOError);
}

TEST_P(LinkTest, ReadsWhatWasSaidBeforeTheCloseEvenWhenWritingFails) {
    ScriptServer server([](Socket & socket) {
        readUntil(socket, "x");
        say(socket, "the reason");
    });
    LinkProbe probe(*loop_, plainTo(server.port()), 4);
    ASSERT_TRUE(probe.openAndWait());
    probe.onEvent = [&] {
        if (!probe.failed()) {
            probe.write("xx");  // as long as it goes
            probe.onEvent = [] {};
        }
    };
    probe.onEvent();
    ASSERT_TRUE(probe.waitForFailure());
    EXPECT_EQ(probe.bytes(), "the reason");
}

TEST_P(LinkTest, TellsThatNobodyListens) {
    ClosedPort const port;
    for (char const * host : {"127.0.0.1", "localhost"}) {
        LinkProbe probe(*loop_, plainTo(port.number(), host));
        probe.open();
        expectFailure(probe, KestrinConstants::ERR_FailedToCreateConnection);
        EXPECT_FALSE(probe.opened());
        EXPECT_GE(probe.error().getErrorMessage().Find(std::to_string(port.number()).c_str()), 0);
        ASSERT_NE(probe.error().getCause(), nullptr);
        EXPECT_EQ(probe.error().getCause()->getErrorCode(), ECONNREFUSED);
    }
}

TEST_P(LinkTest, TellsThatThereIsNoSuchName) {
    TcpOptions options = plainTo(1, "no-such-host.invalid");
    options.connectMilliSec = 15'000;
    LinkProbe probe(*loop_, options);
    probe.open();
    expectFailure(probe, KestrinConstants::ERR_FailedToCreateConnection);
    EXPECT_FALSE(probe.opened());
}

TEST_P(LinkTest, ClosedItTellsNothingWhateverIsOnItsWay) {
    ScriptServer server([](Socket & socket) { say(socket, "abc"); });
    // Closed behind each number of steps, so that every state is met.
    for (int steps = 0; steps < 12; ++steps) {
        for (bool const destroys : {false, true}) {
            LinkProbe probe(*loop_, plainTo(server.port(), "localhost"), 1);
            probe.open();
            for (int step = 0; step < steps && !probe.failed(); ++step) {
                loop_->runOne();
            }
            int const events = probe.eventCount();
            destroys ? probe.destroy() : probe.link().close();
            bool waited = false;
            loop_->post([&] { waited = true; });
            ASSERT_TRUE(driveUntil(*loop_, [&] { return waited; }));
            driveAll(*loop_);
            EXPECT_EQ(probe.eventCount(), events) << steps;
        }
    }
}

TEST_P(LinkTest, MayBeDestroyedInsideEachEvent) {
    ScriptServer server([](Socket & socket) { say(socket, readUntil(socket, "x")); });
    for (int last = 1; last <= 4; ++last) {  // opened, written and read, failed
        LinkProbe probe(*loop_, plainTo(server.port()));
        probe.onEvent = [&] {
            if (probe.eventCount() == last) {
                probe.destroy();
            } else if (probe.eventCount() == 1) {
                probe.write("x");
            }
        };
        probe.open();
        ASSERT_TRUE(driveUntil(*loop_, [&] { return probe.eventCount() >= last; }));
        driveAll(*loop_);
        EXPECT_EQ(probe.eventCount(), last);
    }
}

TEST_P(LinkTest, LeavesTheRoomAloneOnceItIsClosed) {
    ScriptServer server([](Socket & socket) {
        while (socket.is_open()) {
            asio::error_code code;
            asio::write(socket, asio::buffer("0123456789", 10), code);
            if (code) {
                break;
            }
        }
    });
    for (int round = 0; round < 50; ++round) {
        auto probe = std::make_unique<LinkProbe>(*loop_, plainTo(server.port()), 100'000);
        ASSERT_TRUE(probe->openAndWait());
        ASSERT_TRUE(probe->waitForBytes(10));
        probe.reset();  // and with it the room that is being read into
        driveAll(*loop_);
    }
}

TEST_P(LinkTest, CloseMayBeCalledTwiceAndBeforeOpen) {
    LinkProbe probe(*loop_, plainTo(1));
    probe.link().close();
    probe.link().close();
    driveAll(*loop_);
    EXPECT_EQ(probe.eventCount(), 0);
}

// Through a proxy.

constexpr char ESTABLISHED[] = "HTTP/1.1 200 Connection established\r\n\r\n";

class LinkProxyTest : public LinkTest {
protected:
    /// The proxy takes the host of the options for a name of its own.
    static TcpOptions optionsBy(ScriptServer const & proxy) {
        TcpOptions options = plainTo(4711, "quotes.example");
        options.inet.setProxy(("127.0.0.1:" + std::to_string(proxy.port())).c_str());
        return options;
    }
};

INSTANTIATE_TEST_SUITE_P(, LinkProxyTest, testing::Bool(), nameOfLoop);

TEST_P(LinkProxyTest, OpensTheTunnel) {
    std::string request;
    ScriptServer proxy([&](Socket & socket) {
        request = readUntil(socket, "\r\n\r\n");
        say(socket, ESTABLISHED);
        echo(socket);
    });
    LinkProbe probe(*loop_, optionsBy(proxy));
    ASSERT_TRUE(probe.openAndWait());
    EXPECT_EQ(request, "CONNECT quotes.example:4711 HTTP/1.1\r\nHost: quotes.example:4711\r\n\r\n");
    ASSERT_TRUE(probe.writeAndWait("hello"));
    ASSERT_TRUE(probe.waitForBytes(5));
    EXPECT_EQ(probe.bytes(), "hello");
}

TEST_P(LinkProxyTest, GivesWhatCameBehindTheAnswer) {
    ScriptServer proxy([](Socket & socket) {
        readUntil(socket, "\r\n\r\n");
        say(socket, std::string(ESTABLISHED) + "first words");
        echo(socket);
    });
    LinkProbe probe(*loop_, optionsBy(proxy), 4);
    ASSERT_TRUE(probe.openAndWait());
    ASSERT_TRUE(probe.waitForBytes(11));
    ASSERT_TRUE(probe.writeAndWait("!"));
    ASSERT_TRUE(probe.waitForBytes(12));
    EXPECT_EQ(probe.bytes(), "first words!");
    EXPECT_FALSE(probe.eventFromInside());
}

TEST_P(LinkProxyTest, TellsTheStatusOfARefusal) {
    ScriptServer proxy([](Socket & socket) {
        readUntil(socket, "\r\n\r\n");
        say(socket, "HTTP/1.1 407 Proxy Authentication Required\r\nContent-Length: 0\r\n\r\n");
        waitForEnd(socket);
    });
    LinkProbe probe(*loop_, optionsBy(proxy));
    probe.open();
    expectFailure(probe, KestrinConstants::ERR_HTTPStatusError);
    EXPECT_STREQ(probe.error().getErrorMessage(), "HTTP/1.1 407 Proxy Authentication Required");
    EXPECT_FALSE(probe.opened());
}

TEST_P(LinkProxyTest, TellsThatTheAnswerIsNone) {
    ScriptServer proxy([](Socket & socket) {
        say(socket, "220 mail.example ready\r\n\r\n");
        waitForEnd(socket);
    });
    LinkProbe probe(*loop_, optionsBy(proxy));
    probe.open();
    expectFailure(probe, KestrinConstants::ERR_FailedToCreateConnection);
    EXPECT_STREQ(probe.error().getErrorMessage(),
                 "the proxy's answer is not HTTP: 220 mail.example ready");
}

TEST_P(LinkProxyTest, TellsThatTheProxyHungUp) {
    ScriptServer proxy([](Socket & socket) {
        readUntil(socket, "\r\n\r\n");
        say(socket, "HTTP/1.1 200");
    });
    LinkProbe probe(*loop_, optionsBy(proxy));
    probe.open();
    expectFailure(probe, KestrinConstants::ERR_FailedToCreateConnection);
    EXPECT_STREQ(probe.error().getErrorMessage(),
                 "quotes.example:4711: the proxy hung up without an answer");
}

TEST_P(LinkProxyTest, DoesNotWaitLongerThanAllowed) {
    ScriptServer proxy(waitForEnd);
    TcpOptions options = optionsBy(proxy);
    options.connectMilliSec = 50;
    LinkProbe probe(*loop_, options);
    probe.open();
    expectFailure(probe, KestrinConstants::ERR_FailedToCreateConnection);
    EXPECT_STREQ(
        probe.error().getErrorMessage(),
        "quotes.example:4711: no connection within 50 ms, given up while asking the proxy");
}

TEST_P(LinkProxyTest, DoesNotReadAnAnswerWithoutEnd) {
    ScriptServer proxy([](Socket & socket) {
        say(socket, "HTTP/1.1 200 OK\r\n");
        asio::error_code code;
        while (!code) {
            asio::write(socket, asio::buffer("X: yyyyyyyyyyyyyyyyyyyyyyyyyyy\r\n", 32), code);
        }
    });
    LinkProbe probe(*loop_, optionsBy(proxy));
    probe.open();
    expectFailure(probe, KestrinConstants::ERR_FailedToCreateConnection);
}

TEST_P(LinkProxyTest, RefusesAnAddressThatIsNone) {
    for (char const * proxy : {"proxy", "proxy:", "proxy:0", ":80"}) {
        TcpOptions options = plainTo(1);
        options.inet.setProxy(proxy);
        LinkProbe probe(*loop_, options);
        probe.open();
        expectFailure(probe, KestrinConstants::ERR_FailedToCreateConnection);
        EXPECT_EQ(probe.eventCount(), 1);
    }
}

}  // namespace
