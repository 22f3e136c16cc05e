#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "tvk/json/SimpleObjectCache.h"

namespace tvk {

/// A slot of the table, free without a value or occupied with one. It fills a line of the processor's
/// cache, and so do short keys with it: a hit reads this line and the count of the value.
struct alignas(64) SimpleObjectCache::Entry {
    static constexpr unsigned int SHORT_KEY_ROOM = 40;

    FieldValue * value;
    unsigned int hash;
    unsigned int keySize;
    unsigned int kind;  // that of the value, see kindOf; 0 while the slot is free
    bool ownsLongKey;   // else it is the text of the value
    union {
        char shortKey[SHORT_KEY_ROOM];
        char const * longKey;
    };

    bool isFree() const { return value == nullptr; }

    static unsigned int kindOf(FieldTypeEnum type) { return static_cast<unsigned int>(type) + 1; }

    /// False for a free slot.
    bool matches(FieldTypeEnum wantedType, unsigned int wantedHash, void const * data,
                 unsigned int size) const {
        return mayMatch(wantedType, wantedHash, size) &&
               (size <= QUICK_KEY_SIZE ? isQuickKey(static_cast<char const *>(data))
                                       : std::memcmp(key(), data, size) == 0);
    }

    /// False for longer keys too, which take a call.
    bool matchesQuickly(FieldTypeEnum wantedType, unsigned int wantedHash, void const * data,
                        unsigned int size) const {
        return mayMatch(wantedType, wantedHash, size) && size <= QUICK_KEY_SIZE &&
               isQuickKey(static_cast<char const *>(data));
    }

    char const * key() const { return keySize > SHORT_KEY_ROOM ? longKey : shortKey; }

private:
    static constexpr unsigned int QUICK_KEY_SIZE = 32;
    static_assert(QUICK_KEY_SIZE <= SHORT_KEY_ROOM);

    bool mayMatch(FieldTypeEnum wantedType, unsigned int wantedHash, unsigned int size) const {
        return ((hash ^ wantedHash) | (keySize ^ size) | (kind ^ kindOf(wantedType))) == 0;
    }

    /// Whether the words at `at` are the same in both; 0 where they are.
    template <class Word>
    Word differenceAt(char const * data, unsigned int at) const {
        Word own;
        Word others;
        std::memcpy(&own, shortKey + at, sizeof own);
        std::memcpy(&others, data + at, sizeof others);
        return static_cast<Word>(own ^ others);
    }

    // Words that overlap: the bytes behind the data are not ours to read. Lengths come in no order that
    // a processor could guess, so there are few cases.
    bool isQuickKey(char const * data) const {
        using std::uint32_t;
        using std::uint64_t;
        unsigned int const size = keySize;
        if (size >= 8) {
            unsigned int const second = size / 16 * 8;
            unsigned int const last = size - 8;
            return (differenceAt<uint64_t>(data, 0) | differenceAt<uint64_t>(data, second) |
                    differenceAt<uint64_t>(data, last - second) |
                    differenceAt<uint64_t>(data, last)) == 0;
        }
        if (size >= 4) {
            return (differenceAt<uint32_t>(data, 0) | differenceAt<uint32_t>(data, size - 4)) == 0;
        }
        return size == 0 ||
               (differenceAt<unsigned char>(data, 0) | differenceAt<unsigned char>(data, size / 2) |
                differenceAt<unsigned char>(data, size - 1)) == 0;
    }
};

namespace detail {

/// The look-ups of a SimpleObjectCache, for callers to whom a call would cost as much as the hit. They
/// do what the cache's operations of the same names do.
class CacheLookup {
public:
    static RefCountedPtr<FieldValue> cachedString(SimpleObjectCache & cache, unsigned int hash,
                                                  void const * data, unsigned int size) {
        unsigned int const slot = cache.firstSlot(hash);
        return cache.entries_[slot].matchesQuickly(FLDTYPE_STRING, hash, data, size)
                   ? cache.hit(slot)
                   : cache.internalCachedString(hash, data, size);
    }

    static RefCountedPtr<FieldValue> cachedNumber(SimpleObjectCache & cache, unsigned int hash,
                                                  void const * data, unsigned int size,
                                                  void const * fractionStart,
                                                  void const * exponentStart) {
        unsigned int const slot = cache.firstSlot(hash);
        return cache.entries_[slot].matchesQuickly(FLDTYPE_NUMBER, hash, data, size)
                   ? cache.hit(slot)
                   : cache.internalCachedNumber(hash, data, size, fractionStart, exponentStart);
    }
};

}  // namespace detail

inline unsigned int SimpleObjectCache::firstSlot(unsigned int hash) const {
    return hash & (objectCapacity_ - 1);
}

inline RefCountedPtr<FieldValue> SimpleObjectCache::hit(unsigned int slot) {
    ++fastHits_;
    usage_[slot] = static_cast<unsigned char>(usage_[slot] * 2 + 1);
    return entries_[slot].value;
}

}  // namespace tvk
