// Property: both buffer families decrypt any bytes as slow models of their layouts do, and give back what
// they encrypted.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "fuzz/FuzzCheck.h"
#include "tests/support/CipherFamily.h"
#if defined(TVK_FUZZ_HAS_OPENSSL)
#include "tests/support/OpenSslAes.h"
#endif

namespace {

using namespace tvk::test;

constexpr std::size_t KEY_SIZES[] = {16, 24, 32};
constexpr std::size_t SHORTEST =
    16;  // a shorter text was not made by either family, nor may be given

/// A block cipher for the models: another one than tvk's, where there is one.
BlockFunction decryptionOf(std::string const & key) {
#if defined(TVK_FUZZ_HAS_OPENSSL)
    auto const peer = std::make_shared<OpenSslAes>(key);
    return [peer](AesBlock const & block) { return peer->decrypt(block); };
#else
    return [ctx = decryptionContext(key)](AesBlock const & block) {
        AesBlock result{};
        aes_dec_blk(block.data(), result.data(), &ctx);
        return result;
    };
#endif
}

void checkDecryption(CipherFamily const & family, std::string const & key,
                     std::string_view sealed) {
    aes_ctx decryption = decryptionContext(key);
    FUZZ_CHECK(family.decrypt(sealed, decryption) ==
               family.modelDecrypt(decryptionOf(key), sealed));
}

void checkRoundTrip(CipherFamily const & family, std::string const & key, std::string_view text) {
    aes_ctx encryption = encryptionContext(key);
    aes_ctx decryption = decryptionContext(key);
    FUZZ_CHECK(family.decrypt(family.encrypt(text, encryption), decryption) == text);
}

}  // namespace

// The first byte chooses the size of the key. The key is the front of the input over and over, so that the
// engine varies it too.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * bytes, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    std::string_view const input(reinterpret_cast<char const *>(bytes), size);
    std::string key(KEY_SIZES[bytes[0] % 3], '\0');
    for (std::size_t i = 0; i < key.size(); ++i) {
        key[i] = input[i % input.size()];
    }
    std::string_view const text = input.substr(1);
    for (CipherFamily const & family : CIPHER_FAMILIES) {
        if (text.size() >= SHORTEST) {
            checkDecryption(family, key, text);
        }
        checkRoundTrip(family, key, text);
    }
    return 0;
}
