#include "bench/ReadRows.h"

namespace tvk::bench {

TreeSums treeSums(Reader & reader, Corpus const & corpus) {
    TreeSums sums;
    for (std::string_view const document : corpus.documents()) {
        sums.push_back(reader.sum(document));
    }
    return sums;
}

std::shared_ptr<Lazy<TreeSums>> wantedTreeSums(std::vector<Peer<Reader>> const & readers,
                                               Corpus const & corpus) {
    return std::make_shared<Lazy<TreeSums>>(
        [&] { return treeSums(*readers.front().make(), corpus); });
}

void addReadRows(std::string const & work, std::vector<Peer<Reader>> const & readers,
                 Corpus const & corpus) {
    auto const wanted = wantedTreeSums(readers, corpus);
    for (Peer<Reader> const & peer : readers) {
        if (sitsOut(peer, corpus)) {
            continue;
        }
        addRow(work + '/' + corpus.name() + '/' + peer.name, [&, wanted](benchmark::State & state) {
            TreeSums const & sums = wanted->get();
            auto const reader = peer.make();
            requireAgreement(treeSums(*reader, corpus) == sums);
            timePasses(state, {corpus.bytes(), corpus.documents().size()}, [&] {
                for (std::string_view const document : corpus.documents()) {
                    reader->read(document);
                }
            });
        });
    }
}

}  // namespace tvk::bench
