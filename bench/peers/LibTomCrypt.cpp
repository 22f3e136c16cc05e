#include <tomcrypt.h>

#include <stdexcept>

#include "bench/peers/AesLibrary.h"
#include "bench/peers/Peers.h"

namespace tvk::bench {

namespace {

class LibTomCrypt {
public:
    LibTomCrypt() {
        if (register_cipher(&aes_desc) == -1) {
            throw std::runtime_error("LibTomCrypt knows no AES");
        }
    }

    // One call makes both schedules.
    void setKeys(Byte const * key) { aes_setup(key, AES_BLOCK, 0, &keys_); }
    void encrypt(Byte * block) { aes_ecb_encrypt(block, block, &keys_); }
    void decrypt(Byte * block) { aes_ecb_decrypt(block, block, &keys_); }

    // The key of a chain is set with its first use, the start with each.
    void seal(Byte const * text, std::size_t size, Byte * out) {
        Byte * const blocks = putChainStart(out);
        cbc_setiv(out, AES_BLOCK, chain());
        cbc_encrypt(text, blocks, size, chain());
    }
    void open(Byte const * sealed, std::size_t size, Byte * out) {
        cbc_setiv(sealed, AES_BLOCK, chain());
        cbc_decrypt(sealed + AES_BLOCK, out, size - AES_BLOCK, chain());
    }

private:
    symmetric_CBC * chain() {
        if (!hasChain_) {
            Byte start[AES_BLOCK] = {};
            cbc_start(find_cipher("aes"), start, reinterpret_cast<Byte const *>(CIPHER_KEY.data()),
                      AES_BLOCK, 0, &chain_);
            hasChain_ = true;
        }
        return &chain_;
    }

    symmetric_key keys_;
    symmetric_CBC chain_;
    bool hasChain_ = false;
};

}  // namespace

void addLibTomCrypt(Peers & peers) {
    addBlockCipher<LibTomCrypt>(peers, "libtomcrypt");
    addChain<LibTomCrypt>(peers, "libtomcrypt");
    addKeys<LibTomCrypt>(peers, "libtomcrypt");
    peers.libraries.push_back("LibTomCrypt " SCRYPT);
}

}  // namespace tvk::bench
