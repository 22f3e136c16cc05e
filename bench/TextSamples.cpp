#include "bench/TextSamples.h"

#include <algorithm>

namespace tvk::bench {

namespace {

constexpr std::size_t LONG_TEXT = 64 * 1024;

bool isAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// The string values of the trading messages that are not ASCII.
std::vector<std::string> japaneseNames() {
    std::vector<std::string> names;
    forEachString(tradingCorpus(), [&names](std::uint32_t, std::string_view text) {
        if (!isAscii(text)) {
            names.emplace_back(text);
        }
    });
    return names;
}

}  // namespace

Corpus const & japaneseText() {
    static Corpus const TEXT = [] {
        std::vector<std::string> const names = japaneseNames();
        std::string text;
        for (std::size_t i = 0; !names.empty() && text.size() < LONG_TEXT; ++i) {
            text += names[i % names.size()];
        }
        return Corpus("japanese", {text});
    }();
    return TEXT;
}

Corpus const & mixedText() {
    static Corpus const TEXT = [] {
        std::string text;
        for (std::string_view const message : tradingCorpus().documents()) {
            if (!isAscii(message) && text.size() < LONG_TEXT) {
                text.append(message).append(1, '\n');
            }
        }
        return Corpus("messages", {text});
    }();
    return TEXT;
}

Corpus const & shortTexts() {
    static Corpus const TEXTS("names", japaneseNames());
    return TEXTS;
}

}  // namespace tvk::bench
