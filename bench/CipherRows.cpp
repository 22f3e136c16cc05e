#include "bench/ItemRows.h"
#include "bench/RandomBlocks.h"

namespace tvk::bench {

namespace {

std::shared_ptr<AesChainWork> workOf(std::vector<Peer<AesChainWork>> const & peers) {
    return peers.front().make();
}

/// Texts as tvk encrypted them. Their bytes are counted as they are without what starts the chains.
ItemList<std::string_view> sealedBlocks(BlockSample sample, Peers const & peers) {
    ItemList<std::string_view> const texts = blocksOf(sample);
    auto const encryption = workOf(peers.cbcEncryptions);
    std::vector<std::string> sealed;
    for (std::string_view const text : texts.items) {
        sealed.push_back(encryption->resultOf(text));
    }
    ItemList<std::string_view> list = listOf(sample.name, sealed);
    list.bytes = texts.bytes;
    return list;
}

}  // namespace

void addCipherRows(Peers const & peers) {
    constexpr BlockSample BLOCK = {"16", 16};
    addItemRows<std::string_view, std::string>("aes_encrypt/block", peers.aesEncryptions,
                                               [] { return blocksOf(BLOCK); });
    addItemRows<std::string_view, std::string>("aes_decrypt/block", peers.aesDecryptions,
                                               [] { return blocksOf(BLOCK); });
    addItemRows<std::string_view, std::string>("aes_keys/128", peers.aesKeys,
                                               [] { return blocksOf(BLOCK); });
    for (BlockSample const sample :
         {BLOCK, BlockSample{"1k", 1024}, BlockSample{"64k", 64 * 1024}}) {
        // Each starts its chains as it likes, so the results are compared by what tvk makes of them.
        addItemRows<std::string_view, std::string>(
            std::string("cbc_encrypt/") + sample.name, peers.cbcEncryptions,
            [sample] { return blocksOf(sample); },
            [decryption = workOf(peers.cbcDecryptions)](std::string const & sealed) {
                return decryption->resultOf(sealed);
            });
        addItemRows<std::string_view, std::string>(
            std::string("cbc_decrypt/") + sample.name, peers.cbcDecryptions,
            [sample, &peers] { return sealedBlocks(sample, peers); });
    }
}

}  // namespace tvk::bench
