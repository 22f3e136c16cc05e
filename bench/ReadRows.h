#pragma once

#include <memory>
#include <string>
#include <vector>

#include "bench/Corpus.h"
#include "bench/Rows.h"

namespace tvk::bench {

using TreeSums = std::vector<std::uint64_t>;

/// What the reader's trees of all documents hold.
TreeSums treeSums(Reader & reader, Corpus const & corpus);

/// The same by the first reader, made when it is first asked for. `readers` must outlive it.
std::shared_ptr<Lazy<TreeSums>> wantedTreeSums(std::vector<Peer<Reader>> const & readers,
                                               CorpusSource corpus);

/// True for a peer that keeps only texts of the code page 932, and a corpus that may hold others.
template <class Work>
bool sitsOut(Peer<Work> const & peer, CorpusSource corpus) {
    return peer.japaneseOnly && corpus.get != tradingCorpus;
}

/// Registers the rows work/corpus/reader of documents that are read one after the other.
void addReadRows(std::string const & work, std::vector<Peer<Reader>> const & readers,
                 CorpusSource corpus);

}  // namespace tvk::bench
