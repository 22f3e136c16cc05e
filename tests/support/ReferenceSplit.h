#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace tvk::test {

/// What splitting gives, byte by byte.
inline std::vector<std::string> referenceSplit(std::string const & text,
                                               std::string const & delimiter) {
    std::vector<std::string> pieces;
    std::string piece;
    for (std::size_t i = 0; i < text.size();) {
        if (delimiter.empty() || text.compare(i, delimiter.size(), delimiter) != 0) {
            piece += text[i++];
            continue;
        }
        if (i != 0) {
            pieces.push_back(piece);
        }
        piece.clear();
        i += delimiter.size();
    }
    pieces.push_back(piece);
    return pieces;
}

/// The text that the pieces came from, but for a delimiter at its very start, which leaves no trace.
inline std::string joined(std::vector<std::string> const & pieces, std::string const & delimiter) {
    std::string text = pieces.front();
    for (std::size_t i = 1; i < pieces.size(); ++i) {
        text += delimiter + pieces[i];
    }
    return text;
}

}  // namespace tvk::test
