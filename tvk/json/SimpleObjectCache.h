#pragma once

#include "tvk/platform/Export.h"
#include "tvk/values/FieldValue.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk {

namespace detail {
class CacheLookup;
}

/// Shares the strings and numbers that repeat from message to message: given raw bytes and their
/// hash, it gives one immutable value object for them. A table of fixed size with four probes a
/// look-up and a second chance for what was hit lately; where no slot is free or old, a value is
/// just not kept.
///
/// Keys:      the raw bytes, their hash and the kind of value. One key must always come with the
/// same
///            hash; the scanner's differs from hashCode on bytes of 0x80 and above.
/// Ownership: the converter is borrowed and must outlive the cache. Each occupied slot holds a copy
///            of its key and one count on its value.
/// Threads:   one at a time, look-ups too. The values are shared: nobody may change them.
/// Failure:   std::bad_alloc from the constructors, setCapacity and look-ups; else only what a
///            converter throws.
class TVK_API SimpleObjectCache {
public:
    static constexpr int DEFAULT_OBJECT_CACHE_SIZE = 4096;
    static constexpr int MIN_OBJECT_CACHE_SIZE = 1024;
    static constexpr int LARGER_OBJECT_CACHE_SIZE = 8192;
    static constexpr unsigned int HASH_CODE_INITIAL_VALUE = 1402737925;
    static constexpr int MAX_HASH_ATTEMPTS = 4;

    /// Decides how bytes become values. Each operation returns a new object of count 0, or null
    /// when it cannot allocate one, which the look-up turns into std::bad_alloc. It may throw; the
    /// cache then stands as if the look-up had found no place, but a replaced value is gone.
    /// Requires: it does not call the cache that calls it.
    class TVK_API RawDataToObjectConverter {
    public:
        virtual ~RawDataToObjectConverter();
        virtual FieldValue * stringFromRawData(void const * data, unsigned int size) = 0;
        /// Both pointers null for an integer, see SimpleJsonHandler.
        virtual FieldValue * numberFromRawData(void const * data, unsigned int size,
                                               void const * fractionStart,
                                               void const * exponentStart) = 0;
    };

    /// Strings: UTF-8 brought to the application's code page. Numbers: a 64-bit integer, saturated,
    /// or a double, with the raw text as text form; an integer clears errno. Null where memory is
    /// out.
    class TVK_API DefaultRawDataToObjectConverter : public RawDataToObjectConverter {
    public:
        FieldValue * stringFromRawData(void const * data, unsigned int size) override;
        FieldValue * numberFromRawData(void const * data, unsigned int size,
                                       void const * fractionStart,
                                       void const * exponentStart) override;
    };

    /// The one instance, made on first use.
    static RawDataToObjectConverter * defaultRawDataConverter();

    explicit SimpleObjectCache(RawDataToObjectConverter * converter);
    /// Requires: `capacity` is a power of two.
    SimpleObjectCache(RawDataToObjectConverter * converter, unsigned int capacity);
    SimpleObjectCache(SimpleObjectCache const &) = delete;
    SimpleObjectCache & operator=(SimpleObjectCache const &) = delete;
    ~SimpleObjectCache();

    RefCountedPtr<FieldValue> cachedString(unsigned int hash, void const * data, unsigned int size);
    /// The two pointers go to the converter; they are no part of the key.
    RefCountedPtr<FieldValue> cachedNumber(unsigned int hash, void const * data, unsigned int size,
                                           void const * fractionStart, void const * exponentStart);

    /// HASH_CODE_INITIAL_VALUE, then hash * 33 + byte for each byte as unsigned, modulo 2^32.
    static unsigned int hashCode(void const * data, unsigned int size);
    static unsigned int nextHash(unsigned int hash, int value);
    /// `hash` itself for a size below 1.
    static unsigned int nextHash(unsigned int hash, void const * data, int size);

    unsigned int size() const { return objectCount_; }
    unsigned int capacity() const { return objectCapacity_; }
    unsigned long conflictCount() const { return conflicts_; }
    unsigned long fastHitCount() const { return fastHits_; }

    /// Empties the table and zeroes the counters; the capacity stays.
    void clear();
    /// Moves what fits in four probes to a new table, zeroes the counters and forgets which values
    /// were hit lately. Requires: `capacity` is a power of two.
    void setCapacity(unsigned int capacity);
    /// clear(), and the capacity becomes MIN_OBJECT_CACHE_SIZE: the one way to give memory back.
    void purgeMemory();

private:
    friend class detail::CacheLookup;
    struct Entry;
    class Arrays;

    // The whole look-up, for what is not found at once in the first slot. The first two take what the
    // public operations take, so that these need no frame of their own.
    RefCountedPtr<FieldValue> internalCachedString(unsigned int hash, void const * data,
                                                   unsigned int size);
    RefCountedPtr<FieldValue> internalCachedNumber(unsigned int hash, void const * data,
                                                   unsigned int size, void const * fractionStart,
                                                   void const * exponentStart);
    RefCountedPtr<FieldValue> internalCachedObject(FieldTypeEnum type, unsigned int hash,
                                                   void const * data, unsigned int size,
                                                   void const * fractionStart,
                                                   void const * exponentStart);
    /// Makes the value, and keeps it at `place` where that is not null.
    RefCountedPtr<FieldValue> newObject(Entry * place, FieldTypeEnum type, unsigned int hash,
                                        void const * data, unsigned int size,
                                        void const * fractionStart, void const * exponentStart);
    unsigned int firstSlot(unsigned int hash) const;
    RefCountedPtr<FieldValue> hit(unsigned int slot);
    void fill(Entry & entry, unsigned int hash, void const * data, unsigned int size,
              FieldValue * value) const;
    char const * longKey(void const * data, unsigned int size, FieldValue const & value,
                         bool & owned) const;
    static void empty(Entry & entry);
    void age();
    void replaceArrays(Arrays & arrays, unsigned int capacity);

    RawDataToObjectConverter * converter_;
    Entry * entries_ = nullptr;
    unsigned char * usage_ = nullptr;
    unsigned int randomState_ = 0;
    unsigned int objectCount_ = 0;
    unsigned int objectCapacity_;
    unsigned long conflicts_ = 0;
    unsigned long fastHits_ = 0;
};

}  // namespace tvk
