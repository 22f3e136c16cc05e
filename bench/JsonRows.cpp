#include "bench/ReadRows.h"

namespace tvk::bench {

namespace {

PassSize sizeOf(Corpus const & corpus) { return {corpus.bytes(), corpus.documents().size()}; }

EventSum scanAll(Scanner & scanner, Corpus const & corpus) {
    EventSum sum;
    for (std::string_view const document : corpus.documents()) {
        scanner.scan(document, sum);
    }
    return sum;
}

bool agree(EventSum const & sum, EventSum const & wanted, bool hashes) {
    return sum.events == wanted.events && sum.textBytes == wanted.textBytes &&
           (!hashes || sum.mix == wanted.mix);
}

void addScanRows(Peers const & peers, Corpus const & corpus) {
    auto const wanted = std::make_shared<Lazy<EventSum>>(
        [&] { return scanAll(*peers.scanners.front().make(), corpus); });
    for (Peer<Scanner> const & peer : peers.scanners) {
        addRow("scan/" + corpus.name() + '/' + peer.name, [&, wanted](benchmark::State & state) {
            auto const scanner = peer.make();
            requireAgreement(agree(scanAll(*scanner, corpus), wanted->get(), scanner->hashes()));
            timePasses(state, sizeOf(corpus),
                       [&] { benchmark::DoNotOptimize(scanAll(*scanner, corpus)); });
        });
    }
}

/// All texts of a writer.
Corpus textsOf(Writer & writer, Corpus const & corpus) {
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < corpus.documents().size(); ++i) {
        texts.emplace_back(writer.write(i));
    }
    return Corpus(corpus.name(), texts);
}

/// The bytes of a writer's row are those of the text that tvk writes, so that no peer gains by
/// writing more.
void addWriteRows(Peers const & peers, Corpus const & corpus) {
    auto const wanted = wantedTreeSums(peers.readers, corpus);
    auto const bytes = std::make_shared<Lazy<std::size_t>>([&] {
        auto const writer = peers.writers.front().make();
        writer->load(corpus.documents());
        return textsOf(*writer, corpus).bytes();
    });
    for (Peer<Writer> const & peer : peers.writers) {
        if (sitsOut(peer, corpus)) {
            continue;
        }
        addRow("write/" + corpus.name() + '/' + peer.name,
               [&, wanted, bytes](benchmark::State & state) {
                   PassSize const size = {bytes->get(), corpus.documents().size()};
                   TreeSums const & sums = wanted->get();
                   auto const writer = peer.make();
                   writer->load(corpus.documents());
                   Corpus const texts = textsOf(*writer, corpus);
                   auto const judge = peers.readers.front().make();
                   requireAgreement(treeSums(*judge, texts) == sums);
                   timePasses(state, size, [&] {
                       for (std::size_t i = 0; i < size.documents; ++i) {
                           benchmark::DoNotOptimize(writer->write(i));
                       }
                   });
               });
    }
}

}  // namespace

void addJsonRows(Peers const & peers) {
    for (Corpus const * const corpus : corpora()) {
        addScanRows(peers, *corpus);
    }
    for (Corpus const * const corpus : corpora()) {
        addReadRows("read", peers.readers, *corpus);
    }
    for (Corpus const * const corpus : corpora()) {
        addWriteRows(peers, *corpus);
    }
}

}  // namespace tvk::bench
