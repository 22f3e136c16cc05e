#include "tvk/cipher/aes_buffer.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <memory>

#include "tvk/cipher/detail/AesRounds.h"
#include "tvk/cipher/detail/RandomBlock.h"
#include "tvk/cipher/detail/Wiped.h"

namespace {

using namespace tvk::detail;
using Byte = unsigned char;

/// Two blocks, for the ends of texts that are cut inside a block.
using WorkArea = std::array<Byte, 2 * AES_BLOCK>;

/// A text as whole blocks and the bytes behind the last of them.
struct Division {
    explicit Division(std::size_t length) : blocks(length / AES_BLOCK), tail(length % AES_BLOCK) {}

    std::size_t blocks;
    std::size_t tail;
};

/// Blocks pass unchanged through a context of the other direction.
template <class Direction, class... States>
[[gnu::always_inline]] inline void cipher(aes_ctx const & ctx, States &... states) {
    if ((ctx.blockFlags & Direction::FLAG) != 0) {
        runRounds<Direction>(ctx, states...);
    }
}

AesState encrypted(AesState state, aes_ctx const & ctx) {
    cipher<AesEncryption>(ctx, state);
    return state;
}

AesState decrypted(AesState state, aes_ctx const & ctx) {
    cipher<AesDecryption>(ctx, state);
    return state;
}

void encryptInPlace(Byte * block, aes_ctx const & ctx) {
    storeBlock(encrypted(loadBlock(block), ctx), block);
}

void decryptInPlace(Byte * block, aes_ctx const & ctx) {
    storeBlock(decrypted(loadBlock(block), ctx), block);
}

/// Adds bytes, modulo 2, to those at `target`.
void addBytes(Byte * target, Byte const * bytes, std::size_t count) {
    std::transform(target, target + count, bytes, target,
                   [](Byte a, Byte b) { return static_cast<Byte>(a ^ b); });
}

/// Encrypts whole blocks in a chain; returns its last block.
AesState encryptChain(AesState chain, Byte const * in, std::size_t blocks, Byte * out,
                      aes_ctx const & ctx) {
    for (; blocks > 0; --blocks) {
        chain = chain ^ loadBlock(in);
        cipher<AesEncryption>(ctx, chain);
        storeBlock(chain, out);
        in += AES_BLOCK;
        out += AES_BLOCK;
    }
    return chain;
}

/// Decrypts whole blocks of a chain; returns the last of them as it came. Two go side by side: no block
/// waits for the text of the one before.
AesState decryptChain(AesState chain, Byte const * in, std::size_t blocks, Byte * out,
                      aes_ctx const & ctx) {
    for (; blocks >= 2; blocks -= 2) {
        AesState first = loadBlock(in);
        AesState second = loadBlock(in + AES_BLOCK);
        cipher<AesDecryption>(ctx, first, second);
        first = first ^ chain;
        second = second ^ loadBlock(in);
        chain = loadBlock(in + AES_BLOCK);
        storeBlock(first, out);
        storeBlock(second, out + AES_BLOCK);
        in += 2 * AES_BLOCK;
        out += 2 * AES_BLOCK;
    }
    if (blocks > 0) {
        AesState const last = loadBlock(in);
        storeBlock(decrypted(last, ctx) ^ chain, out);
        chain = last;
    }
    return chain;
}

AesState randomChain() {
    auto const words = drawRandomBlock();
    return {words[0], words[1], words[2], words[3]};
}

// The first layout ends with two blocks that overlap: the last whole one, and the last 16 bytes of all,
// which are enciphered once the others are.

void encryptOverlapped(Byte const * in, std::size_t length, Byte * out, aes_ctx const & ctx) {
    auto const [blocks, tail] = Division(length);
    AesState chain = randomChain();
    storeBlock(encrypted(chain, ctx), out);
    chain = encryptChain(chain, in, blocks, out + AES_BLOCK, ctx);

    std::array<Byte, AES_BLOCK> mask{};
    storeBlock(chain, mask.data());
    Byte * const end = std::copy_n(in + AES_BLOCK * blocks, tail, out + AES_BLOCK * (blocks + 1));
    addBytes(end - tail, mask.data(), tail);
    // Deliberate: without a tail this is the last block itself, enciphered a second time. Texts have
    // always been made so, and decryption undoes it.
    encryptInPlace(end - AES_BLOCK, ctx);
}

void decryptOverlapped(Byte const * in, std::size_t length, Byte * out, aes_ctx const & ctx) {
    auto const [blocks, tail] = Division(length);
    Wiped<WorkArea> work;
    Byte * const last = work.get().data();
    Byte * const behind = last + AES_BLOCK;
    std::copy_n(in + AES_BLOCK * (blocks - 1), AES_BLOCK + tail, last);
    decryptInPlace(last + tail, ctx);
    if (blocks == 1) {
        // A text shorter than a block has only the chaining block before it, which is its mask.
        decryptInPlace(last, ctx);
        addBytes(behind, last, tail);
        std::copy_n(behind, tail, out);
        return;
    }
    AesState chain = decrypted(loadBlock(in), ctx);
    chain = decryptChain(chain, in + AES_BLOCK, blocks - 2, out, ctx);
    addBytes(behind, last, tail);
    storeBlock(decrypted(loadBlock(last), ctx) ^ chain, last);
    std::copy_n(last, AES_BLOCK + tail, out + AES_BLOCK * (blocks - 2));
}

// In the second layout a tail takes what it lacks of a block from the end of the block before it, and the
// two change places.

void encryptStealing(Byte const * in, std::size_t length, Byte * out, aes_ctx const & ctx) {
    auto const [blocks, tail] = Division(length);
    AesState chain = randomChain();
    storeBlock(chain, out);
    chain = encryptChain(chain, in, blocks, out + AES_BLOCK, ctx);
    if (blocks > 0 && tail == 0) {
        return;
    }
    Wiped<std::array<Byte, AES_BLOCK>> padded;
    std::copy_n(in + AES_BLOCK * blocks, tail, padded.get().data());
    AesState const lastBlock = encrypted(loadBlock(padded.get().data()) ^ chain, ctx);
    if (blocks == 0) {
        // The chaining block of a short text stays before it, cut to the length of the text.
        storeBlock(lastBlock, out + tail);
        return;
    }
    Byte * const last = out + AES_BLOCK * blocks;
    std::copy_n(last, tail, last + AES_BLOCK);
    storeBlock(lastBlock, last);
}

void decryptShortStealing(Byte const * in, std::size_t size, Byte * out, aes_ctx const & ctx) {
    Wiped<std::array<Byte, AES_BLOCK>> work;
    Byte * const text = work.get().data();
    storeBlock(decrypted(loadBlock(in + size), ctx), text);
    addBytes(text, in, size);
    std::copy_n(text, size, out);
}

void decryptStealing(Byte const * in, std::size_t length, Byte * out, aes_ctx const & ctx) {
    auto const [blocks, tail] = Division(length - AES_BLOCK);
    if (blocks == 0) {
        decryptShortStealing(in, tail, out, ctx);
        return;
    }
    std::size_t const chained = tail == 0 ? blocks : blocks - 1;
    AesState const chain = decryptChain(loadBlock(in), in + AES_BLOCK, chained, out, ctx);
    if (tail == 0) {
        return;
    }
    // Left are the padded tail, enciphered, and the first bytes of the block before it. The other
    // bytes of that block show in the decrypted tail, where the padding is zero.
    in += AES_BLOCK * blocks;
    out += AES_BLOCK * chained;
    Wiped<WorkArea> work;
    Byte * const previous = work.get().data();
    Byte * const text = previous + AES_BLOCK;
    storeBlock(decrypted(loadBlock(in), ctx), text);
    std::copy_n(in + AES_BLOCK, tail, previous);
    std::copy_n(text + tail, AES_BLOCK - tail, previous + tail);
    addBytes(text, previous, tail);
    storeBlock(decrypted(loadBlock(previous), ctx) ^ chain, out);
    std::copy_n(text, tail, out + AES_BLOCK);
}

// The forms that take a key and allocate.

constexpr std::size_t KEY_SIZE = 16;
constexpr Byte KEY_PADDING = 0x12;

struct Free {
    void operator()(void * block) const { std::free(block); }
};

struct Request {
    char const * in;
    int length;
    char const * key;
    int keyLength;
    int * outLength;
};

using KeyFunction = decltype(aes_enc_key);
using BufferFunction = decltype(aes_encbuf);

/// `room` is the size of the buffer.
char * intoNewBuffer(Request const & request, std::size_t room, KeyFunction * setKey,
                     BufferFunction * process) {
    std::unique_ptr<char, Free> out(static_cast<char *>(std::malloc(room)));
    Wiped<aes_ctx> ctx;
    Wiped<std::array<Byte, KEY_SIZE>> key;
    key.get().fill(KEY_PADDING);
    std::copy_n(reinterpret_cast<Byte const *>(request.key),
                std::min(static_cast<std::size_t>(request.keyLength), KEY_SIZE), key.get().data());
    if (out == nullptr || setKey(key.get().data(), KEY_SIZE, &ctx.get()) == 0) {
        return nullptr;
    }
    process(request.in, request.length, out.get(), &ctx.get(), request.outLength);
    return out.release();
}

}  // namespace

int aes_encbuf(char const * in, int length, char * out, aes_ctx * ctx, int * outLength) {
    encryptOverlapped(reinterpret_cast<Byte const *>(in), static_cast<std::size_t>(length),
                      reinterpret_cast<Byte *>(out), *ctx);
    *outLength = length + static_cast<int>(AES_BLOCK);
    return 0;
}

int aes_decbuf(char const * in, int length, char * out, aes_ctx * ctx, int * outLength) {
    decryptOverlapped(reinterpret_cast<Byte const *>(in), static_cast<std::size_t>(length),
                      reinterpret_cast<Byte *>(out), *ctx);
    *outLength = length - static_cast<int>(AES_BLOCK);
    return 0;
}

char * aes_enc(char const * in, int length, char const * key, int keyLength, int * outLength) {
    return intoNewBuffer({in, length, key, keyLength, outLength},
                         static_cast<std::size_t>(length) + 2 * AES_BLOCK, aes_enc_key, aes_encbuf);
}

char * aes_dec(char const * in, int length, char const * key, int keyLength, int * outLength) {
    return intoNewBuffer({in, length, key, keyLength, outLength}, static_cast<std::size_t>(length),
                         aes_dec_key, aes_decbuf);
}

int aes_encrypt_buf(void const * in, int length, void * out, aes_ctx * ctx) {
    encryptStealing(static_cast<Byte const *>(in), static_cast<std::size_t>(length),
                    static_cast<Byte *>(out), *ctx);
    return length + static_cast<int>(AES_BLOCK);
}

int aes_decrypt_buf(void const * in, int length, void * out, aes_ctx * ctx) {
    decryptStealing(static_cast<Byte const *>(in), static_cast<std::size_t>(length),
                    static_cast<Byte *>(out), *ctx);
    return length - static_cast<int>(AES_BLOCK);
}
