// The functions of openssl/aes.h are deprecated, and they are the ones that work by tables.
#define OPENSSL_SUPPRESS_DEPRECATED

#include <openssl/aes.h>
#include <openssl/evp.h>

#include <memory>

#include "bench/peers/AesInstructions.h"
#include "bench/peers/AesLibrary.h"
#include "bench/peers/Peers.h"

namespace tvk::bench {

namespace {

struct OpenSslTables {
    AES_KEY encryption;
    AES_KEY decryption;

    void setKeys(Byte const * key) {
        AES_set_encrypt_key(key, 128, &encryption);
        AES_set_decrypt_key(key, 128, &decryption);
    }
    void encrypt(Byte * block) { AES_encrypt(block, block, &encryption); }
    void decrypt(Byte * block) { AES_decrypt(block, block, &decryption); }
    void seal(Byte const * text, std::size_t size, Byte * out) {
        Byte chain[AES_BLOCK];
        putChainStart(chain);
        AES_cbc_encrypt(text, putChainStart(out), size, &encryption, chain, AES_ENCRYPT);
    }
    void open(Byte const * sealed, std::size_t size, Byte * out) {
        Byte chain[AES_BLOCK];
        std::copy_n(sealed, AES_BLOCK, chain);
        AES_cbc_encrypt(sealed + AES_BLOCK, out, size - AES_BLOCK, &decryption, chain, AES_DECRYPT);
    }
};

class OpenSslEvp {
public:
    void setKeys(Byte const * key) {
        start(blockEncryption_, EVP_aes_128_ecb(), key, 1);
        start(blockDecryption_, EVP_aes_128_ecb(), key, 0);
        start(encryption_, EVP_aes_128_cbc(), key, 1);
        start(decryption_, EVP_aes_128_cbc(), key, 0);
    }
    void encrypt(Byte * block) { update(blockEncryption_, block, AES_BLOCK, block); }
    void decrypt(Byte * block) { update(blockDecryption_, block, AES_BLOCK, block); }
    void seal(Byte const * text, std::size_t size, Byte * out) {
        Byte * const blocks = putChainStart(out);
        restart(encryption_, out);
        update(encryption_, text, size, blocks);
    }
    void open(Byte const * sealed, std::size_t size, Byte * out) {
        restart(decryption_, sealed);
        update(decryption_, sealed + AES_BLOCK, size - AES_BLOCK, out);
    }

private:
    struct Free {
        void operator()(EVP_CIPHER_CTX * context) const { EVP_CIPHER_CTX_free(context); }
    };
    using Context = std::unique_ptr<EVP_CIPHER_CTX, Free>;

    static void start(Context & context, EVP_CIPHER const * cipher, Byte const * key,
                      int encrypts) {
        context.reset(EVP_CIPHER_CTX_new());
        EVP_CipherInit_ex(context.get(), cipher, nullptr, key, nullptr, encrypts);
        EVP_CIPHER_CTX_set_padding(context.get(), 0);
    }
    static void restart(Context const & context, Byte const * chain) {
        EVP_CipherInit_ex(context.get(), nullptr, nullptr, nullptr, chain, -1);
    }
    static void update(Context const & context, Byte const * in, std::size_t size, Byte * out) {
        int written = 0;
        EVP_CipherUpdate(context.get(), out, &written, in, static_cast<int>(size));
    }

    Context blockEncryption_;
    Context blockDecryption_;
    Context encryption_;
    Context decryption_;
};

}  // namespace

void addOpenSslAes(Peers & peers) {
    addBlockCipher<OpenSslTables>(peers, "openssl_tables");
    addChain<OpenSslTables>(peers, "openssl_tables");
    addKeys<OpenSslTables>(peers, "openssl_tables");
    std::string const evp = hardwareName("openssl_evp");
    addBlockCipher<OpenSslEvp>(peers, evp);
    addChain<OpenSslEvp>(peers, evp);
}

}  // namespace tvk::bench
