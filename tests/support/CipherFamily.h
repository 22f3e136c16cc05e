#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

#include "tests/support/CbcModel.h"
#include "tests/support/ExactBuffer.h"
#include "tvk/cipher/aes_buffer.h"

namespace tvk::test {

/// One of the two pairs of buffer functions, on buffers of the exact size, and the model of its layout.
struct CipherFamily {
    char const * name;
    std::string (*encrypt)(std::string_view text, aes_ctx & ctx);
    std::string (*decrypt)(std::string_view sealed, aes_ctx & ctx);
    decltype(&modelEncryptOverlapped) modelEncrypt;
    decltype(&modelDecryptOverlapped) modelDecrypt;
};

/// The result of `process(in, length, out)`, which returns the number of bytes that it wrote.
template <class Process>
std::string processed(std::string_view bytes, std::size_t resultSize, Process process) {
    ExactBuffer const in(bytes);
    ExactBuffer out(std::string(resultSize, '\xA5'));
    if (process(in.data(), static_cast<int>(in.size()), out.data()) !=
        static_cast<int>(resultSize)) {
        throw std::logic_error("another length than the layout's");
    }
    return std::string(out.data(), out.size());
}

/// The length that a function with the interface of aes_encbuf sets; it returns 0.
template <class Function>
int setLength(Function function, char const * in, int length, char * out, aes_ctx & ctx) {
    int outLength = -1;
    return function(in, length, out, &ctx, &outLength) == 0 ? outLength : -1;
}

inline constexpr CipherFamily OVERLAPPED_FAMILY = {
    "overlapped",
    [](std::string_view text, aes_ctx & ctx) {
        return processed(text, text.size() + 16, [&ctx](char const * in, int length, char * out) {
            return setLength(aes_encbuf, in, length, out, ctx);
        });
    },
    [](std::string_view sealed, aes_ctx & ctx) {
        return processed(sealed, sealed.size() - 16,
                         [&ctx](char const * in, int length, char * out) {
                             return setLength(aes_decbuf, in, length, out, ctx);
                         });
    },
    modelEncryptOverlapped, modelDecryptOverlapped};

inline constexpr CipherFamily STEALING_FAMILY = {
    "stealing",
    [](std::string_view text, aes_ctx & ctx) {
        return processed(text, text.size() + 16, [&ctx](char const * in, int length, char * out) {
            return aes_encrypt_buf(in, length, out, &ctx);
        });
    },
    [](std::string_view sealed, aes_ctx & ctx) {
        return processed(sealed, sealed.size() - 16,
                         [&ctx](char const * in, int length, char * out) {
                             return aes_decrypt_buf(in, length, out, &ctx);
                         });
    },
    modelEncryptStealing, modelDecryptStealing};

inline constexpr CipherFamily CIPHER_FAMILIES[] = {OVERLAPPED_FAMILY, STEALING_FAMILY};

inline aes_ctx encryptionContext(std::string_view key) {
    aes_ctx ctx{};
    aes_enc_key(unsignedBytes(key), static_cast<unsigned int>(key.size()), &ctx);
    return ctx;
}

inline aes_ctx decryptionContext(std::string_view key) {
    aes_ctx ctx{};
    aes_dec_key(unsignedBytes(key), static_cast<unsigned int>(key.size()), &ctx);
    return ctx;
}

}  // namespace tvk::test
