#include <mbedtls/aes.h>
#include <mbedtls/version.h>

#include "bench/peers/AesLibrary.h"
#include "bench/peers/Peers.h"

namespace tvk::bench {

namespace {

struct MbedTls {
    mbedtls_aes_context encryption;
    mbedtls_aes_context decryption;

    void setKeys(Byte const * key) {
        mbedtls_aes_setkey_enc(&encryption, key, 128);
        mbedtls_aes_setkey_dec(&decryption, key, 128);
    }
    void encrypt(Byte * block) {
        mbedtls_aes_crypt_ecb(&encryption, MBEDTLS_AES_ENCRYPT, block, block);
    }
    void decrypt(Byte * block) {
        mbedtls_aes_crypt_ecb(&decryption, MBEDTLS_AES_DECRYPT, block, block);
    }
    void seal(Byte const * text, std::size_t size, Byte * out) {
        Byte chain[AES_BLOCK];
        putChainStart(chain);
        mbedtls_aes_crypt_cbc(&encryption, MBEDTLS_AES_ENCRYPT, size, chain, text,
                              putChainStart(out));
    }
    void open(Byte const * sealed, std::size_t size, Byte * out) {
        Byte chain[AES_BLOCK];
        std::copy_n(sealed, AES_BLOCK, chain);
        mbedtls_aes_crypt_cbc(&decryption, MBEDTLS_AES_DECRYPT, size - AES_BLOCK, chain,
                              sealed + AES_BLOCK, out);
    }
};

// What mbedTLS has for processors without AES instructions. The schedules are the same.
struct MbedTlsTables : MbedTls {
    void encrypt(Byte * block) { mbedtls_internal_aes_encrypt(&encryption, block, block); }
    void decrypt(Byte * block) { mbedtls_internal_aes_decrypt(&decryption, block, block); }
};

}  // namespace

void addMbedTls(Peers & peers) {
    addBlockCipher<MbedTls>(peers, "mbedtls_hardware");
    addChain<MbedTls>(peers, "mbedtls_hardware");
    addKeys<MbedTls>(peers, "mbedtls_hardware");
    addBlockCipher<MbedTlsTables>(peers, "mbedtls_tables");
    peers.libraries.push_back("Mbed TLS " MBEDTLS_VERSION_STRING);
}

}  // namespace tvk::bench
