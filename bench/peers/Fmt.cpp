#include <fmt/compile.h>
#include <fmt/format.h>

#include "bench/peers/EachItem.h"
#include "bench/peers/LocalTime.h"
#include "bench/peers/Peers.h"

namespace tvk::bench {

namespace {

/// `Write` puts the arguments at a place and returns the place behind them.
template <class Write>
class FmtFormatter {
public:
    std::string_view operator()(timeval const & time) {
        std::tm const local = localTime(time);
        char const * const end =
            Write()(room_, local.tm_year + 1900, '/', local.tm_mon + 1, '/', local.tm_mday,
                    local.tm_hour, local.tm_min, local.tm_sec, time.tv_usec / 1000);
        return {room_, static_cast<std::size_t>(end - room_)};
    }

private:
    char room_[128];
};

#define TVK_BENCH_DATE "{:04}{}{:02}{}{:02} {:02}:{:02}:{:02}.{:03}"

/// The format is looked through at each call.
struct Plain {
    template <class... Arguments>
    char * operator()(char * room, Arguments... arguments) const {
        return fmt::format_to(room, TVK_BENCH_DATE, arguments...);
    }
};

/// The format is compiled with the program.
struct Compiled {
    template <class... Arguments>
    char * operator()(char * room, Arguments... arguments) const {
        return fmt::format_to(room, FMT_COMPILE(TVK_BENCH_DATE), arguments...);
    }
};

#undef TVK_BENCH_DATE

}  // namespace

void addFmt(Peers & peers) {
    addFunction<FmtFormatter<Plain>>(peers.dateFormatters, "localtime_fmt");
    addFunction<FmtFormatter<Compiled>>(peers.dateFormatters, "localtime_fmt_compiled");
    peers.libraries.push_back(
        "{fmt} " + dotted(FMT_VERSION / 10000, FMT_VERSION / 100 % 100, FMT_VERSION % 100));
}

}  // namespace tvk::bench
