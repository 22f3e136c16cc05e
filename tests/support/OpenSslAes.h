#pragma once

#include <openssl/evp.h>

#include <memory>
#include <stdexcept>
#include <string_view>

#include "tests/support/AesBlock.h"

namespace tvk::test {

/// The block cipher as OpenSSL has it, with a key of 16, 24 or 32 bytes.
class OpenSslAes {
public:
    explicit OpenSslAes(std::string_view key)
        : encryption_(start(key, 1)), decryption_(start(key, 0)) {}

    AesBlock encrypt(AesBlock const & block) const { return run(encryption_, block); }
    AesBlock decrypt(AesBlock const & block) const { return run(decryption_, block); }

private:
    struct Free {
        void operator()(EVP_CIPHER_CTX * context) const { EVP_CIPHER_CTX_free(context); }
    };
    using Context = std::unique_ptr<EVP_CIPHER_CTX, Free>;

    static EVP_CIPHER const * cipherOf(std::size_t keySize) {
        return keySize == 16   ? EVP_aes_128_ecb()
               : keySize == 24 ? EVP_aes_192_ecb()
                               : EVP_aes_256_ecb();
    }

    static Context start(std::string_view key, int encrypts) {
        Context context(EVP_CIPHER_CTX_new());
        require(EVP_CipherInit_ex(context.get(), cipherOf(key.size()), nullptr, unsignedBytes(key),
                                  nullptr, encrypts) == 1);
        EVP_CIPHER_CTX_set_padding(context.get(), 0);
        return context;
    }

    static AesBlock run(Context const & context, AesBlock const & block) {
        AesBlock result{};
        int size = 0;
        require(EVP_CipherUpdate(context.get(), result.data(), &size, block.data(),
                                 static_cast<int>(block.size())) == 1 &&
                size == static_cast<int>(result.size()));
        return result;
    }

    static void require(bool success) {
        if (!success) {
            throw std::runtime_error("OpenSSL refuses");
        }
    }

    Context encryption_;
    Context decryption_;
};

}  // namespace tvk::test
