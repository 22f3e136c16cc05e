#include <algorithm>
#include <random>

#include "bench/Corpus.h"
#include "bench/ItemRows.h"

namespace tvk::bench {

namespace {

constexpr std::size_t PASS_BYTES = 16 * 1024;  // stays in the first cache with its results

struct Sample {
    char const * name;
    std::size_t blockSize;
    unsigned int highest;  ///< byte
};

/// Random blocks, or one alone where it is larger than a pass.
ItemList<std::string_view> blocksOf(Sample sample) {
    std::mt19937 random(20140102);
    std::uniform_int_distribution<unsigned int> byte(0, sample.highest);
    std::vector<std::string> blocks(std::max<std::size_t>(PASS_BYTES / sample.blockSize, 1));
    for (std::string & block : blocks) {
        block.resize(sample.blockSize);
        std::generate(block.begin(), block.end(), [&] { return static_cast<char>(byte(random)); });
    }
    auto const corpus = std::make_shared<Corpus const>(sample.name, blocks);
    return {corpus->documents(), corpus->bytes(), corpus};
}

/// Digits mean the same in either case, and not every peer has both.
std::string inUpperCase(std::string digits) {
    std::transform(digits.begin(), digits.end(), digits.begin(), [](char digit) {
        return digit >= 'a' && digit <= 'f' ? static_cast<char>(digit - 'a' + 'A') : digit;
    });
    return digits;
}

}  // namespace

void addEncoderRows(Peers const & peers) {
    for (Sample const sample :
         {Sample{"24_ascii", 24, 0x7F}, Sample{"24_any", 24, 0xFF}, Sample{"1k_ascii", 1024, 0x7F},
          Sample{"1k_any", 1024, 0xFF}, Sample{"64k_ascii", 64 * 1024, 0x7F},
          Sample{"64k_any", 64 * 1024, 0xFF}}) {
        addItemRows<std::string_view, std::string>(std::string("base64/") + sample.name,
                                                   peers.base64Encoders,
                                                   [sample] { return blocksOf(sample); });
    }
    for (Sample const sample : {Sample{"24_any", 24, 0xFF}, Sample{"1k_any", 1024, 0xFF}}) {
        addItemRows<std::string_view, std::string>(
            std::string("hex/") + sample.name, peers.hexEncoders,
            [sample] { return blocksOf(sample); }, inUpperCase);
    }
}

}  // namespace tvk::bench
