#include <gtest/gtest.h>

#include <exception>
#include <string>

#include "tests/examples/BackendFixture.h"
#include "tests/support/Certificates.h"
#include "tests/support/TemporaryFolder.h"

namespace tvk::test {

namespace {

class BackendTls : public BackendFixture {
protected:
    BackendTls() {
        Certificate const certificate = authority_.issue();
        options_.certFile = folder_.write("server.pem", certificate.certificate);
        options_.keyFile = folder_.write("server.key", certificate.key);
    }

    CertificateAuthority authority_;
    TemporaryFolder folder_;
    std::string trusted_ = folder_.write("trusted.pem", authority_.pem());
};

}  // namespace

TEST_F(BackendTls, ServesWhoTrustsItsCertificate) {
    start();
    BackendClient client(backEnd_->port(), trusted_);
    ASSERT_TRUE(client.greet());
    EXPECT_EQ(bodyText(client.login("taro"), "code"), "0");
    std::string const body = R"({"a":")" + std::string(300'000, 'x') + "\"}";
    EXPECT_EQ(client.ask("echo", body).body, body);
    client.ask("fault", R"({"kind":"disconnect"})");
    EXPECT_TRUE(client.ends());
}

TEST_F(BackendTls, OutlivesWhoDoesNot) {
    start();
    std::string const strangers =
        folder_.write("strangers.pem", CertificateAuthority("Strangers").pem());
    EXPECT_THROW(BackendClient(backEnd_->port(), strangers), std::exception);
    {
        BackendClient plain(backEnd_->port());
        plain.send(FRAME_HELLO, 0, "", R"({"protocol":1})");
        EXPECT_TRUE(plain.ends());
    }
    BackendClient client(backEnd_->port(), trusted_);
    EXPECT_TRUE(client.greet());
}

TEST_F(BackendTls, SaysGoodbyeBehindTheHandshake) {
    start();
    backend::Fault fault;
    fault.kind = backend::Fault::GOODBYE;
    fault.code = 18;
    backEnd_->inject(fault);
    BackendClient client(backEnd_->port(), trusted_);
    EXPECT_EQ(bodyNumber(client.next(), "code"), 18);
    EXPECT_TRUE(client.ends());
}

TEST_F(BackendTls, WantsAKeyThatFits) {
    options_.keyFile = folder_.write("other.key", authority_.issue().key);
    backend::Backend backEnd(options_);
    std::string problem;
    EXPECT_FALSE(backEnd.start(&problem));
    EXPECT_NE(problem, "");
}

}  // namespace tvk::test
