#include "tvk/inet/InternetAddress.h"

#include <cstdint>
#include <cstring>

#include "tvk/platform/NameService.h"

namespace tvk {

namespace {

constexpr char const * ANY_HOST = "*";

bool isAnyHost(char const * host) { return host != nullptr && std::strcmp(host, ANY_HOST) == 0; }

}  // namespace

InternetAddress::InternetAddress() { address_.sin_family = AF_INET; }

InternetAddress::InternetAddress(char const * host, int port) { resolveTo(host, port); }

InternetAddress::InternetAddress(int port) { resolveTo(ANY_HOST, port); }

InternetAddress::InternetAddress(sockaddr_in const & address) : address_(address) {
    std::memset(address_.sin_zero, 0, sizeof address_.sin_zero);
}

int InternetAddress::resolveTo(char const * host, int port) {
    address_.sin_family = AF_INET;
    address_.sin_port = htons(static_cast<std::uint16_t>(port));
    std::uint32_t number = 0;
    if (!isAnyHost(host)) {
        int const error = platform::resolveHost(host, &number);
        if (error != 0) {
            return error;
        }
    }
    address_.sin_addr.s_addr = number;
    return 0;
}

int InternetAddress::getPort() const { return ntohs(address_.sin_port); }

bool InternetAddress::operator==(InternetAddress const & other) const {
    return address_.sin_addr.s_addr == other.address_.sin_addr.s_addr &&
           address_.sin_port == other.address_.sin_port;
}

}  // namespace tvk
