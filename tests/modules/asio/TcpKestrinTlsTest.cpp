// What an application hears of a back end whose certificate it does not trust.

#include <gtest/gtest.h>

#include <asio/io_context.hpp>
#include <memory>
#include <string>

#include "examples/backend/Backend.h"
#include "modules/asio/EventLoop.h"
#include "modules/asio/TcpKestrin.h"
#include "tests/modules/asio/Driven.h"
#include "tests/modules/asio/support/TcpKestrinFixture.h"
#include "tests/support/Certificates.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using tvk::TcpKestrin;
using tvk::TcpOptions;
using tvk::test::Certificate;
using tvk::test::CertificateAuthority;
using tvk::test::CertificateWish;

/// A back end with a certificate, and an agent that tries once.
class TcpKestrinTlsTest : public testing::Test {
protected:
    TcpKestrinTlsTest() {
        options_.host = "localhost";
        options_.maximumAttempts = 1;
        options_.inet.setCertFile(folder_.write("trusted.pem", authority_.pem()).c_str());
    }

    void serve(Certificate const & certificate) {
        backend::Backend::Options options;
        options.certFile = folder_.write("certificate.pem", certificate.certificate).string();
        options.keyFile = folder_.write("key.pem", certificate.key).string();
        serve(options);
    }
    void serve(backend::Backend::Options const & options) {
        backEnd_ = std::make_unique<backend::Backend>(options);
        std::string problem;
        ASSERT_TRUE(backEnd_->start(&problem)) << problem;
        options_.port = backEnd_->port();
    }

    void connect() {
        agent_ = new TcpKestrin(loop_, options_);
        agent_->initialize(new tvk::KestrinConfig, nullptr);
        agent_->addKestrinListener(&listener_);
        ASSERT_TRUE(agent_->start(nullptr));
    }

    /// The agent hears of one failure with this in its text, and is at its end.
    void expectRefusal(std::string const & reason) {
        connect();
        std::string text;
        listener_.during = [&](std::string const & line) {
            if (line == "error 1") {
                text = listener_.lastText;
            }
        };
        agent_->run();
        EXPECT_EQ(heard_, (Heard{"error 1", "error 21", "stopped 21"}));
        EXPECT_NE(text.find(reason), std::string::npos) << text;
        EXPECT_EQ(agent_->getStatus(), KESTRINSTATUS_STOPPED);
        EXPECT_FALSE(agent_->login("trader", "secret", nullptr));
    }

    CertificateAuthority authority_;
    tvk::test::TemporaryFolder folder_;
    TcpOptions options_;
    asio::io_context context_;
    std::shared_ptr<tvk::EventLoop> loop_ = std::make_shared<tvk::EventLoop>(context_);
    Heard heard_;
    HearingListener listener_{heard_};
    std::unique_ptr<backend::Backend> backEnd_;
    tvk::RefCountedPtr<TcpKestrin> agent_;
};

TEST_F(TcpKestrinTlsTest, LogsInWhereTheCertificateIsGood) {
    serve(authority_.issue());
    connect();
    listener_.during = [this](std::string const & line) {
        if (line == "connected") {
            EXPECT_TRUE(agent_->login("trader", "secret", nullptr));
        } else if (line.rfind("startup", 0) == 0) {
            agent_->stop();
        }
    };
    agent_->run();
    ASSERT_EQ(heard_.size(), 5U);
    EXPECT_EQ(heard_[0], "connected");
    EXPECT_EQ(heard_[1], "login yes 0");
    EXPECT_EQ(heard_[3], "disconnected null");
    EXPECT_EQ(heard_[4], "stopped null");
}

TEST_F(TcpKestrinTlsTest, RefusesTheCertificateOfSomebodyElse) {
    serve(authority_.issue({"DNS:elsewhere.example"}));
    expectRefusal("hostname mismatch");
}

TEST_F(TcpKestrinTlsTest, RefusesOneThatHasExpired) {
    serve(authority_.issue({"DNS:localhost", -7200, -3600}));
    expectRefusal("certificate has expired");
}

TEST_F(TcpKestrinTlsTest, RefusesOneThatStandsForItself) {
    serve(CertificateAuthority::selfSigned());
    expectRefusal("certificate verify failed");
}

TEST_F(TcpKestrinTlsTest, RefusesOneOfAnUnknownAuthority) {
    serve(CertificateAuthority("Somebody Else").issue());
    expectRefusal("certificate verify failed");
}

TEST_F(TcpKestrinTlsTest, RefusesABackEndWithoutTls) {
    serve(backend::Backend::Options{});
    options_.connectMilliSec = 2000;
    expectRefusal("TLS");
}

TEST_F(TcpKestrinTlsTest, IsNotPlainUnlessItIsAskedTo) {
    serve(backend::Backend::Options{});
    options_.plain = true;
    connect();
    listener_.during = [this](std::string const & line) {
        if (line == "connected") {
            agent_->stop();
        }
    };
    agent_->run();
    EXPECT_EQ(heard_, (Heard{"connected", "disconnected null", "stopped null"}));
}

}  // namespace
