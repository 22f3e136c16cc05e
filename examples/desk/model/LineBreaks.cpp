#include "examples/desk/model/LineBreaks.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <vector>

namespace desk {

namespace {

constexpr std::string_view NOT_AT_START[] = {"、", "。", "，", "．", "・", "：", "；", "？", "！",
                                             "」", "』", "）", "】", "〉", "》", "ー", "々", "％",
                                             "ぁ", "ぃ", "ぅ", "ぇ", "ぉ", "っ", "ゃ", "ゅ", "ょ",
                                             "ァ", "ィ", "ゥ", "ェ", "ォ", "ッ", "ャ", "ュ", "ョ"};
constexpr std::string_view NOT_AT_END[] = {"「", "『", "（", "【", "〈", "《"};

template <class Characters>
bool isOneOf(Characters const & characters, std::string_view character) {
    return std::find(std::begin(characters), std::end(characters), character) !=
           std::end(characters);
}

std::size_t sizeOfCharacter(std::string_view text) {
    std::size_t size = 1;
    if (static_cast<unsigned char>(text[0]) >= 0xc0) {
        while (size < text.size() && (static_cast<unsigned char>(text[size]) & 0xc0U) == 0x80U) {
            ++size;
        }
    }
    return size;
}

bool isPrintedAscii(std::string_view character) {
    auto const byte = static_cast<unsigned char>(character[0]);
    return byte > ' ' && byte < 0x7f;
}

bool mayBreakBetween(std::string_view left, std::string_view right) {
    bool const isInsideWord = isPrintedAscii(left) && isPrintedAscii(right);
    return !isInsideWord && !isOneOf(NOT_AT_END, left) && !isOneOf(NOT_AT_START, right);
}

/// Cuts one line of text at each place where it may break.
std::vector<std::string_view> piecesOf(std::string_view line) {
    std::vector<std::string_view> pieces;
    std::size_t begin = 0;
    std::string_view before;
    for (std::size_t at = 0; at < line.size();) {
        std::string_view const character = line.substr(at, sizeOfCharacter(line.substr(at)));
        if (!before.empty() && mayBreakBetween(before, character)) {
            pieces.push_back(line.substr(begin, at - begin));
            begin = at;
        }
        before = character;
        at += character.size();
    }
    pieces.push_back(line.substr(begin));
    return pieces;
}

std::string withoutTrailingBlanks(std::string const & line) {
    return line.substr(0, line.find_last_not_of(' ') + 1);
}

}  // namespace

std::string brokenIntoLines(std::string_view text, double width,
                            std::function<double(std::string_view)> const & widthOf) {
    std::string result;
    for (std::size_t begin = 0; begin <= text.size();) {
        std::size_t const end = std::min(text.find('\n', begin), text.size());
        std::string line;
        for (std::string_view const piece : piecesOf(text.substr(begin, end - begin))) {
            if (!line.empty() && widthOf(line + std::string(piece)) > width && piece != " ") {
                result += withoutTrailingBlanks(line) + '\n';
                line.clear();
            }
            line += piece;
        }
        result += line;
        result += end < text.size() ? "\n" : "";
        begin = end + 1;
    }
    return result;
}

}  // namespace desk
