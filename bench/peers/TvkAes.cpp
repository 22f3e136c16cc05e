#include "bench/peers/AesLibrary.h"
#include "bench/peers/Peers.h"
#include "tvk/cipher/aes_buffer.h"

namespace tvk::bench {

namespace {

struct TvkAes {
    aes_ctx encryption;
    aes_ctx decryption;

    void setKeys(Byte const * key) {
        aes_enc_key(key, 16, &encryption);
        aes_dec_key(key, 16, &decryption);
    }
    void encrypt(Byte * block) { aes_enc_blk(block, block, &encryption); }
    void decrypt(Byte * block) { aes_dec_blk(block, block, &decryption); }
    void seal(Byte const * text, std::size_t size, Byte * out) {
        aes_encrypt_buf(text, static_cast<int>(size), out, &encryption);
    }
    void open(Byte const * sealed, std::size_t size, Byte * out) {
        aes_decrypt_buf(sealed, static_cast<int>(size), out, &decryption);
    }
};

}  // namespace

void addTvkAes(Peers & peers) {
    addBlockCipher<TvkAes>(peers, "tvk");
    addChain<TvkAes>(peers, "tvk");
    addKeys<TvkAes>(peers, "tvk");
}

}  // namespace tvk::bench
