#pragma once

#include <cstdint>
#include <cstring>

namespace tvk::test {

/// The address a.b.c.d, as it is stored in a `sockaddr_in`.
inline std::uint32_t inNetworkOrder(unsigned a, unsigned b, unsigned c, unsigned d) {
    unsigned char const bytes[] = {static_cast<unsigned char>(a), static_cast<unsigned char>(b),
                                   static_cast<unsigned char>(c), static_cast<unsigned char>(d)};
    std::uint32_t address = 0;
    std::memcpy(&address, bytes, sizeof address);
    return address;
}

}  // namespace tvk::test
