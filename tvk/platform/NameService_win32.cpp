#include <winsock2.h>

#include <cstring>

#include "tvk/platform/NameService.h"

namespace tvk::platform {

int resolveHost(char const * host, std::uint32_t * address) {
    if (host == nullptr) {
        return WSAHOST_NOT_FOUND;
    }
    unsigned long const number = inet_addr(host);
    if (number != INADDR_NONE) {
        *address = number;
        return 0;
    }
    // 255.255.255.255 reads as "no number" above and comes here too. The answer is per thread.
    hostent const * const answer = gethostbyname(host);
    if (answer == nullptr) {
        return WSAGetLastError();
    }
    if (answer->h_addrtype != AF_INET || answer->h_addr_list[0] == nullptr) {
        return WSANO_DATA;
    }
    std::memcpy(address, answer->h_addr_list[0], sizeof *address);
    return 0;
}

}  // namespace tvk::platform
