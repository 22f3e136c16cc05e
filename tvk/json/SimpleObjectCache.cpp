#include "tvk/json/SimpleObjectCache.h"

#include <bit>
#include <cassert>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

namespace tvk {

namespace {

/// One for each attempt. The slot of the last one is computed and never looked at.
constexpr unsigned int PROBE_MULTIPLIERS[SimpleObjectCache::MAX_HASH_ATTEMPTS] = {3, 5, 7, 11};

/// What a multiplier of the table above is applied to.
unsigned int probeStep(unsigned int size, FieldTypeEnum type) {
    return size + 3 + static_cast<unsigned int>(type);
}

template <class Word>
bool sameWord(char const * left, char const * right) {
    Word leftWord;
    Word rightWord;
    std::memcpy(&leftWord, left, sizeof(Word));
    std::memcpy(&rightWord, right, sizeof(Word));
    return leftWord == rightWord;
}

/// Keys are short: a call of memcmp costs more than the comparison. Words overlap at the end.
inline bool sameBytes(void const * leftBytes, void const * rightBytes, unsigned int size) {
    auto const * const left = static_cast<char const *>(leftBytes);
    auto const * const right = static_cast<char const *>(rightBytes);
    if (size > 32) {
        return std::memcmp(left, right, size) == 0;
    }
    if (size >= 8) {
        for (unsigned int at = 0; at + 8 < size; at += 8) {
            if (!sameWord<std::uint64_t>(left + at, right + at)) {
                return false;
            }
        }
        return sameWord<std::uint64_t>(left + size - 8, right + size - 8);
    }
    if (size >= 4) {
        return sameWord<std::uint32_t>(left, right) &&
               sameWord<std::uint32_t>(left + size - 4, right + size - 4);
    }
    if (size >= 2) {
        return sameWord<std::uint16_t>(left, right) && left[size - 1] == right[size - 1];
    }
    return size == 0 || left[0] == right[0];
}

struct FreeMemory {
    void operator()(void * memory) const { std::free(memory); }
};

template <class Element>
using MallocArray = std::unique_ptr<Element[], FreeMemory>;

template <class Element>
MallocArray<Element> zeroedArray(unsigned int count) {
    MallocArray<Element> array(static_cast<Element *>(std::calloc(count, sizeof(Element))));
    if (array == nullptr) {
        throw std::bad_alloc();
    }
    return array;
}

/// Gives memory back; where that fails, the larger block goes on serving.
template <class Element>
Element * shrunkArray(Element * array, unsigned int count) {
    void * const shrunk = std::realloc(static_cast<void *>(array), count * sizeof(Element));
    return shrunk == nullptr ? array : static_cast<Element *>(shrunk);
}

}  // namespace

/// A slot. Free, without a value, or occupied, with one. Short keys stand in the slot: most
/// are, and a hit then reads one place less and a miss allocates once less.
struct SimpleObjectCache::Entry {
    FieldValue * value;
    unsigned int hash;
    unsigned int keySize;
    FieldTypeEnum type;  // of the value, so that a comparison need not ask it
    union {
        char shortKey[40];
        char * longKey;  // from malloc
    };

    bool isFree() const { return value == nullptr; }

    bool matches(FieldTypeEnum wantedType, unsigned int wantedHash, void const * data,
                 unsigned int size) const {
        return hash == wantedHash && keySize == size && type == wantedType &&
               sameBytes(hasLongKey() ? longKey : shortKey, data, size);
    }

    void fill(unsigned int newHash, void const * data, unsigned int size, FieldValue * newValue) {
        FieldTypeEnum const newType = newValue->getFieldType();
        keySize = size;
        if (size != 0) {
            std::memcpy(hasLongKey() ? newLongKey() : shortKey, data, size);
        }
        hash = newHash;
        type = newType;
        value = newValue;
        newValue->addRef();
    }

    void empty() {
        Entry const old = std::exchange(*this, Entry());
        if (old.hasLongKey()) {
            std::free(old.longKey);
        }
        old.value->removeRef();
    }

private:
    bool hasLongKey() const { return keySize > sizeof shortKey; }

    char * newLongKey() {
        longKey = static_cast<char *>(std::malloc(keySize));
        if (longKey == nullptr) {
            throw std::bad_alloc();
        }
        return longKey;
    }
};

/// The two arrays of a table, all zero, until the cache takes them over.
struct SimpleObjectCache::Arrays {
    explicit Arrays(unsigned int capacity)
        : entries(zeroedArray<Entry>(capacity)), usage(zeroedArray<unsigned char>(capacity)) {
        assert(std::has_single_bit(capacity));
    }

    MallocArray<Entry> entries;
    MallocArray<unsigned char> usage;
};

SimpleObjectCache::RawDataToObjectConverter::~RawDataToObjectConverter() = default;

SimpleObjectCache::SimpleObjectCache(RawDataToObjectConverter * converter)
    : SimpleObjectCache(converter, DEFAULT_OBJECT_CACHE_SIZE) {}

SimpleObjectCache::SimpleObjectCache(RawDataToObjectConverter * converter, unsigned int capacity)
    : converter_(converter), objectCapacity_(capacity) {
    Arrays arrays(capacity);
    replaceArrays(arrays, capacity);
}

SimpleObjectCache::~SimpleObjectCache() {
    clear();
    std::free(entries_);
    std::free(usage_);
}

RefCountedPtr<FieldValue> SimpleObjectCache::cachedString(unsigned int hash, void const * data,
                                                          unsigned int size) {
    return internalCachedObject(FLDTYPE_STRING, hash, data, size, nullptr, nullptr);
}

RefCountedPtr<FieldValue> SimpleObjectCache::cachedNumber(unsigned int hash, void const * data,
                                                          unsigned int size,
                                                          void const * fractionStart,
                                                          void const * exponentStart) {
    return internalCachedObject(FLDTYPE_NUMBER, hash, data, size, fractionStart, exponentStart);
}

unsigned int SimpleObjectCache::hashCode(void const * data, unsigned int size) {
    auto const * const bytes = static_cast<unsigned char const *>(data);
    unsigned int hash = HASH_CODE_INITIAL_VALUE;
    for (unsigned int i = 0; i < size; ++i) {
        hash = hash * 33 + bytes[i];
    }
    return hash;
}

unsigned int SimpleObjectCache::nextHash(unsigned int hash, int value) {
    return static_cast<unsigned int>(value) + hash * 33;
}

unsigned int SimpleObjectCache::nextHash(unsigned int hash, void const * data, int size) {
    auto const * const bytes = static_cast<unsigned char const *>(data);
    for (int i = 0; i < size; ++i) {
        hash = hash * 33 + bytes[i];
    }
    return hash;
}

void SimpleObjectCache::clear() {
    for (unsigned int slot = 0; slot < objectCapacity_; ++slot) {
        if (!entries_[slot].isFree()) {
            entries_[slot].empty();
        }
    }
    std::memset(usage_, 0, objectCapacity_);
    objectCount_ = 0;
    conflicts_ = 0;
    fastHits_ = 0;
}

void SimpleObjectCache::setCapacity(unsigned int capacity) {
    Arrays arrays(capacity);
    unsigned int const mask = capacity - 1;
    unsigned int kept = 0;
    for (unsigned int oldSlot = 0; oldSlot < objectCapacity_; ++oldSlot) {
        Entry & entry = entries_[oldSlot];
        if (entry.isFree()) {
            continue;
        }
        unsigned int slot = entry.hash & mask;
        for (unsigned int const multiplier : PROBE_MULTIPLIERS) {
            if (arrays.entries[slot].isFree()) {
                arrays.entries[slot] = std::exchange(entry, Entry());
                ++kept;
                break;
            }
            slot = (entry.hash + probeStep(entry.keySize, entry.type) * multiplier) & mask;
        }
        if (!entry.isFree()) {
            entry.empty();
        }
    }
    objectCount_ = kept;
    conflicts_ = 0;
    fastHits_ = 0;
    replaceArrays(arrays, capacity);
}

void SimpleObjectCache::purgeMemory() {
    clear();
    if (objectCapacity_ < MIN_OBJECT_CACHE_SIZE) {
        setCapacity(MIN_OBJECT_CACHE_SIZE);
        return;
    }
    entries_ = shrunkArray(entries_, MIN_OBJECT_CACHE_SIZE);
    usage_ = shrunkArray(usage_, MIN_OBJECT_CACHE_SIZE);
    objectCapacity_ = MIN_OBJECT_CACHE_SIZE;
}

RefCountedPtr<FieldValue> SimpleObjectCache::internalCachedObject(
    FieldTypeEnum type, unsigned int hash, void const * data, unsigned int size,
    void const * fractionStart, void const * exponentStart) {
    auto const converted = [&] {
        RefCountedPtr<FieldValue> value =
            type == FLDTYPE_STRING
                ? converter_->stringFromRawData(data, size)
                : converter_->numberFromRawData(data, size, fractionStart, exponentStart);
        if (value.isNull()) {
            throw std::bad_alloc();
        }
        return value;
    };

    unsigned int const mask = objectCapacity_ - 1;
    unsigned int const step = probeStep(size, type);
    unsigned int slot = hash & mask;
    Entry * victim = nullptr;
    for (unsigned int const multiplier : PROBE_MULTIPLIERS) {
        Entry & entry = entries_[slot];
        if (entry.isFree()) {
            RefCountedPtr<FieldValue> value = converted();
            entry.fill(hash, data, size, value.get());
            ++objectCount_;
            return value;
        }
        if (entry.matches(type, hash, data, size)) {
            ++fastHits_;
            usage_[slot] = static_cast<unsigned char>(usage_[slot] * 2 + 1);
            return entry.value;
        }
        ++conflicts_;
        if (victim == nullptr) {
            if (usage_[slot] == 0) {
                victim = &entry;
            } else {
                usage_[slot] >>= 1;
                age();
                age();
            }
        }
        slot = (hash + step * multiplier) & mask;
    }

    if (victim == nullptr) {
        return converted();
    }
    // The old value goes before the new one is made, so the two never take up memory together. The
    // slot counts as free until it is filled: the conversion and the key's copy may throw.
    victim->empty();
    --objectCount_;
    RefCountedPtr<FieldValue> value = converted();
    victim->fill(hash, data, size, value.get());
    ++objectCount_;
    return value;
}

/// One step of the feedback shift register, and the slot it falls on loses half of its history.
///
/// Deliberate: nothing seeds the register, and from 0 it stays at 0, so every step falls on slot 0.
/// Slot 0 ages fast and the others where they conflict; the hit rates that callers have sized their
/// caches for come from that.
void SimpleObjectCache::age() {
    constexpr unsigned int FEEDBACK = 0x80200003;
    unsigned int const signBit = randomState_ & 0x80000000;
    randomState_ = ((randomState_ >> 1) | signBit) ^ ((randomState_ & 1) != 0 ? FEEDBACK : 0);
    usage_[randomState_ & (objectCapacity_ - 1)] >>= 1;
}

void SimpleObjectCache::replaceArrays(Arrays & arrays, unsigned int capacity) {
    std::free(entries_);
    std::free(usage_);
    entries_ = arrays.entries.release();
    usage_ = arrays.usage.release();
    objectCapacity_ = capacity;
}

}  // namespace tvk
