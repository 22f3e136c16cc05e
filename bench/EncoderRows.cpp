#include <algorithm>

#include "bench/RandomBlocks.h"

namespace tvk::bench {

namespace {

/// Digits mean the same in either case, and not every peer has both.
std::string inUpperCase(std::string digits) {
    std::transform(digits.begin(), digits.end(), digits.begin(), [](char digit) {
        return digit >= 'a' && digit <= 'f' ? static_cast<char>(digit - 'a' + 'A') : digit;
    });
    return digits;
}

}  // namespace

void addEncoderRows(Peers const & peers) {
    for (BlockSample const sample :
         {BlockSample{"24_ascii", 24, 0x7F}, BlockSample{"24_any", 24, 0xFF},
          BlockSample{"1k_ascii", 1024, 0x7F}, BlockSample{"1k_any", 1024, 0xFF},
          BlockSample{"64k_ascii", 64 * 1024, 0x7F}, BlockSample{"64k_any", 64 * 1024, 0xFF}}) {
        addItemRows<std::string_view, std::string>(std::string("base64/") + sample.name,
                                                   peers.base64Encoders,
                                                   [sample] { return blocksOf(sample); });
    }
    for (BlockSample const sample :
         {BlockSample{"24_any", 24, 0xFF}, BlockSample{"1k_any", 1024, 0xFF}}) {
        addItemRows<std::string_view, std::string>(
            std::string("hex/") + sample.name, peers.hexEncoders,
            [sample] { return blocksOf(sample); }, inUpperCase);
    }
}

}  // namespace tvk::bench
