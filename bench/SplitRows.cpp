#include <random>

#include "bench/ItemRows.h"

namespace tvk::bench {

namespace {

constexpr std::size_t TEXTS = 100;

struct Sample {
    char const * name;
    char delimiter;
    std::size_t pieces;
    std::size_t longestPiece;
};

ItemList<SplitTask> tasksOf(Sample sample) {
    std::mt19937 random(20140102);
    std::uniform_int_distribution<std::size_t> length(1, sample.longestPiece);
    std::uniform_int_distribution<int> letter('a', 'z');
    ItemList<SplitTask> list{{}, 0};
    while (list.items.size() < TEXTS) {
        std::string text;
        for (std::size_t piece = 0; piece < sample.pieces; ++piece) {
            text.append(piece == 0 ? 0 : 1, sample.delimiter);
            for (std::size_t left = length(random); left > 0; --left) {
                text += static_cast<char>(letter(random));
            }
        }
        list.bytes += text.size();
        list.items.push_back({text, {sample.delimiter}, text.c_str(), CString(sample.delimiter)});
    }
    return list;
}

}  // namespace

void addSplitRows(Peers const & peers) {
    for (Sample const sample :
         {Sample{"line_of_20", ',', 20, 11}, Sample{"path_of_4", '/', 4, 11}}) {
        addItemRows<SplitTask, std::vector<std::string>>(std::string("split/") + sample.name,
                                                         peers.splitters,
                                                         [sample] { return tasksOf(sample); });
    }
}

}  // namespace tvk::bench
