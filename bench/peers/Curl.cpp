#include <curl/curl.h>

#include <memory>

#include "bench/peers/EachItem.h"
#include "bench/peers/Peers.h"

namespace tvk::bench {

namespace {

/// A text that libcurl allocates.
class CurlText {
public:
    CurlText(char * text, std::size_t length) : text_(text), length_(length) {}

    char const * begin() const { return text_.get(); }
    char const * end() const { return text_.get() + length_; }

private:
    struct Free {
        void operator()(char * text) const { curl_free(text); }
    };

    std::unique_ptr<char, Free> text_;
    std::size_t length_;
};

/// Writes a blank as "%20".
struct CurlEncoder {
    CurlText operator()(std::string_view text) const {
        char * const result = curl_easy_escape(nullptr, text.data(), static_cast<int>(text.size()));
        return {result, std::char_traits<char>::length(result)};
    }
};

/// Leaves a '+' as it is.
struct CurlDecoder {
    CurlText operator()(std::string_view text) const {
        int length = 0;
        char * const result =
            curl_easy_unescape(nullptr, text.data(), static_cast<int>(text.size()), &length);
        return {result, static_cast<std::size_t>(length)};
    }
};

}  // namespace

void addCurl(Peers & peers) {
    addFunction<CurlEncoder>(peers.percentEncoders, "curl_string");
    addFunction<CurlDecoder>(peers.percentDecoders, "curl_string");
    peers.libraries.push_back("libcurl " LIBCURL_VERSION);
}

}  // namespace tvk::bench
