#include "tvk/json/SimpleObjectCache.h"

#include <bit>
#include <cassert>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include "tvk/json/detail/CacheLookup.h"
#include "tvk/platform/CopyBytes.h"

namespace tvk {

namespace {

/// One for each attempt. The slot of the last one is computed and never looked at.
constexpr unsigned int PROBE_MULTIPLIERS[SimpleObjectCache::MAX_HASH_ATTEMPTS] = {3, 5, 7, 11};

/// What a multiplier of the table above is applied to. The kind in a slot is one above the type.
unsigned int probeStep(unsigned int size, unsigned int kind) { return size + 2 + kind; }

template <class Element>
Element * zeroed(std::size_t count) {
    void * const memory = std::calloc(count, sizeof(Element));
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return static_cast<Element *>(memory);
}

/// The same at a multiple of the alignment, which is more than calloc cares for. In front of the result
/// stands where the memory starts.
template <class Element>
Element * zeroedAligned(std::size_t count) {
    constexpr std::size_t SIZE = sizeof(Element);
    static_assert(alignof(Element) == SIZE);
    Element * const memory = zeroed<Element>(count + 1);
    std::size_t const beyond = reinterpret_cast<std::uintptr_t>(memory) % SIZE;
    char * const aligned = reinterpret_cast<char *>(memory + 1) - beyond;
    void * const whole = memory;
    std::memcpy(aligned - sizeof whole, &whole, sizeof whole);
    return reinterpret_cast<Element *>(aligned);
}

template <class Element>
void freeAligned(Element * aligned) {
    if (aligned != nullptr) {
        void * memory;
        std::memcpy(&memory, reinterpret_cast<char *>(aligned) - sizeof memory, sizeof memory);
        std::free(memory);
    }
}

}  // namespace

/// The two arrays of a table, all zero, until the cache takes them over.
class SimpleObjectCache::Arrays {
public:
    explicit Arrays(unsigned int capacity)
        : entries_(zeroedAligned<Entry>(capacity)), usage_(zeroed<unsigned char>(capacity)) {
        assert(std::has_single_bit(capacity));
    }

    Entry & operator[](unsigned int slot) { return entries_.get()[slot]; }
    Entry * releaseEntries() { return entries_.release(); }
    unsigned char * releaseUsage() { return usage_.release(); }

private:
    struct Free {
        void operator()(Entry * entries) const { freeAligned(entries); }
        void operator()(unsigned char * usage) const { std::free(usage); }
    };

    std::unique_ptr<Entry, Free> entries_;
    std::unique_ptr<unsigned char, Free> usage_;
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
    freeAligned(entries_);
    std::free(usage_);
}

RefCountedPtr<FieldValue> SimpleObjectCache::cachedString(unsigned int hash, void const * data,
                                                          unsigned int size) {
    return detail::CacheLookup::cachedString(*this, hash, data, size);
}

RefCountedPtr<FieldValue> SimpleObjectCache::cachedNumber(unsigned int hash, void const * data,
                                                          unsigned int size,
                                                          void const * fractionStart,
                                                          void const * exponentStart) {
    return detail::CacheLookup::cachedNumber(*this, hash, data, size, fractionStart, exponentStart);
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
            empty(entries_[slot]);
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
            if (arrays[slot].isFree()) {
                arrays[slot] = std::exchange(entry, Entry());
                ++kept;
                break;
            }
            slot = (entry.hash + probeStep(entry.keySize, entry.kind) * multiplier) & mask;
        }
        if (!entry.isFree()) {
            empty(entry);
        }
    }
    objectCount_ = kept;
    conflicts_ = 0;
    fastHits_ = 0;
    replaceArrays(arrays, capacity);
}

void SimpleObjectCache::purgeMemory() {
    clear();
    try {
        Arrays arrays(MIN_OBJECT_CACHE_SIZE);
        replaceArrays(arrays, MIN_OBJECT_CACHE_SIZE);
    } catch (std::bad_alloc const &) {
        if (objectCapacity_ < MIN_OBJECT_CACHE_SIZE) {
            throw;
        }
        objectCapacity_ = MIN_OBJECT_CACHE_SIZE;  // the larger arrays go on serving
    }
}

RefCountedPtr<FieldValue> SimpleObjectCache::internalCachedString(unsigned int hash,
                                                                  void const * data,
                                                                  unsigned int size) {
    return internalCachedObject(FLDTYPE_STRING, hash, data, size, nullptr, nullptr);
}

RefCountedPtr<FieldValue> SimpleObjectCache::internalCachedNumber(unsigned int hash,
                                                                  void const * data,
                                                                  unsigned int size,
                                                                  void const * fractionStart,
                                                                  void const * exponentStart) {
    return internalCachedObject(FLDTYPE_NUMBER, hash, data, size, fractionStart, exponentStart);
}

RefCountedPtr<FieldValue> SimpleObjectCache::internalCachedObject(
    FieldTypeEnum type, unsigned int hash, void const * data, unsigned int size,
    void const * fractionStart, void const * exponentStart) {
    unsigned int const mask = objectCapacity_ - 1;
    unsigned int const step = probeStep(size, Entry::kindOf(type));
    unsigned int slot = firstSlot(hash);
    Entry * victim = nullptr;
    for (unsigned int const multiplier : PROBE_MULTIPLIERS) {
        Entry & entry = entries_[slot];
        if (entry.matches(type, hash, data, size)) {
            return hit(slot);
        }
        if (entry.isFree()) {
            return newObject(&entry, type, hash, data, size, fractionStart, exponentStart);
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
    return newObject(victim, type, hash, data, size, fractionStart, exponentStart);
}

RefCountedPtr<FieldValue> SimpleObjectCache::newObject(Entry * place, FieldTypeEnum type,
                                                       unsigned int hash, void const * data,
                                                       unsigned int size,
                                                       void const * fractionStart,
                                                       void const * exponentStart) {
    // The old value goes before the new one is made, so the two never take up memory together. The
    // slot counts as free until it is filled: the conversion and the key's copy may throw.
    if (place != nullptr && !place->isFree()) {
        empty(*place);
        --objectCount_;
    }
    RefCountedPtr<FieldValue> value =
        type == FLDTYPE_STRING
            ? converter_->stringFromRawData(data, size)
            : converter_->numberFromRawData(data, size, fractionStart, exponentStart);
    if (value.isNull()) {
        throw std::bad_alloc();
    }
    if (place != nullptr) {
        fill(*place, hash, data, size, value.get());
        ++objectCount_;
    }
    return value;
}

void SimpleObjectCache::fill(Entry & entry, unsigned int hash, void const * data, unsigned int size,
                             FieldValue * value) const {
    unsigned int const kind = Entry::kindOf(value->getFieldType());
    if (size > Entry::SHORT_KEY_ROOM) {
        entry.longKey = longKey(data, size, *value, entry.ownsLongKey);
    } else {
        platform::copyBytes(entry.shortKey, static_cast<char const *>(data), size);
    }
    entry.keySize = size;
    entry.hash = hash;
    entry.kind = kind;
    entry.value = value;
    value->addRef();
}

/// The text of the value where that has the same bytes, else a copy. The default converter's texts stay
/// where and as they are while the value lives.
char const * SimpleObjectCache::longKey(void const * data, unsigned int size,
                                        FieldValue const & value, bool & owned) const {
    if (converter_ == defaultRawDataConverter()) {
        CString const & text = value.asString();
        if (static_cast<unsigned int>(text.GetLength()) == size &&
            std::memcmp(text.GetString(), data, size) == 0) {
            owned = false;
            return text.GetString();
        }
    }
    auto * const copy = static_cast<char *>(std::malloc(size));
    if (copy == nullptr) {
        throw std::bad_alloc();
    }
    std::memcpy(copy, data, size);
    owned = true;
    return copy;
}

void SimpleObjectCache::empty(Entry & entry) {
    FieldValue const * const value = std::exchange(entry.value, nullptr);
    entry.kind = 0;
    if (entry.keySize > Entry::SHORT_KEY_ROOM && entry.ownsLongKey) {
        std::free(const_cast<char *>(entry.longKey));
    }
    value->removeRef();
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
    freeAligned(entries_);
    std::free(usage_);
    entries_ = arrays.releaseEntries();
    usage_ = arrays.releaseUsage();
    objectCapacity_ = capacity;
}

}  // namespace tvk
