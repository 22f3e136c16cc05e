#include <nettle/aes.h>
#include <nettle/cbc.h>

#include "bench/peers/AesInstructions.h"
#include "bench/peers/AesLibrary.h"
#include "bench/peers/Peers.h"

namespace tvk::bench {

namespace {

struct NettleAes {
    aes128_ctx encryption;
    aes128_ctx decryption;

    void setKeys(Byte const * key) {
        aes128_set_encrypt_key(&encryption, key);
        aes128_set_decrypt_key(&decryption, key);
    }
    void encrypt(Byte * block) { aes128_encrypt(&encryption, AES_BLOCK, block, block); }
    void decrypt(Byte * block) { aes128_decrypt(&decryption, AES_BLOCK, block, block); }
    void seal(Byte const * text, std::size_t size, Byte * out) {
        Byte chain[AES_BLOCK];
        putChainStart(chain);
        cbc_aes128_encrypt(&encryption, chain, size, putChainStart(out), text);
    }
    void open(Byte const * sealed, std::size_t size, Byte * out) {
        Byte chain[AES_BLOCK];
        std::copy_n(sealed, AES_BLOCK, chain);
        cbc_decrypt(&decryption, reinterpret_cast<nettle_cipher_func *>(aes128_decrypt), AES_BLOCK,
                    chain, size - AES_BLOCK, out, sealed + AES_BLOCK);
    }
};

}  // namespace

void addNettleAes(Peers & peers) {
    std::string const name = hardwareName("nettle");
    addBlockCipher<NettleAes>(peers, name);
    addChain<NettleAes>(peers, name);
    addKeys<NettleAes>(peers, name);
}

}  // namespace tvk::bench
