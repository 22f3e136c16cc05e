#include "tvk/platform/NameService.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/NetworkOrder.h"

namespace {

using tvk::platform::resolveHost;
using tvk::test::inNetworkOrder;

constexpr std::uint32_t UNTOUCHED = 0xdeadbeef;
constexpr int NO_SUCH_HOST = 11001;

struct DottedRow {
    char const * host;
    std::uint32_t address;
};

TEST(NameService, TakesDottedNumbersAsTheyAre) {
    DottedRow const rows[] = {
        {"127.0.0.1", inNetworkOrder(127, 0, 0, 1)},
        {"1.2.3.4", inNetworkOrder(1, 2, 3, 4)},
        {"0.0.0.0", 0},
        {"255.255.255.254", inNetworkOrder(255, 255, 255, 254)},
        {"10.1", inNetworkOrder(10, 0, 0, 1)},
        {"0x7f.1", inNetworkOrder(127, 0, 0, 1)},
        {"010.0.0.1", inNetworkOrder(8, 0, 0, 1)},
        {"1", inNetworkOrder(0, 0, 0, 1)},
    };
    for (DottedRow const & row : rows) {
        SCOPED_TRACE(row.host);
        std::uint32_t address = UNTOUCHED;
        EXPECT_EQ(resolveHost(row.host, &address), 0);
        EXPECT_EQ(address, row.address);
    }
}

// No number to the first look; the name service reads it as one, or knows no such host.
TEST(NameService, AsksTheNameServiceForAllOnes) {
    std::uint32_t address = UNTOUCHED;
    int const error = resolveHost("255.255.255.255", &address);
    EXPECT_EQ(address, error == 0 ? inNetworkOrder(255, 255, 255, 255) : UNTOUCHED);
}

TEST(NameService, FindsThisMachine) {
    std::uint32_t address = UNTOUCHED;
    ASSERT_EQ(resolveHost("localhost", &address), 0);
    EXPECT_EQ(address & inNetworkOrder(255, 0, 0, 0), inNetworkOrder(127, 0, 0, 0));
}

TEST(NameService, FailsWithANumberAndLeavesTheAddressAlone) {
    std::string const longHost(5000, 'x');
    for (char const * host : {"256.256.256.256", "1.2.3.4.5", "", longHost.c_str(), "a..b"}) {
        SCOPED_TRACE(host);
        std::uint32_t address = UNTOUCHED;
        int const error = resolveHost(host, &address);
        EXPECT_GE(error, NO_SUCH_HOST);
        EXPECT_LE(error, NO_SUCH_HOST + 3);
        EXPECT_EQ(address, UNTOUCHED);
    }
}

TEST(NameService, KnowsNoHostByANullName) {
    std::uint32_t address = UNTOUCHED;
    EXPECT_EQ(resolveHost(nullptr, &address), NO_SUCH_HOST);
    EXPECT_EQ(address, UNTOUCHED);
}

TEST(NameService, AnswersManyThreadsAtOnce) {
    std::vector<std::thread> threads;
    std::vector<std::uint32_t> addresses(8, UNTOUCHED);
    for (std::uint32_t & address : addresses) {
        threads.emplace_back([&address] {
            for (int round = 0; round < 50; ++round) {
                resolveHost("localhost", &address);
            }
        });
    }
    for (std::thread & thread : threads) {
        thread.join();
    }
    for (std::uint32_t const address : addresses) {
        EXPECT_EQ(address & inNetworkOrder(255, 0, 0, 0), inNetworkOrder(127, 0, 0, 0));
    }
}

}  // namespace
