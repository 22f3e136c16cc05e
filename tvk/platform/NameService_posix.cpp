#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <vector>

#include "tvk/platform/NameService.h"

namespace tvk::platform {

namespace {

constexpr int ERROR_BASE = 11000;  // these systems have no socket error numbers for host names
constexpr std::size_t FIRST_ROOM = 1024;
constexpr std::size_t LARGEST_ROOM = std::size_t(1) << 20;

int errorNumber(int hostError) {
    // Errors of the system itself come as numbers of 0 and below.
    return ERROR_BASE + (hostError > 0 ? hostError : NO_RECOVERY);
}

int askNameService(char const * host, std::uint32_t * address) {
    std::vector<char> room(FIRST_ROOM);
    for (;;) {
        hostent entry{};
        hostent * answer = nullptr;
        int hostError = 0;
        int const status =
            gethostbyname_r(host, &entry, room.data(), room.size(), &answer, &hostError);
        if (status == ERANGE && room.size() < LARGEST_ROOM) {
            room.resize(room.size() * 2);
            continue;
        }
        if (status != 0 || answer == nullptr) {
            return errorNumber(hostError);
        }
        if (answer->h_addrtype != AF_INET || answer->h_addr_list[0] == nullptr) {
            return errorNumber(NO_DATA);
        }
        std::memcpy(address, answer->h_addr_list[0], sizeof *address);
        return 0;
    }
}

}  // namespace

int resolveHost(char const * host, std::uint32_t * address) {
    if (host == nullptr) {
        return errorNumber(HOST_NOT_FOUND);
    }
    in_addr_t const number = inet_addr(host);
    if (number != INADDR_NONE) {
        *address = number;
        return 0;
    }
    // 255.255.255.255 reads as "no number" above and comes here too.
    return askNameService(host, address);
}

}  // namespace tvk::platform
