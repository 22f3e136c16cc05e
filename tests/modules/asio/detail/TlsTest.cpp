#include "modules/asio/detail/Tls.h"

#include <gtest/gtest.h>

#include <asio/io_context.hpp>
#include <asio/ssl.hpp>
#include <filesystem>
#include <string>

#include "tests/modules/asio/LinkProbe.h"
#include "tests/modules/asio/ScriptServer.h"
#include "tests/support/Certificates.h"
#include "tests/support/TemporaryFolder.h"
#include "tvk/errors/KestrinConstants.h"

namespace {

using tvk::EventLoop;
using tvk::TcpOptions;
using tvk::test::Certificate;
using tvk::test::CertificateAuthority;
using tvk::test::TemporaryFolder;

using TlsStream = asio::ssl::stream<ScriptServer::Socket &>;
using Script = std::function<void(TlsStream &)>;

/// Serves over TLS; a handshake that fails ends the connection.
class TlsServer {
public:
    explicit TlsServer(Certificate const & certificate, Script script = echo<TlsStream>)
        : tls_(contextWith(certificate)),
          server_([this, script = std::move(script)](ScriptServer::Socket & socket) {
              TlsStream stream(socket, tls_);
              asio::error_code code;
              stream.handshake(asio::ssl::stream_base::server, code);
              if (!code) {
                  script(stream);
              }
          }) {}

    unsigned short port() const { return server_.port(); }

private:
    static asio::ssl::context contextWith(Certificate const & certificate) {
        asio::ssl::context context(asio::ssl::context::tls_server);
        context.use_certificate(asio::buffer(certificate.certificate), asio::ssl::context::pem);
        context.use_private_key(asio::buffer(certificate.key), asio::ssl::context::pem);
        return context;
    }

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

}  // namespace
