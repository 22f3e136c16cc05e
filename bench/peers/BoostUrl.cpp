#include <boost/url/encode.hpp>
#include <boost/url/grammar/alnum_chars.hpp>
#include <boost/url/grammar/lut_chars.hpp>
#include <boost/url/pct_string_view.hpp>
#include <boost/version.hpp>

#include "bench/peers/EachItem.h"
#include "bench/peers/Peers.h"

namespace tvk::bench {

namespace {

namespace bu = boost::urls;

// What tvk copies: all that RFC 3986 leaves unreserved, but 'Z'.
constexpr auto COPIED =
    bu::grammar::lut_chars("ABCDEFGHIJKLMNOPQRSTUVWXYabcdefghijklmnopqrstuvwxyz0123456789-_.~");

bu::encoding_opts const FORM(true);

class EncoderIntoRoom {
public:
    std::string_view operator()(std::string_view text) {
        if (room_.size() < text.size() * 3) {
            room_.resize(text.size() * 3);
        }
        std::size_t const length =
            bu::encode(room_.data(), room_.size(), {text.data(), text.size()}, COPIED, FORM);
        return {room_.data(), length};
    }

private:
    std::string room_;
};

/// Measures the result before it makes it.
struct StringEncoder {
    std::string operator()(std::string_view text) const {
        return bu::encode({text.data(), text.size()}, COPIED, FORM);
    }
};

class DecoderIntoRoom {
public:
    std::string_view operator()(std::string_view text) {
        bu::pct_string_view(text.data(), text.size())
            .decode(FORM, bu::string_token::assign_to(room_));
        return room_;
    }

private:
    std::string room_;
};

struct StringDecoder {
    std::string operator()(std::string_view text) const {
        return bu::pct_string_view(text.data(), text.size()).decode(FORM);
    }
};

}  // namespace

void addBoostUrl(Peers & peers) {
    addFunction<EncoderIntoRoom>(peers.percentEncoders, "boost_url");
    addFunction<StringEncoder>(peers.percentEncoders, "boost_url_string");
    addFunction<DecoderIntoRoom>(peers.percentDecoders, "boost_url");
    addFunction<StringDecoder>(peers.percentDecoders, "boost_url_string");
    peers.libraries.push_back(std::string("Boost.URL ") + BOOST_LIB_VERSION);
}

}  // namespace tvk::bench
