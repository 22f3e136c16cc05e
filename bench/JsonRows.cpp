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

/// Sums without hashes are compared by their counts alone.
bool agree(EventSum const & sum, EventSum const & wanted, bool withHashes) {
    return sum.events == wanted.events && sum.textBytes == wanted.textBytes &&
           (!withHashes || sum.mix == wanted.mix);
}

void addScanRows(std::string const & work, std::vector<Peer<Scanner>> const & scanners,
                 CorpusSource source, bool withHashes) {
    auto const wanted = std::make_shared<Lazy<EventSum>>(
        [&scanners, source] { return scanAll(*scanners.front().make(), source.get()); });
    for (Peer<Scanner> const & peer : scanners) {
        addRow(work + '/' + source.name, peer.name, [&, source, wanted, withHashes]() -> TimedWork {
            Corpus const & corpus = source.get();
            std::shared_ptr<Scanner> const scanner = peer.make();
            requireAgreement(agree(scanAll(*scanner, corpus), wanted->get(), withHashes));
            return {sizeOf(corpus), [scanner, &corpus] { keep(scanAll(*scanner, corpus)); }};
        });
    }
}

/// All texts of a writer.
Corpus textsOf(Writer & writer, Corpus const & corpus) {
    writer.begin();
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < corpus.documents().size(); ++i) {
        texts.emplace_back(writer.write(i));
    }
    return Corpus(corpus.name(), texts);
}

/// The bytes of a writer's row are those of the text that tvk writes, so that no peer gains by
/// writing more.
void addWriteRows(Peers const & peers, CorpusSource source) {
    auto const wanted = wantedTreeSums(peers.readers, source);
    auto const bytes = std::make_shared<Lazy<std::size_t>>([&peers, source] {
        auto const writer = peers.writers.front().make();
        writer->begin();
        writer->load(source.get().documents());
        return textsOf(*writer, source.get()).bytes();
    });
    for (Peer<Writer> const & peer : peers.writers) {
        if (sitsOut(peer, source)) {
            continue;
        }
        addRow(std::string("write/") + source.name, peer.name,
               [&, source, wanted, bytes]() -> TimedWork {
                   PassSize const size = {bytes->get(), source.get().documents().size()};
                   TreeSums const & sums = wanted->get();
                   std::shared_ptr<Writer> const writer = peer.make();
                   writer->begin();
                   writer->load(source.get().documents());
                   Corpus const texts = textsOf(*writer, source.get());
                   requireAgreement(treeSums(*peers.readers.front().make(), texts) == sums);
                   return {size,
                           [writer, size] {
                               for (std::size_t i = 0; i < size.documents; ++i) {
                                   keep(writer->write(i));
                               }
                           },
                           [writer] { writer->begin(); }};
               });
    }
}

}  // namespace

void addJsonRows(Peers const & peers) {
    for (CorpusSource const corpus : corpora()) {
        addScanRows("scan", peers.scanners, corpus, true);
    }
    for (CorpusSource const corpus : corpora()) {
        addScanRows("scan_nohash", peers.plainScanners, corpus, false);
    }
    for (CorpusSource const corpus : corpora()) {
        addReadRows("read", peers.readers, corpus);
    }
    for (CorpusSource const corpus : corpora()) {
        addWriteRows(peers, corpus);
    }
}

}  // namespace tvk::bench
