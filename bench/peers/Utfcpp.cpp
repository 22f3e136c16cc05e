#include <utf8.h>

#include "bench/peers/Peers.h"

namespace tvk::bench {

namespace {

class CheckedDecoder : public Utf8Decoder {
public:
    std::uint64_t decode(std::string_view text) override {
        std::uint64_t sum = 0;
        char const * at = text.data();
        char const * const end = at + text.size();
        while (at != end) {
            sum += utf8::next(at, end);
        }
        return sum;
    }
    std::size_t count(std::string_view text) override {
        return static_cast<std::size_t>(
            utf8::unchecked::distance(text.data(), text.data() + text.size()));
    }
};

}  // namespace

void addUtfcpp(Peers & peers) {
    addPeer<CheckedDecoder>(peers.utf8Decoders, "utfcpp");
    peers.libraries.push_back("utfcpp");
}

}  // namespace tvk::bench
