#include <iconv.h>

#include <string>

#include "bench/peers/Peers.h"

namespace tvk::bench {

namespace {

/// Descriptors that stay open, and a room that is kept.
class IconvConverter : public CodePageConverter {
public:
    ~IconvConverter() override {
        iconv_close(toCodePage_);
        iconv_close(toUtf8_);
    }

    std::string_view toCodePage(std::string_view utf8) override {
        return convert(toCodePage_, utf8);
    }
    std::string_view toUtf8(std::string_view text) override { return convert(toUtf8_, text); }

private:
    std::string_view convert(iconv_t descriptor, std::string_view text) {
        if (room_.size() < text.size() * 3) {
            room_.resize(text.size() * 3);
        }
        char * input = const_cast<char *>(text.data());
        std::size_t inputLeft = text.size();
        char * output = room_.data();
        std::size_t outputLeft = room_.size();
        iconv(descriptor, &input, &inputLeft, &output, &outputLeft);
        return {room_.data(), room_.size() - outputLeft};
    }

    iconv_t toCodePage_ = iconv_open("CP932", "UTF-8");
    iconv_t toUtf8_ = iconv_open("UTF-8", "CP932");
    std::string room_;
};

}  // namespace

void addIconv(Peers & peers) { addPeer<IconvConverter>(peers.codePageConverters, "iconv"); }

}  // namespace tvk::bench
