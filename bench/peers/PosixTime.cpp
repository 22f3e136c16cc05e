#include <gnu/libc-version.h>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "bench/peers/EachItem.h"
#include "bench/peers/LocalTime.h"
#include "bench/peers/Peers.h"

namespace tvk::bench {

namespace {

constexpr std::int64_t REFUSED = -1;

std::int64_t microsecondsAt(std::tm & local, std::int64_t milliseconds) {
    local.tm_isdst = -1;
    return static_cast<std::int64_t>(std::mktime(&local)) * 1000000 + milliseconds * 1000;
}

struct ScanfParser {
    std::int64_t operator()(std::string_view text) const {
        std::tm local{};
        int milliseconds = 0;
        if (std::sscanf(text.data(), "%04d/%02d/%02d %02d:%02d:%02d.%03d", &local.tm_year,
                        &local.tm_mon, &local.tm_mday, &local.tm_hour, &local.tm_min, &local.tm_sec,
                        &milliseconds) != 7) {
            return REFUSED;
        }
        local.tm_year -= 1900;
        local.tm_mon -= 1;
        return microsecondsAt(local, milliseconds);
    }
};

struct StrptimeParser {
    std::int64_t operator()(std::string_view text) const {
        std::tm local{};
        char const * const rest = strptime(text.data(), "%Y/%m/%d %H:%M:%S", &local);
        if (rest == nullptr || *rest != '.') {
            return REFUSED;
        }
        return microsecondsAt(local, std::strtol(rest + 1, nullptr, 10));
    }
};

class PrintfFormatter {
public:
    std::string_view operator()(timeval const & time) {
        std::tm const local = localTime(time);
        int const length = std::snprintf(
            room_, sizeof room_, "%04d%c%02d%c%02d %02d:%02d:%02d.%03d", local.tm_year + 1900, '/',
            local.tm_mon + 1, '/', local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec,
            static_cast<int>(time.tv_usec / 1000));
        return {room_, static_cast<std::size_t>(length)};
    }

private:
    char room_[128];
};

}  // namespace

void addPosixTime(Peers & peers) {
    addFunction<ScanfParser>(peers.dateParsers, "sscanf_mktime");
    addFunction<StrptimeParser>(peers.dateParsers, "strptime_mktime");
    addFunction<PrintfFormatter>(peers.dateFormatters, "localtime_snprintf");
    peers.libraries.push_back(std::string("glibc ") + gnu_get_libc_version());
}

}  // namespace tvk::bench
