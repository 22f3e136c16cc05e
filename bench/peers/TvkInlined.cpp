#include "bench/peers/TvkInlined.h"

#include "tvk/text/detail/Utf8Codec.h"

namespace tvk::bench {

namespace {

struct BadUtf8 {
    explicit BadUtf8(char const *) {}
};

class InlinedUtf8 : public Utf8Decoder {
public:
    std::uint64_t decode(std::string_view text) override {
        using Codec = detail::Utf8Codec<BadUtf8>;
        std::uint64_t sum = 0;
        auto const length = static_cast<unsigned int>(text.size());
        for (unsigned int at = 0; at < length;) {
            detail::Utf8Sequence const character = Codec::checked(text.data(), length, at);
            sum += static_cast<std::uint64_t>(character.codePoint);
            at += character.size;
        }
        return sum;
    }
    bool counts() const override { return false; }
    std::size_t count(std::string_view) override { return 0; }
};

}  // namespace

std::unique_ptr<Utf8Decoder> makeInlinedUtf8Decoder() { return std::make_unique<InlinedUtf8>(); }

}  // namespace tvk::bench
