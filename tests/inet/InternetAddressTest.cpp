#include "tvk/inet/InternetAddress.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>

#include "tests/support/NetworkOrder.h"

namespace tvk {
namespace {

using test::inNetworkOrder;

static_assert(!std::is_polymorphic_v<InternetAddress>);
static_assert(std::is_same_v<decltype(InternetAddress().getNumericAddress()), unsigned long>);
static_assert(std::is_same_v<decltype(InternetAddress().sockAddr()), sockaddr_in const &>);

/// A structure whose every byte is set.
sockaddr_in structure(int family, int port, std::uint32_t address) {
    sockaddr_in result;
    std::memset(&result, 0x5a, sizeof result);
    result.sin_family = static_cast<decltype(result.sin_family)>(family);
    result.sin_port = htons(static_cast<std::uint16_t>(port));
    result.sin_addr.s_addr = address;
    return result;
}

void expectAddress(InternetAddress const & address, int family, int port, std::uint32_t number) {
    EXPECT_EQ(address.sockAddr().sin_family, family);
    EXPECT_EQ(address.sockAddr().sin_port, htons(static_cast<std::uint16_t>(port)));
    EXPECT_EQ(address.sockAddr().sin_addr.s_addr, number);
    EXPECT_EQ(address.getPort(), port);
    EXPECT_EQ(address.getNumericAddress(), number);
    for (auto const byte : address.sockAddr().sin_zero) {
        EXPECT_EQ(byte, 0);
    }
}

// A host that there is not, on any machine and without asking a network.
constexpr char const * NO_HOST = "256.1.1.1";

TEST(InternetAddress, StartsAsPort0OfAnyAddress) {
    expectAddress(InternetAddress(), AF_INET, 0, 0);
}

TEST(InternetAddress, TakesAPortOfAnyAddress) {
    expectAddress(InternetAddress(8080), AF_INET, 8080, 0);
    expectAddress(8080, AF_INET, 8080, 0);
    expectAddress(InternetAddress("*", 8080), AF_INET, 8080, 0);
    expectAddress(InternetAddress("0.0.0.0", 8080), AF_INET, 8080, 0);
    EXPECT_EQ(InternetAddress(8080), InternetAddress("*", 8080));
    EXPECT_EQ(InternetAddress(8080), InternetAddress("0.0.0.0", 8080));
}

TEST(InternetAddress, TakesAHostAndAPort) {
    expectAddress(InternetAddress("192.168.1.2", 443), AF_INET, 443,
                  inNetworkOrder(192, 168, 1, 2));
}

TEST(InternetAddress, HasAddress0WhereTheConstructorCannotResolveTheHost) {
    expectAddress(InternetAddress(NO_HOST, 80), AF_INET, 80, 0);
    expectAddress(InternetAddress(nullptr, 80), AF_INET, 80, 0);
}

TEST(InternetAddress, TakesAStructureAndClearsItsZeros) {
    expectAddress(structure(AF_INET, 443, inNetworkOrder(10, 0, 0, 1)), AF_INET, 443,
                  inNetworkOrder(10, 0, 0, 1));
    expectAddress(structure(AF_INET6, 65535, 0xffffffff), AF_INET6, 65535, 0xffffffff);
}

TEST(InternetAddress, CopiesTheWholeStructure) {
    InternetAddress const address(structure(AF_INET6, 7, 99));
    InternetAddress const copy(address);
    expectAddress(copy, AF_INET6, 7, 99);

    InternetAddress target("1.2.3.4", 5);
    InternetAddress & result = target = address;
    EXPECT_EQ(&result, &target);
    expectAddress(target, AF_INET6, 7, 99);

    InternetAddress const & self = target;
    target = self;
    expectAddress(target, AF_INET6, 7, 99);
}

struct HostRow {
    char const * host;
    std::uint32_t address;
};

TEST(InternetAddress, ResolvesNumbersAsInetAddrReadsThem) {
    HostRow const rows[] = {
        {"127.0.0.1", inNetworkOrder(127, 0, 0, 1)},
        {"127.1", inNetworkOrder(127, 0, 0, 1)},
        {"10.2.259", inNetworkOrder(10, 2, 1, 3)},
        {"16909060", inNetworkOrder(1, 2, 3, 4)},
        {"0x7f.0.0.0x1", inNetworkOrder(127, 0, 0, 1)},
        {"0177.0.0.01", inNetworkOrder(127, 0, 0, 1)},
        {"255.255.255.254", inNetworkOrder(255, 255, 255, 254)},
        {"0.0.0.0", 0},
        {"0", 0},
        {"*", 0},
    };
    for (HostRow const & row : rows) {
        SCOPED_TRACE(row.host);
        InternetAddress address(structure(AF_INET6, 1, 0x12345678));
        EXPECT_EQ(address.resolveTo(row.host, 2), 0);
        expectAddress(address, AF_INET, 2, row.address);
    }
}

TEST(InternetAddress, ResolvesTheNameOfThisMachine) {
    InternetAddress address;
    ASSERT_EQ(address.resolveTo("localhost", 80), 0);
    EXPECT_EQ(address.getPort(), 80);
    EXPECT_EQ(address.getNumericAddress() & inNetworkOrder(255, 0, 0, 0),
              inNetworkOrder(127, 0, 0, 0));
}

// Whether the name service takes the number for a host is the system's affair.
TEST(InternetAddress, DeliberateAsksTheNameServiceForAllOnes) {
    InternetAddress address("1.2.3.4", 1);
    int const error = address.resolveTo("255.255.255.255", 80);
    expectAddress(address, AF_INET, 80, error == 0 ? 0xffffffff : inNetworkOrder(1, 2, 3, 4));
}

TEST(InternetAddress, DeliberateAFailureLeavesTheNewPortAndTheOldAddress) {
    std::string const longHost(5000, 'x');
    for (char const * host : {NO_HOST, "1.2.3.4.5", "a..b", "", longHost.c_str(), "no-host.invalid",
                              static_cast<char const *>(nullptr)}) {
        SCOPED_TRACE(host == nullptr ? "null" : host);
        InternetAddress address(structure(AF_INET6, 1, inNetworkOrder(1, 2, 3, 4)));
        EXPECT_NE(address.resolveTo(host, 80), 0);
        expectAddress(address, AF_INET, 80, inNetworkOrder(1, 2, 3, 4));
    }
}

TEST(InternetAddress, NumbersAFailureAsASocketLayerDoes) {
    constexpr int NO_SUCH_HOST = 11001;
    EXPECT_EQ(InternetAddress().resolveTo(NO_HOST, 80), NO_SUCH_HOST);
    EXPECT_EQ(InternetAddress().resolveTo(nullptr, 80), NO_SUCH_HOST);
}

TEST(InternetAddress, KnowsOneFormOfTheWildcard) {
    for (char const * host : {"**", " *", "* ", "*.*.*.*"}) {
        SCOPED_TRACE(host);
        EXPECT_NE(InternetAddress().resolveTo(host, 80), 0);
    }
}

TEST(InternetAddress, CutsAPortTo16Bits) {
    EXPECT_EQ(InternetAddress(65535).getPort(), 65535);
    EXPECT_EQ(InternetAddress(32768).getPort(), 32768);
    EXPECT_EQ(InternetAddress(65536 + 80).getPort(), 80);
    EXPECT_EQ(InternetAddress(-1).getPort(), 65535);
    EXPECT_EQ(InternetAddress("1.2.3.4", 65536 + 80).getPort(), 80);
}

TEST(InternetAddress, KeepsPortAndAddressInNetworkByteOrder) {
    InternetAddress const address("1.2.3.4", 0x1234);
    unsigned char const port[] = {0x12, 0x34};
    unsigned char const number[] = {1, 2, 3, 4};
    EXPECT_EQ(std::memcmp(&address.sockAddr().sin_port, port, sizeof port), 0);
    EXPECT_EQ(std::memcmp(&address.sockAddr().sin_addr, number, sizeof number), 0);
}

void expectEqual(bool expected, InternetAddress const & left, InternetAddress const & right) {
    EXPECT_EQ(left == right, expected);
    EXPECT_EQ(right == left, expected);
    EXPECT_EQ(left != right, !expected);
    EXPECT_EQ(right != left, !expected);
}

TEST(InternetAddress, ComparesAddressAndPortOnly) {
    InternetAddress const address("1.2.3.4", 80);
    expectEqual(true, address, InternetAddress("1.2.3.4", 80));
    expectEqual(true, address, structure(AF_INET, 80, inNetworkOrder(1, 2, 3, 4)));
    expectEqual(true, address, structure(AF_INET6, 80, inNetworkOrder(1, 2, 3, 4)));
    expectEqual(false, address, InternetAddress("1.2.3.4", 81));
    expectEqual(false, address, InternetAddress("1.2.3.5", 80));
    expectEqual(false, address, InternetAddress("2.2.3.4", 80));
}

}  // namespace
}  // namespace tvk
