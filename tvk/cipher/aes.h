#pragma once

#include <cstdint>

#include "tvk/platform/Export.h"

/// The block cipher AES (FIPS 197) with keys of 128, 192 and 256 bits.
///
///     aes_ctx ctx;
///     aes_enc_key(key, 16, &ctx);
///     aes_enc_blk(plain, cipher, &ctx);
///
/// The functions have C linkage, so that a module finds them under their bare names. All return 1 for
/// success and 0 for failure; nothing is thrown and nothing is allocated.
///
/// Ownership: the caller owns every buffer and the context, and wipes the context when the key has
///            served.
/// Threads:   no state is shared; once built, a context may serve block calls of many threads.
///
/// The cipher looks its tables up at places that follow from key and text, so its time tells of them
/// to whoever shares the processor's caches. It is no choice where such an observer is to be feared.

/// An expanded key, for one direction only.
struct aes_ctx {
    std::uint32_t
        keySchedule[64];       ///< round key i in words 4i to 4i+3, bytes in little-endian order
    std::uint32_t roundCount;  ///< 10, 12 or 14; 0 after a refused key
    std::uint32_t blockFlags;  ///< 16, the size of a block, plus 1 to encrypt or 2 to decrypt
};

extern "C" {

/// Builds the schedule that encrypts. `keyLength` is 16, 24 or 32 bytes; any other is refused, with
/// `roundCount` 0 and `blockFlags` set. Requires: 16 readable bytes at `key` even then.
TVK_API std::uint16_t aes_enc_key(unsigned char const * key, unsigned int keyLength, aes_ctx * ctx);

/// Builds the schedule that decrypts, under the same rules.
TVK_API std::uint16_t aes_dec_key(unsigned char const * key, unsigned int keyLength, aes_ctx * ctx);

/// Encrypts a block of 16 bytes. `out` may be `in` or overlap it in any way. Fails, with nothing
/// written, unless the schedule is one that encrypts. With a `roundCount` other than 10, 12 and 14
/// no round is run: `out` is the input XORed with a round key. Requires: `roundCount` below 16.
TVK_API std::uint16_t aes_enc_blk(unsigned char const * in, unsigned char * out,
                                  aes_ctx const * ctx);

/// Decrypts a block of 16 bytes, under the same rules with a schedule that decrypts.
TVK_API std::uint16_t aes_dec_blk(unsigned char const * in, unsigned char * out,
                                  aes_ctx const * ctx);

}  // extern "C"
