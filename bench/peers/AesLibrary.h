#pragma once

#include <algorithm>
#include <array>
#include <span>
#include <string>
#include <string_view>

#include "bench/Work.h"
#include "bench/peers/EachItem.h"

/// The works of AES, out of a `Library` with these members, as far as the work wants them:
///
///     void setKeys(Byte const * key)              both schedules of 16 bytes
///     void encrypt(Byte * block)                  in place
///     void decrypt(Byte * block)
///     void seal(Byte const * text, std::size_t size, Byte * out)     CBC of whole blocks, behind the
///                                                                    16 bytes that start the chain
///     void open(Byte const * sealed, std::size_t size, Byte * out)   the way back
namespace tvk::bench {

using Byte = unsigned char;

constexpr std::size_t AES_BLOCK = 16;

inline Byte const * bytesOf(std::string_view text) {
    return reinterpret_cast<Byte const *>(text.data());
}

template <class Library>
class KeyedLibrary {
public:
    KeyedLibrary() { library_.setKeys(bytesOf(CIPHER_KEY)); }

    Library * operator->() { return &library_; }

private:
    Library library_;
};

/// One block, through the cipher time after time.
template <class Library, void (Library::*RUN)(Byte *)>
class AesBlocks {
public:
    std::string_view operator()(std::string_view) {
        (library_.operator->()->*RUN)(block_.data());
        return {reinterpret_cast<char const *>(block_.data()), block_.size()};
    }

private:
    KeyedLibrary<Library> library_;
    std::array<Byte, AES_BLOCK> block_{};
};

/// Into a room that is kept.
class KeptRoom {
public:
    Byte * get(std::size_t size) {
        if (room_.size() < size) {
            room_.resize(size);
        }
        return reinterpret_cast<Byte *>(room_.data());
    }
    std::string_view front(std::size_t size) const { return {room_.data(), size}; }

private:
    std::string room_;
};

template <class Library>
class CbcEncryption {
public:
    std::string_view operator()(std::string_view text) {
        std::size_t const size = text.size() + AES_BLOCK;
        library_->seal(bytesOf(text), text.size(), room_.get(size));
        return room_.front(size);
    }

private:
    KeyedLibrary<Library> library_;
    KeptRoom room_;
};

template <class Library>
class CbcDecryption {
public:
    std::string_view operator()(std::string_view sealed) {
        std::size_t const size = sealed.size() - AES_BLOCK;
        library_->open(bytesOf(sealed), sealed.size(), room_.get(size));
        return room_.front(size);
    }

private:
    KeyedLibrary<Library> library_;
    KeptRoom room_;
};

template <class Library>
class AesKeys : public AesKeyWork {
public:
    std::string resultOf(std::string_view const & key) override {
        library_.setKeys(bytesOf(key));
        std::array<Byte, 2 * AES_BLOCK> blocks{};
        library_.encrypt(blocks.data());
        library_.decrypt(blocks.data() + AES_BLOCK);
        return std::string(blocks.begin(), blocks.end());
    }
    void runAll(std::span<std::string_view const> keys) override {
        for (std::string_view const & key : keys) {
            library_.setKeys(bytesOf(key));
            keep(library_);
        }
    }

private:
    Library library_;
};

template <class Library>
void addBlockCipher(Peers & peers, std::string const & name) {
    addFunction<AesBlocks<Library, &Library::encrypt>>(peers.aesEncryptions, name);
    addFunction<AesBlocks<Library, &Library::decrypt>>(peers.aesDecryptions, name);
}

template <class Library>
void addChain(Peers & peers, std::string const & name) {
    addFunction<CbcEncryption<Library>>(peers.cbcEncryptions, name);
    addFunction<CbcDecryption<Library>>(peers.cbcDecryptions, name);
}

template <class Library>
void addKeys(Peers & peers, std::string const & name) {
    addPeer<AesKeys<Library>>(peers.aesKeys, name);
}

/// Start of a chain that is copied to where it belongs; peers are given it, tvk draws its own.
inline Byte * putChainStart(Byte * out) { return std::fill_n(out, AES_BLOCK, Byte{0x5A}); }

}  // namespace tvk::bench
