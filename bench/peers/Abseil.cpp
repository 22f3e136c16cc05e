#include <absl/base/config.h>
#include <absl/container/flat_hash_map.h>
#include <absl/strings/escaping.h>
#include <absl/time/civil_time.h>
#include <absl/time/time.h>

#include "bench/peers/EachItem.h"
#include "bench/peers/MapInterner.h"
#include "bench/peers/Peers.h"

namespace tvk::bench {

namespace {

absl::string_view viewOf(std::string_view text) { return {text.data(), text.size()}; }

class Base64IntoRoom {
public:
    std::string_view operator()(std::string_view bytes) {
        absl::Base64Escape(viewOf(bytes), &room_);
        return room_;
    }

private:
    std::string room_;
};

struct Base64 {
    std::string operator()(std::string_view bytes) const {
        return absl::Base64Escape(viewOf(bytes));
    }
};

struct Hex {
    std::string operator()(std::string_view bytes) const {
        return absl::BytesToHexString(viewOf(bytes));
    }
};

absl::TimeZone tokyo() {
    absl::TimeZone zone;
    absl::LoadTimeZone("Asia/Tokyo", &zone);
    return zone;
}

/// The digits by hand, the calendar by Abseil.
class CivilParser {
public:
    std::int64_t operator()(std::string_view text) const {
        absl::CivilSecond const second(number(text, 0, 4), number(text, 5, 2), number(text, 8, 2),
                                       number(text, 11, 2), number(text, 14, 2),
                                       number(text, 17, 2));
        return absl::ToUnixMicros(absl::FromCivil(second, zone_)) + number(text, 20, 3) * 1000;
    }

private:
    static int number(std::string_view text, std::size_t at, std::size_t digits) {
        int value = 0;
        for (char const digit : text.substr(at, digits)) {
            value = value * 10 + (digit - '0');
        }
        return value;
    }

    absl::TimeZone zone_ = tokyo();
};

class TimeFormatter {
public:
    std::string operator()(timeval const & time) const {
        return absl::FormatTime("%Y/%m/%d %H:%M:%E3S", absl::TimeFromTimeval(time), zone_);
    }

private:
    absl::TimeZone zone_ = tokyo();
};

template <class Hash>
using FlatMap = MapInterner<absl::flat_hash_map<TextKey, ValuePtr, Hash, SameText>>;

struct AbslHash {
    std::size_t operator()(std::string_view text) const {
        return absl::Hash<absl::string_view>()(viewOf(text));
    }
};

}  // namespace

void addAbseil(Peers & peers) {
    addFunction<Base64IntoRoom>(peers.base64Encoders, "abseil");
    addFunction<Base64>(peers.base64Encoders, "abseil_string");
    addFunction<Hex>(peers.hexEncoders, "abseil_string");
    addFunction<CivilParser>(peers.dateParsers, "abseil_civil");
    addFunction<TimeFormatter>(peers.dateFormatters, "abseil");
    addPeer<FlatMap<GivenHash>>(peers.interners, "abseil_flat_map");
    addPeer<FlatMap<OwnHash<AbslHash>>>(peers.hashingInterners, "abseil_flat_map");
    peers.libraries.push_back("Abseil " + std::to_string(ABSL_LTS_RELEASE_VERSION));
}

}  // namespace tvk::bench
