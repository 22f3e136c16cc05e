#include "bench/Corpus.h"
#include "bench/Rows.h"

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

using TreeSums = std::vector<std::uint64_t>;

template <class Documents>
TreeSums treeSums(Reader & reader, Documents const & documents) {
    TreeSums sums;
    for (std::string_view const document : documents) {
        sums.push_back(reader.sum(document));
    }
    return sums;
}

std::shared_ptr<Lazy<TreeSums>> wantedTreeSums(Peers const & peers, Corpus const & corpus) {
    return std::make_shared<Lazy<TreeSums>>(
        [&] { return treeSums(*peers.readers.front().make(), corpus.documents()); });
}

void addReadRows(Peers const & peers, Corpus const & corpus) {
    auto const wanted = wantedTreeSums(peers, corpus);
    for (Peer<Reader> const & peer : peers.readers) {
        if (peer.japaneseOnly && &corpus != &tradingCorpus()) {
            continue;
        }
        addRow("read/" + corpus.name() + '/' + peer.name, [&, wanted](benchmark::State & state) {
            TreeSums const & sums = wanted->get();
            auto const reader = peer.make();
            requireAgreement(treeSums(*reader, corpus.documents()) == sums);
            timePasses(state, sizeOf(corpus), [&] {
                for (std::string_view const document : corpus.documents()) {
                    reader->read(document);
                }
            });
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
    auto const wanted = wantedTreeSums(peers, corpus);
    auto const bytes = std::make_shared<Lazy<std::size_t>>([&] {
        auto const writer = peers.writers.front().make();
        writer->load(corpus.documents());
        return textsOf(*writer, corpus).bytes();
    });
    for (Peer<Writer> const & peer : peers.writers) {
        if (peer.japaneseOnly && &corpus != &tradingCorpus()) {
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
                   requireAgreement(treeSums(*judge, texts.documents()) == sums);
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
        addReadRows(peers, *corpus);
    }
    for (Corpus const * const corpus : corpora()) {
        addWriteRows(peers, *corpus);
    }
}

}  // namespace tvk::bench
