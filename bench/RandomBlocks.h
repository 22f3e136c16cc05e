#pragma once

#include <algorithm>
#include <random>

#include "bench/Corpus.h"
#include "bench/ItemRows.h"

namespace tvk::bench {

/// Random bytes in blocks of one size.
struct BlockSample {
    char const * name;
    std::size_t blockSize;
    unsigned int highest = 0xFF;  ///< byte
};

/// The blocks of a pass, or one alone where it is larger than a pass.
inline std::vector<std::string> randomBlocks(BlockSample sample) {
    constexpr std::size_t PASS_BYTES = 16 * 1024;  // stays in the first cache with its results
    std::mt19937 random(20140102);
    std::uniform_int_distribution<unsigned int> byte(0, sample.highest);
    std::vector<std::string> blocks(std::max<std::size_t>(PASS_BYTES / sample.blockSize, 1));
    for (std::string & block : blocks) {
        block.resize(sample.blockSize);
        std::generate(block.begin(), block.end(), [&] { return static_cast<char>(byte(random)); });
    }
    return blocks;
}

inline ItemList<std::string_view> listOf(std::string const & name, std::vector<std::string> texts) {
    auto const corpus = std::make_shared<Corpus const>(name, std::move(texts));
    return {corpus->documents(), corpus->bytes(), corpus};
}

inline ItemList<std::string_view> blocksOf(BlockSample sample) {
    return listOf(sample.name, randomBlocks(sample));
}

}  // namespace tvk::bench
