#include "modules/asio/detail/Tls.h"

#include <gtest/gtest.h>

#include <asio/io_context.hpp>
#include <asio/ssl.hpp>
#include <filesystem>
#include <functional>
#include <future>
#include <string>
#include <utility>

#include "tests/modules/asio/LinkProbe.h"
#include "tests/modules/asio/ScriptServer.h"
#include "tests/support/Certificates.h"
#include "tests/support/TemporaryFolder.h"
#include "tvk/errors/KestrinConstants.h"

namespace {

using tvk::ErrorInfo;
using tvk::EventLoop;
using tvk::KestrinConstants;
using tvk::TcpOptions;
using tvk::test::Certificate;
using tvk::test::CertificateAuthority;
using tvk::test::CertificateWish;
using tvk::test::TemporaryFolder;

using TlsStream = asio::ssl::stream<ScriptServer::Socket &>;
using Script = std::function<void(TlsStream &)>;

/// Serves over TLS; a handshake that fails ends the connection.
class TlsServer {
public:
    /// With a version of 0 it speaks what OpenSSL speaks.
    explicit TlsServer(Certificate const & certificate, Script script = echo<TlsStream>,
                       int version = 0)
        : tls_(contextWith(certificate, version)),
          server_([this, script = std::move(script)](ScriptServer::Socket & socket) {
              TlsStream stream(socket, tls_);
              asio::error_code code;
              stream.handshake(asio::ssl::stream_base::server, code);
              if (!code) {
                  script(stream);
              }
          }) {}

    unsigned short port() const { return server_.port(); }

    static asio::ssl::context contextWith(Certificate const & certificate, int version) {
        asio::ssl::context context(asio::ssl::context::tls_server);
        context.use_certificate(asio::buffer(certificate.certificate), asio::ssl::context::pem);
        context.use_private_key(asio::buffer(certificate.key), asio::ssl::context::pem);
        if (version != 0) {
            // Old versions are signed in ways that the usual level of security forbids.
            SSL_CTX_set_security_level(context.native_handle(), version < TLS1_2_VERSION ? 0 : 1);
            SSL_CTX_set_min_proto_version(context.native_handle(), version);
            SSL_CTX_set_max_proto_version(context.native_handle(), version);
        }
        return context;
    }

private:
    asio::ssl::context tls_;
    ScriptServer server_;
};

class TlsTest : public testing::Test {
protected:
    TcpOptions optionsTo(unsigned short port, std::string const & host = "localhost") const {
        TcpOptions options;
        options.host = host.c_str();
        options.port = port;
        options.inet.setCertFile(trusted_.c_str());
        return options;
    }

    void trust(std::string const & pem) { folder_.write("trusted.pem", pem); }

    /// The text of the failure to connect to a server with the certificate.
    std::string refusal(Certificate const & certificate, char const * host = "localhost") {
        TlsServer server(certificate);
        return refusalBy(optionsTo(server.port(), host));
    }

    std::string refusalBy(TcpOptions const & options) {
        LinkProbe probe(loop_, options);
        probe.open();
        EXPECT_TRUE(probe.waitForFailure());
        EXPECT_FALSE(probe.opened());
        EXPECT_EQ(probe.eventCount(), 1);
        EXPECT_FALSE(probe.eventFromInside());
        if (!probe.failed()) {
            return {};
        }
        EXPECT_EQ(probe.error().getErrorCode(), KestrinConstants::ERR_FailedToCreateConnection);
        std::string const text = probe.error().getErrorMessage().GetString();
        std::size_t const begin = text.find("TLS: ");
        return begin == std::string::npos ? text : text.substr(begin);
    }

    asio::io_context context_;
    EventLoop loop_{context_};
    CertificateAuthority authority_;
    TemporaryFolder folder_;
    std::string trusted_ = folder_.write("trusted.pem", authority_.pem()).string();
};

TEST_F(TlsTest, TakesAGoodCertificateForNameAndAddress) {
    TlsServer server(authority_.issue());
    for (char const * host : {"localhost", "127.0.0.1"}) {
        LinkProbe probe(loop_, optionsTo(server.port(), host));
        ASSERT_TRUE(probe.openAndWait()) << host;
        ASSERT_TRUE(probe.writeAndWait("hello"));
        ASSERT_TRUE(probe.waitForBytes(5));
        EXPECT_EQ(probe.bytes(), "hello");
        EXPECT_FALSE(probe.eventFromInside());
    }
}

constexpr long DAY = 24L * 3600;
constexpr char UNKNOWN_ISSUER[] =
    "TLS: certificate verify failed: unable to get local issuer certificate";
constexpr char SELF_SIGNED[] = "TLS: certificate verify failed: self-signed certificate";

TEST_F(TlsTest, RefusesACertificateForSomebodyElse) {
    constexpr char WRONG_NAME[] = "TLS: certificate verify failed: hostname mismatch";
    EXPECT_EQ(refusal(authority_.issue({"DNS:elsewhere.example"})), WRONG_NAME);
    EXPECT_EQ(refusal(authority_.issue({"IP:127.0.0.1"})), WRONG_NAME);
    EXPECT_EQ(refusal(authority_.issue({"DNS:local*"})), WRONG_NAME);
    EXPECT_EQ(refusal(authority_.issue({""})), WRONG_NAME);
    constexpr char WRONG_ADDRESS[] = "TLS: certificate verify failed: IP address mismatch";
    EXPECT_EQ(refusal(authority_.issue({"IP:127.0.0.2"}), "127.0.0.1"), WRONG_ADDRESS);
    EXPECT_EQ(refusal(authority_.issue({"DNS:localhost"}), "127.0.0.1"), WRONG_ADDRESS);
}

TEST_F(TlsTest, RefusesACertificateOutOfItsTime) {
    CertificateWish wish;
    wish.fromSeconds = -2 * DAY;
    wish.toSeconds = -DAY;
    EXPECT_EQ(refusal(authority_.issue(wish)),
              "TLS: certificate verify failed: certificate has expired");
    wish.fromSeconds = DAY;
    wish.toSeconds = 2 * DAY;
    EXPECT_EQ(refusal(authority_.issue(wish)),
              "TLS: certificate verify failed: certificate is not yet valid");
}

TEST_F(TlsTest, RefusesACertificateThatNobodyTrustedStandsFor) {
    EXPECT_EQ(refusal(CertificateAuthority("Somebody Else").issue()), UNKNOWN_ISSUER);
    EXPECT_EQ(refusal(CertificateAuthority::selfSigned()), SELF_SIGNED);
    // The same name is not the same authority.
    EXPECT_NE(refusal(CertificateAuthority().issue()), "");
}

TEST_F(TlsTest, TrustsTheSystemsAuthoritiesWhereNoFileIsNamed) {
    TlsServer server(authority_.issue());
    TcpOptions options = optionsTo(server.port());
    options.inet.setCertFile("");
    EXPECT_EQ(refusalBy(options), UNKNOWN_ISSUER);
}

TEST_F(TlsTest, TakesASelfSignedCertificateThatIsItselfTrusted) {
    Certificate const own = CertificateAuthority::selfSigned();
    trust(own.certificate);
    TlsServer server(own);
    LinkProbe probe(loop_, optionsTo(server.port()));
    EXPECT_TRUE(probe.openAndWait());
}

TEST_F(TlsTest, TellsThatTheCertificateFileIsNoUse) {
    TlsServer server(authority_.issue());
    TcpOptions options = optionsTo(server.port());
    options.inet.setCertFile((folder_.path() / "absent.pem").c_str());
    EXPECT_NE(refusalBy(options).find("absent.pem"), std::string::npos);
    trust("no certificate");
    EXPECT_NE(refusalBy(optionsTo(server.port())).find("trusted.pem"), std::string::npos);
}

TEST_F(TlsTest, TellsWhatOpenSslSaid) {
    TlsServer server(CertificateAuthority::selfSigned());
    LinkProbe probe(loop_, optionsTo(server.port()));
    probe.open();
    ASSERT_TRUE(probe.waitForFailure());
    ErrorInfo const * const cause = probe.error().getCause();
    ASSERT_NE(cause, nullptr);
    EXPECT_STREQ(cause->getDomain(), ErrorInfo::ErrorDomain_SSL);
    EXPECT_STREQ(cause->getErrorMessage(), "certificate verify failed: self-signed certificate");
    EXPECT_EQ(cause->getErrorCode(), X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT);
}

TEST_F(TlsTest, EndsInAnErrorWithAPlainServer) {
    ScriptServer plain([](ScriptServer::Socket & socket) {
        say(socket, "welcome to a server without TLS");
        waitForEnd(socket);
    });
    EXPECT_EQ(refusalBy(optionsTo(plain.port())), "TLS: wrong version number");
    ScriptServer closing([](ScriptServer::Socket & socket) {
        char byte = 0;
        asio::read(socket, asio::buffer(&byte, 1));
    });
    EXPECT_NE(refusalBy(optionsTo(closing.port())), "");
}

TEST_F(TlsTest, EndsInAnErrorWithAServerThatSaysNothing) {
    ScriptServer silent(waitForEnd);
    TcpOptions options = optionsTo(silent.port());
    options.connectMilliSec = 50;
    EXPECT_NE(refusalBy(options).find("no connection within 50 ms, given up while agreeing on TLS"),
              std::string::npos);
}

TEST_F(TlsTest, APlainClientGetsNoFurtherThanTheHandshakeOfTheServer) {
    TlsServer server(authority_.issue(), [](TlsStream &) { ADD_FAILURE() << "no handshake"; });
    TcpOptions options = optionsTo(server.port());
    options.plain = true;
    LinkProbe probe(loop_, options);
    ASSERT_TRUE(probe.openAndWait());
    probe.write("not a word of TLS, and long enough for the header of a record");
    EXPECT_TRUE(probe.waitForFailure());
}

TEST_F(TlsTest, RefusesAnOlderVersion) {
    TlsServer server(authority_.issue(), echo<TlsStream>, TLS1_1_VERSION);
    EXPECT_NE(refusalBy(optionsTo(server.port())), "");
}

TEST_F(TlsTest, SpeaksBothVersions) {
    for (int const version : {TLS1_2_VERSION, TLS1_3_VERSION}) {
        TlsServer server(authority_.issue(), echo<TlsStream>, version);
        LinkProbe probe(loop_, optionsTo(server.port()));
        ASSERT_TRUE(probe.openAndWait()) << version;
        ASSERT_TRUE(probe.writeAndWait("hello"));
        ASSERT_TRUE(probe.waitForBytes(5));
    }
}

TEST_F(TlsTest, NamesTheHostButNoAddress) {
    std::string name;
    TlsServer server(authority_.issue(), [&](TlsStream & stream) {
        char const * const said =
            SSL_get_servername(stream.native_handle(), TLSEXT_NAMETYPE_host_name);
        name = said != nullptr ? said : "none";
        say(stream, "!");
        echo(stream);
    });
    for (auto const & [host, expected] :
         {std::pair("localhost", "localhost"), std::pair("127.0.0.1", "none")}) {
        LinkProbe probe(loop_, optionsTo(server.port(), host));
        ASSERT_TRUE(probe.openAndWait());
        ASSERT_TRUE(probe.waitForBytes(1));
        EXPECT_EQ(name, expected);
    }
}

TEST_F(TlsTest, CarriesMoreThanAnyBufferHolds) {
    TlsServer server(authority_.issue());
    std::string text(5'000'001, '\0');
    for (std::size_t i = 0; i < text.size(); ++i) {
        text[i] = static_cast<char>(i * i % 251);
    }
    for (std::size_t const roomSize : {std::size_t{70'000}, std::size_t{1'000}}) {
        LinkProbe probe(loop_, optionsTo(server.port()), roomSize);
        ASSERT_TRUE(probe.openAndWait());
        ASSERT_TRUE(probe.writeAndWait(text));
        ASSERT_TRUE(probe.waitForBytes(text.size()));
        EXPECT_TRUE(probe.bytes() == text);
        EXPECT_FALSE(probe.eventFromInside());
    }
}

TEST_F(TlsTest, TellsThatTheOtherSideEnded) {
    for (bool const inOrder : {true, false}) {
        TlsServer server(authority_.issue(), [&](TlsStream & stream) {
            say(stream, "bye");
            if (inOrder) {
                asio::error_code ignored;
                stream.shutdown(ignored);
            }
        });
        LinkProbe probe(loop_, optionsTo(server.port()), 2);
        ASSERT_TRUE(probe.openAndWait());
        ASSERT_TRUE(probe.waitForFailure());
        EXPECT_EQ(probe.bytes(), "bye");
        EXPECT_EQ(probe.error().getErrorCode(), KestrinConstants::ERR_ConnectionClosedByRemotePeer);
    }
}

TEST_F(TlsTest, TellsThatBytesWereChangedOnTheWay) {
    TlsServer server(authority_.issue(), [](TlsStream & stream) {
        say(stream, "abc");
        say(stream.next_layer(), "bytes that are no record");
        waitForEnd(stream.next_layer());
    });
    LinkProbe probe(loop_, optionsTo(server.port()));
    ASSERT_TRUE(probe.openAndWait());
    ASSERT_TRUE(probe.waitForFailure());
    EXPECT_EQ(probe.error().getErrorCode(), KestrinConstants::ERR_NetworkIOError);
    EXPECT_EQ(probe.bytes(), "abc");
}

TEST_F(TlsTest, EndsTheStreamInOrder) {
    std::promise<asio::error_code> end;
    TlsServer server(authority_.issue(), [&](TlsStream & stream) {
        char byte = 0;
        asio::error_code code;
        stream.read_some(asio::buffer(&byte, 1), code);
        end.set_value(code);
    });
    LinkProbe probe(loop_, optionsTo(server.port()));
    ASSERT_TRUE(probe.openAndWait());
    driveAll(loop_);
    probe.link().close();
    EXPECT_EQ(end.get_future().get(), asio::error::eof);  // a stream cut off is another error
}

TEST_F(TlsTest, GoesThroughTheTunnelOfAProxy) {
    // A proxy that is the server as well: behind its answer it speaks TLS itself.
    asio::ssl::context tls = TlsServer::contextWith(authority_.issue({"DNS:quotes.example"}), 0);
    ScriptServer proxy([&](ScriptServer::Socket & socket) {
        readUntil(socket, "\r\n\r\n");
        say(socket, "HTTP/1.1 200 OK\r\n\r\n");
        TlsStream stream(socket, tls);
        asio::error_code code;
        stream.handshake(asio::ssl::stream_base::server, code);
        if (!code) {
            echo(stream);
        }
    });
    TcpOptions options = optionsTo(1, "quotes.example");
    options.inet.setProxy(("127.0.0.1:" + std::to_string(proxy.port())).c_str());
    LinkProbe probe(loop_, options);
    ASSERT_TRUE(probe.openAndWait());
    ASSERT_TRUE(probe.writeAndWait("hello"));
    ASSERT_TRUE(probe.waitForBytes(5));
    probe.destroy();  // one connection at a time
    // The name is the host's, not the proxy's.
    options.host = "localhost";
    EXPECT_EQ(refusalBy(options), "TLS: certificate verify failed: hostname mismatch");
}

}  // namespace
