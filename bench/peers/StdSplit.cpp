#include "bench/peers/EachItem.h"
#include "bench/peers/Peers.h"

namespace tvk::bench {

namespace {

template <class Delimiter>
std::vector<std::string> piecesOf(std::string const & text, Delimiter const & delimiter,
                                  std::size_t delimiterLength) {
    std::vector<std::string> pieces;
    std::size_t start = 0;
    for (std::size_t end = text.find(delimiter); end != std::string::npos;
         end = text.find(delimiter, start)) {
        pieces.push_back(text.substr(start, end - start));
        start = end + delimiterLength;
    }
    pieces.push_back(text.substr(start));
    return pieces;
}

struct AtText {
    std::vector<std::string> operator()(SplitTask const & task) const {
        return piecesOf(task.text, task.delimiter, task.delimiter.size());
    }
};

struct AtCharacter {
    std::vector<std::string> operator()(SplitTask const & task) const {
        return piecesOf(task.text, task.delimiter.front(), 1);
    }
};

}  // namespace

void addStdSplit(Peers & peers) {
    addFunction<AtText>(peers.splitters, "std_find_text");
    addFunction<AtCharacter>(peers.splitters, "std_find_char");
}

}  // namespace tvk::bench
