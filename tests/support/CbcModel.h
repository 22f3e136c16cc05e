#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "tests/support/AesBlock.h"

/// The two layouts of enciphered texts, byte by byte through a work area of two blocks, around any block
/// cipher. Slow and plain: to compare with.
namespace tvk::test {

using BlockFunction = std::function<AesBlock(AesBlock const &)>;

/// 32 bytes, of which any 16 in a row can be ciphered in place.
class CbcWorkArea {
public:
    unsigned char & operator[](std::size_t i) { return bytes_.at(i); }

    AesBlock blockAt(std::size_t place) const {
        AesBlock block{};
        std::copy_n(&bytes_.at(place), block.size(), block.begin());
        return block;
    }

    void put(std::size_t place, AesBlock const & block) { put(place, bytesOf(block)); }

    void put(std::size_t place, std::string_view bytes) {
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            bytes_.at(place + i) = static_cast<unsigned char>(bytes[i]);
        }
    }

    void apply(BlockFunction const & cipher, std::size_t place) {
        put(place, cipher(blockAt(place)));
    }

    void addTo(std::size_t place, std::size_t other, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            bytes_.at(place + i) =
                static_cast<unsigned char>(bytes_.at(place + i) ^ bytes_.at(other + i));
        }
    }

    std::string front(std::size_t size) const {
        return std::string(bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(size));
    }

private:
    std::array<unsigned char, 32> bytes_{};
};

/// The layout of aes_encbuf, for the random block `chaining`.
inline std::string modelEncryptOverlapped(BlockFunction const & encrypt, AesBlock const & chaining,
                                          std::string_view text) {
    CbcWorkArea area;
    area.put(0, chaining);
    if (text.size() < 16) {
        area.put(16, text);
        area.addTo(16, 0, text.size());
        area.apply(encrypt, 0);
        area.apply(encrypt, text.size());
        return area.front(16 + text.size());
    }
    std::string out = bytesOf(encrypt(chaining));
    for (;;) {
        area.put(0, area.blockAt(0) ^ blockOf(text));
        area.apply(encrypt, 0);
        text.remove_prefix(16);
        if (text.size() < 16) {
            break;
        }
        out += area.front(16);
    }
    area.put(16, text);
    area.addTo(16, 0, text.size());
    area.apply(encrypt, text.size());
    return out + area.front(16 + text.size());
}

/// The layout of aes_decbuf, which wants 16 bytes or more.
inline std::string modelDecryptOverlapped(BlockFunction const & decrypt, std::string_view sealed) {
    CbcWorkArea area;
    if (sealed.size() < 32) {
        std::size_t const size = sealed.size() - 16;
        area.put(0, sealed);
        area.apply(decrypt, size);
        area.apply(decrypt, 0);
        area.addTo(0, 16, size);
        return area.front(size);
    }
    std::string out;
    AesBlock chaining = decrypt(blockOf(sealed));
    AesBlock block{};
    for (;;) {
        sealed.remove_prefix(16);
        block = blockOf(sealed);
        if (sealed.size() - 16 < 16) {
            break;
        }
        out += bytesOf(decrypt(block) ^ chaining);
        chaining = block;
    }
    std::string_view const tail = sealed.substr(16);
    area.put(0, block);
    area.put(16, tail);
    area.apply(decrypt, tail.size());
    area.addTo(16, 0, tail.size());
    area.put(0, decrypt(area.blockAt(0)) ^ chaining);
    return out + area.front(16 + tail.size());
}

/// The layout of aes_encrypt_buf, for the random block `chaining`.
inline std::string modelEncryptStealing(BlockFunction const & encrypt, AesBlock const & chaining,
                                        std::string_view text) {
    if (text.size() <= 16) {
        CbcWorkArea area;
        area.put(0, chaining);
        area.put(16, text);
        area.addTo(16, 0, 16);
        area.put(text.size(), encrypt(area.blockAt(16)));
        return area.front(16 + text.size());
    }
    std::string out = bytesOf(chaining);
    AesBlock block = chaining;
    do {
        block = encrypt(block ^ blockOf(text));
        text.remove_prefix(16);
        if (text.empty() || text.size() >= 16) {
            out += bytesOf(block);
        }
    } while (text.size() >= 16);
    if (text.empty()) {
        return out;
    }
    std::string const padded = std::string(text) + std::string(16 - text.size(), '\0');
    out += bytesOf(encrypt(block ^ blockOf(padded)));
    return out + bytesOf(block).substr(0, text.size());
}

/// The layout of aes_decrypt_buf, which wants 16 bytes or more.
inline std::string modelDecryptStealing(BlockFunction const & decrypt, std::string_view sealed) {
    if (sealed.size() <= 32) {
        std::size_t const size = sealed.size() - 16;
        CbcWorkArea area;
        area.put(0, sealed);
        area.put(16, decrypt(area.blockAt(size)));
        area.addTo(0, 16, size);
        return area.front(size);
    }
    std::string out;
    AesBlock chaining = blockOf(sealed);
    sealed.remove_prefix(16);
    for (;;) {
        AesBlock const block = blockOf(sealed);
        AesBlock const deciphered = decrypt(block);
        sealed.remove_prefix(16);
        if (sealed.empty() || sealed.size() >= 16) {
            out += bytesOf(deciphered ^ chaining);
            chaining = block;
            if (sealed.empty()) {
                return out;
            }
            continue;
        }
        std::string const previous =
            std::string(sealed) + bytesOf(deciphered).substr(sealed.size());
        std::string const tail = bytesOf(blockOf(previous) ^ deciphered).substr(0, sealed.size());
        return out + bytesOf(decrypt(blockOf(previous)) ^ chaining) + tail;
    }
}

}  // namespace tvk::test
