#include <stdexcept>

#include "bench/ReadRows.h"
#include "tests/support/HeapUse.h"

namespace tvk::bench {

namespace {

void requireWatchedHeap() {
    if (!test::HeapUse::available()) {
        throw std::runtime_error("the heap is not watched in this build");
    }
}

/// What the messages of the feed take while all are kept, and beside them what reads them.
Figures measureKept(Peer<Keeper> const & peer, TreeSums const & wanted) {
    std::vector<std::string_view> const & documents = tradingCorpus().documents();
    test::HeapUse const use;
    auto const keeper = peer.make();
    keeper->reserve(documents.size());
    for (std::string_view const document : documents) {
        keeper->add(document);
    }
    auto const all = static_cast<double>(use.bytes());
    keeper->endFeed();
    auto const bytes = static_cast<double>(use.bytes());
    auto const blocks = static_cast<double>(use.blocks());
    TreeSums sums;
    for (std::size_t i = 0; i < documents.size(); ++i) {
        sums.push_back(keeper->sum(i));
    }
    requireAgreement(sums == wanted);
    auto const count = static_cast<double>(documents.size());
    return {{"bytes_a_message", bytes / count},
            {"blocks_a_message", blocks / count},
            {"reader_bytes", all - bytes}};
}

/// The most that a reader and its trees take at a time.
Figures measurePeak(Peer<Reader> const & peer, Corpus const & corpus) {
    test::HeapUse const use;
    auto const reader = peer.make();
    reader->begin();
    auto const unused = static_cast<double>(use.bytes());
    for (std::string_view const document : corpus.documents()) {
        reader->read(document);
    }
    return {{"peak_bytes", static_cast<double>(use.peak())},
            {"reader_bytes", unused},
            {"text_bytes", static_cast<double>(corpus.longest())}};
}

}  // namespace

void addMemoryRows(Peers const & peers) {
    auto const wanted = wantedTreeSums(peers.readers, corpora().front());
    for (Peer<Keeper> const & peer : peers.keepers) {
        addMeasuredRow("memory/trading", peer.name, [&, wanted] {
            requireWatchedHeap();
            TreeSums const & sums = wanted->get();
            return measureKept(peer, sums);
        });
    }
    for (CorpusSource const source : corpora()) {
        for (Peer<Reader> const & peer : peers.readers) {
            if (sitsOut(peer, source) || peer.make()->hasSizedPool()) {
                continue;
            }
            addMeasuredRow(std::string("peak/") + source.name, peer.name, [&, source] {
                requireWatchedHeap();
                return measurePeak(peer, source.get());
            });
        }
    }
}

}  // namespace tvk::bench
