#include <boost/locale/utf.hpp>
#include <boost/version.hpp>

#include "bench/peers/Peers.h"

namespace tvk::bench {

namespace {

class LocaleDecoder : public Utf8Decoder {
public:
    std::uint64_t decode(std::string_view text) override {
        std::uint64_t sum = 0;
        char const * at = text.data();
        char const * const end = at + text.size();
        while (at != end) {
            sum += boost::locale::utf::utf_traits<char>::decode(at, end);
        }
        return sum;
    }
    bool counts() const override { return false; }
    std::size_t count(std::string_view) override { return 0; }
};

}  // namespace

void addBoostLocale(Peers & peers) {
    addPeer<LocaleDecoder>(peers.utf8Decoders, "boost_locale");
    peers.libraries.push_back(std::string("Boost.Locale ") + BOOST_LIB_VERSION);
}

}  // namespace tvk::bench
