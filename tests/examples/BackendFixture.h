#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>
#include <thread>

#include "examples/backend/Backend.h"
#include "examples/backend/Texts.h"
#include "examples/support/Fields.h"
#include "tests/examples/BackendClient.h"

namespace tvk::test {

/// A back end whose market stands, so that nothing comes by itself; a test changes what it needs and
/// starts it.
class BackendFixture : public testing::Test {
protected:
    BackendFixture() {
        options_.quoteMilliSec = 0;
        options_.headlineMilliSec = 0;
    }

    void start() {
        backEnd_.emplace(options_);
        std::string problem;
        ASSERT_TRUE(backEnd_->start(&problem)) << problem;
    }

    BackendClient newClient() { return BackendClient(backEnd_->port()); }

    /// Whether it comes true in time.
    static bool waitFor(std::function<bool()> const & condition) {
        auto const end = std::chrono::steady_clock::now() +
                         std::chrono::milliseconds(BackendClient::LIMIT_MILLISEC);
        while (!condition()) {
            if (std::chrono::steady_clock::now() > end) {
                return false;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return true;
    }

    backend::Backend::Options options_;
    std::optional<backend::Backend> backEnd_;
};

inline std::string bodyText(BackendClient::Came const & came, char const * name) {
    return came.message.isNull() ? "" : backend::utf8In(*came.message, name);
}

inline long long bodyNumber(BackendClient::Came const & came, char const * name) {
    return came.message.isNull() ? 0 : numberIn(*came.message, name);
}

}  // namespace tvk::test
