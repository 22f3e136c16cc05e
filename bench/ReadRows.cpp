#include "bench/ReadRows.h"

namespace tvk::bench {

TreeSums treeSums(Reader & reader, Corpus const & corpus) {
    reader.begin();
    TreeSums sums;
    for (std::string_view const document : corpus.documents()) {
        sums.push_back(reader.sum(document));
    }
    return sums;
}

std::shared_ptr<Lazy<TreeSums>> wantedTreeSums(std::vector<Peer<Reader>> const & readers,
                                               CorpusSource corpus) {
    return std::make_shared<Lazy<TreeSums>>(
        [&readers, corpus] { return treeSums(*readers.front().make(), corpus.get()); });
}

void addReadRows(std::string const & work, std::vector<Peer<Reader>> const & readers,
                 CorpusSource source) {
    auto const wanted = wantedTreeSums(readers, source);
    for (Peer<Reader> const & peer : readers) {
        if (sitsOut(peer, source)) {
            continue;
        }
        addRow(work + '/' + source.name, peer.name, [&, source, wanted]() -> TimedWork {
            Corpus const & corpus = source.get();
            std::shared_ptr<Reader> const reader = peer.make();
            requireAgreement(treeSums(*reader, corpus) == wanted->get());
            return {{corpus.bytes(), corpus.documents().size()},
                    [reader, &corpus] {
                        for (std::string_view const document : corpus.documents()) {
                            reader->read(document);
                        }
                    },
                    [reader] { reader->begin(); }};
        });
    }
}

}  // namespace tvk::bench
