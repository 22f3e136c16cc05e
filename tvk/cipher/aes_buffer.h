#pragma once

#include "tvk/cipher/aes.h"
#include "tvk/platform/Export.h"

/// Texts of any length through AES in cipher-block chaining, in two layouts that cannot read each
/// other. Both make a text longer by exactly 16 bytes and pad no result to a whole block. docs/cipher.md
/// draws them.
///
///     aes_enc_key(key, 16, &ctx);
///     std::vector<unsigned char> sealed(text.size() + 16);
///     aes_encrypt_buf(text.data(), static_cast<int>(text.size()), sealed.data(), &ctx);
///
/// The functions have C linkage, so that a module finds them under their bare names.
///
/// Nothing authenticates a text: one that is damaged or was made with another key gives garbage,
/// without any report. So does a context of the wrong direction, for which no block is enciphered.
///
/// Each encryption draws a chaining block of 16 random bytes, so two of the same text differ. These bytes
/// come from a simple generator, seeded once from the processor's time-stamp counter: they keep texts
/// apart, and somebody who looks for them can foretell them.
///
/// Requires:  `in` and `out` apart from each other, lengths of 0 to 2^31 - 17 bytes to encrypt and of
///            16 or more to decrypt, a context of `aes_enc_key` to encrypt and of `aes_dec_key` to decrypt.
/// Ownership: the caller owns all buffers and the context; the result of `aes_enc` and `aes_dec` is
///            from malloc, and the caller's to free.
/// Threads:   calls that decrypt share nothing but what they are given. All encryption of the process
///            shares the generator, without a lock: two calls at a time may draw the same bytes.

extern "C" {

/// First layout: the chaining block enciphered, then the text, whose last bytes overlap the block before.
/// `out` takes `length` + 16 bytes, their number goes to `*outLength`. Returns 0.
TVK_API int aes_encbuf(char const * in, int length, char * out, aes_ctx * ctx, int * outLength);

/// The way back: `out` takes `length` - 16 bytes.
TVK_API int aes_decbuf(char const * in, int length, char * out, aes_ctx * ctx, int * outLength);

/// `aes_encbuf` with a key of 128 bits into a buffer of its own, without a NUL behind. The key is the first
/// 16 of the `keyLength` bytes at `key`; bytes of 12 (hexadecimal) stand behind a shorter one. Returns
/// null if there is no memory, with `*outLength` left alone.
TVK_API char * aes_enc(char const * in, int length, char const * key, int keyLength,
                       int * outLength);

/// The way back, under the same rules.
TVK_API char * aes_dec(char const * in, int length, char const * key, int keyLength,
                       int * outLength);

/// Second layout: the chaining block in the clear, then the text with ciphertext stealing. `out` takes
/// `length` + 16 bytes; returns that number.
TVK_API int aes_encrypt_buf(void const * in, int length, void * out, aes_ctx * ctx);

/// The way back: `out` takes `length` - 16 bytes; returns that number.
TVK_API int aes_decrypt_buf(void const * in, int length, void * out, aes_ctx * ctx);

}  // extern "C"
