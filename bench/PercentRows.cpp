#include <random>

#include "bench/RandomBlocks.h"
#include "bench/TextSamples.h"

namespace tvk::bench {

namespace {

constexpr std::size_t QUERIES = 200;
constexpr std::size_t JAPANESE_BYTES = 240;

/// What a client asks a back end, about 110 bytes: a tenth of them are written with '%'.
std::vector<std::string> queries() {
    std::mt19937 random(20140102);
    std::uniform_int_distribution<int> number(1301, 9999);
    std::vector<std::string> texts;
    while (texts.size() < QUERIES) {
        std::string const code = std::to_string(number(random));
        texts.push_back("symbol=" + code + ".T&side=buy&quantity=" +
                        std::to_string(number(random)) + "&price=1764.5&account=A-" + code +
                        "/main&note=good till 15:00, then cancel&time=09:30:01");
    }
    return texts;
}

/// Names of shares, joined to texts of some length.
std::vector<std::string> japanese() {
    std::vector<std::string> texts;
    std::string text;
    for (std::string_view const name : shortTexts().documents()) {
        text += name;
        if (text.size() >= JAPANESE_BYTES) {
            texts.push_back(std::exchange(text, {}));
        }
        if (texts.size() == QUERIES) {
            break;
        }
    }
    return texts;
}

/// The value of a digit; tvk's first digits of bytes of 0x80 and above are "()*+,-./".
int digitValue(char digit) {
    if (digit >= '(' && digit <= '/') {
        return digit - '(' + 8;
    }
    return digit <= '9' ? digit - '0' : digit - 'A' + 10;
}

/// What an encoded text stands for, so that the forms of a blank and of digits do not matter.
std::string meaningOf(std::string const & encoded) {
    std::string text;
    for (std::size_t i = 0; i < encoded.size(); ++i) {
        if (encoded[i] == '%') {
            text += static_cast<char>(digitValue(encoded[i + 1]) * 16 + digitValue(encoded[i + 2]));
            i += 2;
        } else {
            text += encoded[i] == '+' ? ' ' : encoded[i];
        }
    }
    return text;
}

/// As browsers encode it: a blank is "%20".
std::string encoded(std::string const & text) {
    constexpr std::string_view COPIED =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_.~";
    constexpr char DIGITS[] = "0123456789ABCDEF";
    std::string result;
    for (char const c : text) {
        if (COPIED.find(c) != std::string_view::npos) {
            result += c;
        } else {
            auto const byte = static_cast<unsigned char>(c);
            result += {'%', DIGITS[byte >> 4], DIGITS[byte & 15]};
        }
    }
    return result;
}

std::vector<std::string> allEncoded(std::vector<std::string> texts) {
    std::transform(texts.begin(), texts.end(), texts.begin(), encoded);
    return texts;
}

}  // namespace

void addPercentRows(Peers const & peers) {
    struct Sample {
        char const * name;
        std::vector<std::string> (*texts)();
    };
    for (Sample const sample : {Sample{"query", queries}, Sample{"japanese", japanese}}) {
        addItemRows<std::string_view, std::string>(
            std::string("percent_encode/") + sample.name, peers.percentEncoders,
            [sample] { return listOf(sample.name, sample.texts()); }, meaningOf);
        addItemRows<std::string_view, std::string>(
            std::string("percent_decode/") + sample.name, peers.percentDecoders,
            [sample] { return listOf(sample.name, allEncoded(sample.texts())); });
    }
}

}  // namespace tvk::bench
