#include "tvk/json/SimpleObjectCache.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <memory>
#include <new>
#include <optional>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/support/AllocationCounter.h"
#include "tests/support/AllocationFailure.h"
#include "tests/support/ExactBuffer.h"
#include "tests/support/ProbeValue.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using tvk::FieldValue;
using tvk::RefCountedPtr;
using tvk::SimpleObjectCache;
using tvk::test::AllocationCounter;
using tvk::test::AllocationFailure;
using tvk::test::ExactBuffer;
using tvk::test::ProbeLog;
using tvk::test::ProbeValue;

/// Numbers what it converts: "0:text" is the first conversion, of the bytes `text`.
class NumberingConverter : public SimpleObjectCache::RawDataToObjectConverter {
public:
    FieldValue * stringFromRawData(void const * data, unsigned int size) override {
        return convert(stringKind, data, size);
    }
    FieldValue * numberFromRawData(void const * data, unsigned int size, void const * fraction,
                                   void const * exponent) override {
        fractionStart = fraction;
        exponentStart = exponent;
        return convert(FLDTYPE_NUMBER, data, size);
    }

    ProbeLog log;
    int conversions = 0;
    bool throws = false;
    bool givesNull = false;
    FieldTypeEnum stringKind = FLDTYPE_STRING;
    void const * fractionStart = nullptr;
    void const * exponentStart = nullptr;

private:
    FieldValue * convert(FieldTypeEnum type, void const * data, unsigned int size) {
        if (throws) {
            throw std::runtime_error("refused");
        }
        if (givesNull) {
            return nullptr;
        }
        std::string const text(static_cast<char const *>(data), size);
        return new ProbeValue(log, type, std::to_string(conversions++) + ':' + text);
    }
};

std::string nameOf(RefCountedPtr<FieldValue> const & value) {
    return static_cast<ProbeValue const &>(*value).name();
}

/// A cache over a numbering converter.
class CacheTest : public ::testing::Test {
protected:
    void make(unsigned int capacity) {
        cache.reset();
        cache = std::make_unique<SimpleObjectCache>(&converter, capacity);
    }
    std::string string(unsigned int hash, std::string const & text) {
        ExactBuffer const bytes(text);
        return nameOf(cache->cachedString(hash, bytes.data(), bytes.length()));
    }
    std::string number(unsigned int hash, std::string const & text) {
        ExactBuffer const bytes(text);
        return nameOf(cache->cachedNumber(hash, bytes.data(), bytes.length(), nullptr, nullptr));
    }
    void hit(int times, unsigned int hash, std::string const & text) {
        unsigned long const before = cache->fastHitCount();
        for (int i = 0; i < times; ++i) {
            string(hash, text);
        }
        ASSERT_EQ(cache->fastHitCount() - before, static_cast<unsigned long>(times));
    }

    NumberingConverter converter;
    std::unique_ptr<SimpleObjectCache> cache;
};

TEST(SimpleObjectCacheHash, HasItsConstants) {
    EXPECT_EQ(SimpleObjectCache::DEFAULT_OBJECT_CACHE_SIZE, 4096);
    EXPECT_EQ(SimpleObjectCache::MIN_OBJECT_CACHE_SIZE, 1024);
    EXPECT_EQ(SimpleObjectCache::LARGER_OBJECT_CACHE_SIZE, 8192);
    EXPECT_EQ(SimpleObjectCache::HASH_CODE_INITIAL_VALUE, 0x539C1505u);
    EXPECT_EQ(SimpleObjectCache::MAX_HASH_ATTEMPTS, 4);
}

TEST(SimpleObjectCacheHash, FoldsUnsignedBytes) {
    constexpr unsigned int START = SimpleObjectCache::HASH_CODE_INITIAL_VALUE;
    EXPECT_EQ(SimpleObjectCache::hashCode("", 0), 1402737925u);
    EXPECT_EQ(SimpleObjectCache::hashCode(nullptr, 0), 1402737925u);
    EXPECT_EQ(SimpleObjectCache::hashCode("a", 1), START * 33 + 'a');
    EXPECT_EQ(SimpleObjectCache::hashCode("ab", 2), (START * 33 + 'a') * 33 + 'b');
    EXPECT_EQ(SimpleObjectCache::hashCode("\xE9", 1), START * 33 + 0xE9);
    EXPECT_EQ(SimpleObjectCache::hashCode("\0", 1), START * 33);
}

TEST(SimpleObjectCacheHash, GoesOnFromAHash) {
    EXPECT_EQ(SimpleObjectCache::nextHash(2u, 7), 73u);
    EXPECT_EQ(SimpleObjectCache::nextHash(2u, -67), 0xFFFFFFFFu);
    EXPECT_EQ(SimpleObjectCache::nextHash(0x80000000u, 1), 0x80000001u);
    ExactBuffer const bytes(std::string("caf\xC3\xA9\0!", 7));
    unsigned int const first = SimpleObjectCache::hashCode(bytes.data(), 3);
    EXPECT_EQ(SimpleObjectCache::nextHash(first, bytes.data() + 3, 4),
              SimpleObjectCache::hashCode(bytes.data(), 7));
    EXPECT_EQ(SimpleObjectCache::nextHash(5u, bytes.data(), 0), 5u);
    EXPECT_EQ(SimpleObjectCache::nextHash(5u, bytes.data(), -3), 5u);
}

TEST_F(CacheTest, StartsEmpty) {
    SimpleObjectCache const byDefault(&converter);
    EXPECT_EQ(byDefault.capacity(), 4096u);
    EXPECT_EQ(byDefault.size(), 0u);
    EXPECT_EQ(byDefault.conflictCount(), 0u);
    EXPECT_EQ(byDefault.fastHitCount(), 0u);
    make(16);
    EXPECT_EQ(cache->capacity(), 16u);
    EXPECT_EQ(cache->size(), 0u);
}

TEST_F(CacheTest, GivesTheSameObjectForTheSameKey) {
    make(16);
    unsigned int const hash = SimpleObjectCache::hashCode("abc", 3);
    RefCountedPtr<FieldValue> const first = cache->cachedString(hash, "abc", 3);
    RefCountedPtr<FieldValue> const second = cache->cachedString(hash, "abc", 3);
    EXPECT_EQ(first.get(), second.get());
    EXPECT_EQ(first->getRefCount(), 3);
    EXPECT_EQ(cache->size(), 1u);
    EXPECT_EQ(cache->fastHitCount(), 1u);
    EXPECT_EQ(cache->conflictCount(), 0u);
}

TEST_F(CacheTest, ComparesKeysOfEveryLengthToTheLastByte) {
    make(16);
    std::string const text = "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
    for (std::size_t length = 0; length <= text.size(); ++length) {
        SCOPED_TRACE(length);
        std::string const key = text.substr(0, length);
        cache->clear();
        std::string const made = string(1, key);
        EXPECT_EQ(string(1, key), made);
        for (std::size_t i = 0; i < length; ++i) {
            std::string other = key;
            other[i] = '!';
            cache->clear();
            string(1, key);
            string(1, other);
            EXPECT_EQ(cache->fastHitCount(), 0u) << "byte " << i;
        }
    }
}

TEST_F(CacheTest, CopiesTheKey) {
    make(16);
    std::string key = "key";
    RefCountedPtr<FieldValue> const value = cache->cachedString(7, key.data(), 3);
    key = "xxx";
    EXPECT_EQ(cache->cachedString(7, "key", 3), value);
}

TEST_F(CacheTest, HandsThePlacesInANumberToTheConverter) {
    make(16);
    char const text[] = "1.5e3";
    cache->cachedNumber(7, text, 5, text + 1, text + 3);
    EXPECT_EQ(converter.fractionStart, text + 1);
    EXPECT_EQ(converter.exponentStart, text + 3);
    cache->cachedNumber(7, text, 5, nullptr, nullptr);
    EXPECT_EQ(cache->fastHitCount(), 1u) << "the places are no part of the key";
}

/// The slots that are occupied, told by the conflict of a new key that looks there first. `fill` fills
/// a fresh cache.
template <class Fill>
std::set<unsigned int> occupiedSlots(unsigned int capacity, Fill fill) {
    std::set<unsigned int> occupied;
    for (unsigned int slot = 0; slot < capacity; ++slot) {
        NumberingConverter converter;
        SimpleObjectCache cache(&converter, capacity);
        fill(cache);
        unsigned long const before = cache.conflictCount();
        cache.cachedString(slot, "a key that is new", 17);
        if (cache.conflictCount() != before) {
            occupied.insert(slot);
        }
    }
    return occupied;
}

TEST_F(CacheTest, KeepsTextAndNumberOfTheSameBytesApart) {
    make(64);
    EXPECT_EQ(string(1, "1"), "0:1");
    EXPECT_EQ(number(1, "1"), "1:1");
    EXPECT_EQ(cache->size(), 2u);
    EXPECT_EQ(cache->conflictCount(), 1u);
    EXPECT_EQ(string(1, "1"), "0:1");
    EXPECT_EQ(number(1, "1"), "1:1");
    EXPECT_THAT(occupiedSlots(64,
                              [](SimpleObjectCache & table) {
                                  table.cachedString(1, "1", 1);
                                  table.cachedNumber(1, "1", 1, nullptr, nullptr);
                              }),
                ElementsAre(1u, 1u + (1 + 3 + 1) * 3));
}

TEST_F(CacheTest, ProbesByHashSizeAndKind) {
    auto const fillTexts = [](SimpleObjectCache & table) {
        for (char const * key : {"aa", "bb", "cc", "dd"}) {
            table.cachedString(1, key, 2);
        }
    };
    EXPECT_THAT(occupiedSlots(128, fillTexts), ElementsAre(1u, 1u + 5 * 3, 1u + 5 * 5, 1u + 5 * 7));
    auto const fillNumbers = [](SimpleObjectCache & table) {
        for (char const * key : {"11", "22", "33", "44"}) {
            table.cachedNumber(1, key, 2, nullptr, nullptr);
        }
    };
    EXPECT_THAT(occupiedSlots(128, fillNumbers),
                ElementsAre(1u, 1u + 6 * 3, 1u + 6 * 5, 1u + 6 * 7));
}

TEST_F(CacheTest, NeverLooksAtTheSlotOfTheLastMultiplier) {
    make(128);
    for (char const * key : {"aa", "bb", "cc", "dd"}) {
        string(1, key);
    }
    EXPECT_EQ(cache->conflictCount(), 0u + 1 + 2 + 3);
    string(1, "ee");
    EXPECT_EQ(cache->conflictCount(), 6u + 4);
    EXPECT_EQ(cache->size(), 4u) << "1 + 5 * 11 is free, but the first victim was taken";
    unsigned long const before = cache->conflictCount();
    string(1 + 5 * 11, "new");
    EXPECT_EQ(cache->conflictCount(), before);
}

TEST_F(CacheTest, GivesTheFirstSlotWithoutHistoryToANewKey) {
    make(128);
    for (char const * key : {"aa", "bb", "cc", "dd"}) {
        string(1, key);
    }
    hit(1, 1, "aa");
    string(1, "ee");  // passes over "aa", whose history it uses up, and replaces "bb"
    EXPECT_EQ(string(1, "ee"), "4:ee");
    EXPECT_EQ(string(1, "cc"), "2:cc");
    EXPECT_EQ(string(1, "dd"), "3:dd");
    EXPECT_EQ(string(1, "aa"), "0:aa");
    EXPECT_EQ(converter.conversions, 5);
    EXPECT_EQ(cache->size(), 4u);
}

TEST_F(CacheTest, LeavesHistoriesAloneOnceAVictimIsFound) {
    make(128);
    for (char const * key : {"aa", "bb", "cc", "dd"}) {
        string(1, key);
    }
    hit(1, 1, "bb");
    hit(1, 1, "cc");
    hit(1, 1, "dd");
    string(1, "ee");  // replaces "aa" and halves none of the others
    string(1, "ff");  // replaces "ee", for the same reason
    EXPECT_EQ(string(1, "bb"), "1:bb");
    EXPECT_EQ(string(1, "cc"), "2:cc");
    EXPECT_EQ(string(1, "dd"), "3:dd");
    EXPECT_EQ(converter.conversions, 6);
}

TEST_F(CacheTest, GivesTheSecondKeyOfOneHashTheNextSlot) {
    make(128);
    EXPECT_EQ(string(9, "one"), "0:one");
    EXPECT_EQ(string(9, "two"), "1:two");
    EXPECT_EQ(cache->conflictCount(), 1u);
    EXPECT_EQ(cache->size(), 2u);
    EXPECT_EQ(string(9, "one"), "0:one");
    EXPECT_EQ(string(9, "two"), "1:two");
}

TEST_F(CacheTest, ReplacesTheOnlySlotWhenItHasNoHistory) {
    make(1);
    EXPECT_EQ(string(1, "a"), "0:a");
    EXPECT_EQ(string(2, "b"), "1:b");
    EXPECT_EQ(cache->size(), 1u);
    EXPECT_EQ(cache->conflictCount(), 4u);
    EXPECT_EQ(string(2, "b"), "1:b");
    EXPECT_EQ(cache->fastHitCount(), 1u);
}

// Texts of odd length and an odd hash probe slot 1 alone in a table of two.
TEST_F(CacheTest, ReturnsAValueUncachedWhenEverySlotHasAHistory) {
    make(2);
    string(1, "a");
    hit(8, 1, "a");
    EXPECT_EQ(string(1, "b"), "1:b");  // halves 255 four times
    EXPECT_EQ(cache->conflictCount(), 4u);
    EXPECT_EQ(cache->size(), 1u);
    EXPECT_EQ(string(1, "b"), "2:b");  // and 15 to 0, so nothing is left
    EXPECT_EQ(string(1, "b"), "3:b");
    EXPECT_EQ(string(1, "b"), "3:b");
    EXPECT_EQ(cache->size(), 1u);
    EXPECT_EQ(converter.log.alive, 1);
}

TEST_F(CacheTest, DeliberatelyAgesSlotZeroThreeTimesAConflict) {
    make(1);
    string(0, "a");
    hit(8, 0, "a");
    EXPECT_EQ(string(0, "b"), "1:b");  // 255, 31, 3, 0: the fourth probe finds no history
    EXPECT_EQ(string(0, "b"), "1:b");
    EXPECT_EQ(cache->conflictCount(), 4u);
}

TEST_F(CacheTest, DeliberatelyAgesSlotZeroAtConflictsElsewhere) {
    make(2);
    string(0, "zz");  // slot 0, and all its probes by the even length and step 5: 0, 1, 1, 1
    string(1, "a");
    hit(8, 0, "zz");
    hit(8, 1, "a");
    string(1, "b");  // four conflicts at slot 1 take 8 halvings away from slot 0
    EXPECT_EQ(cache->size(), 2u);
    EXPECT_EQ(string(2, "c"), "3:c");  // slot 0 has no history left
    EXPECT_EQ(string(2, "c"), "3:c");
    EXPECT_EQ(string(1, "a"), "1:a");
}

TEST_F(CacheTest, KeepsAHistoryOfEightBits) {
    make(2);
    string(1, "a");
    hit(100, 1, "a");
    string(1, "b");
    string(1, "b");
    EXPECT_EQ(string(1, "b"), "3:b") << "255 halved eight times is 0";
    EXPECT_EQ(string(1, "b"), "3:b");
}

TEST_F(CacheTest, TakesTheEmptyTextAsAKey) {
    make(16);
    std::string const made = nameOf(cache->cachedString(3, nullptr, 0));
    EXPECT_EQ(cache->size(), 1u);
    EXPECT_EQ(string(3, ""), made);
    EXPECT_EQ(cache->fastHitCount(), 1u);
    EXPECT_EQ(string(3, "x"), "1:x");
    EXPECT_EQ(cache->conflictCount(), 1u);
}

TEST_F(CacheTest, TakesAHashOfZeroAsAnyOther) {
    make(16);
    EXPECT_EQ(string(0, ""), "0:");
    EXPECT_EQ(string(0, ""), "0:");
    EXPECT_EQ(cache->size(), 1u);
}

TEST_F(CacheTest, FindsAValueByItsOwnKind) {
    make(128);
    converter.stringKind = FLDTYPE_NUMBER;
    EXPECT_EQ(string(1, "5"), "0:5");
    EXPECT_EQ(number(1, "5"), "0:5");
    EXPECT_EQ(string(1, "5"), "1:5") << "a text look-up does not find a number";
    EXPECT_EQ(cache->conflictCount(), 1u);
}

TEST_F(CacheTest, ReleasesTheOldValueBeforeItMakesTheNewOne) {
    make(1);
    string(1, "a");
    string(2, "b");
    EXPECT_THAT(converter.log.events, ElementsAre("make 0:a", "end 0:a", "make 1:b"));
}

TEST_F(CacheTest, LetsAValueOutliveItsEntry) {
    make(1);
    RefCountedPtr<FieldValue> const value = cache->cachedString(1, "a", 1);
    string(2, "b");
    EXPECT_EQ(value->getRefCount(), 1);
    EXPECT_EQ(nameOf(value), "0:a");
    cache.reset();
    EXPECT_EQ(converter.log.alive, 1);
}

TEST_F(CacheTest, ClearsEverythingButTheCapacity) {
    make(16);
    string(1, "a");
    string(1, "b");
    string(1, "a");
    cache->clear();
    EXPECT_EQ(cache->size(), 0u);
    EXPECT_EQ(cache->conflictCount(), 0u);
    EXPECT_EQ(cache->fastHitCount(), 0u);
    EXPECT_EQ(cache->capacity(), 16u);
    EXPECT_EQ(converter.log.alive, 0);
    EXPECT_EQ(string(1, "a"), "2:a");
    cache->clear();
    cache->clear();
    EXPECT_EQ(converter.log.alive, 0);
}

TEST_F(CacheTest, ForgetsHistoriesWhenItClears) {
    make(2);
    string(1, "a");
    hit(8, 1, "a");
    cache->clear();
    string(1, "a");
    string(1, "b");
    EXPECT_EQ(string(1, "b"), "2:b") << "the slot had no history";
    EXPECT_EQ(cache->fastHitCount(), 1u);
}

TEST_F(CacheTest, KeepsWhatFitsWhenItShrinks) {
    make(1024);
    for (unsigned int i = 0; i < 100; ++i) {
        string(i * 7, std::to_string(i));
    }
    string(0, "0");
    cache->setCapacity(4);
    EXPECT_EQ(cache->capacity(), 4u);
    EXPECT_LE(cache->size(), 4u);
    EXPECT_GT(cache->size(), 0u);
    EXPECT_EQ(converter.log.alive, static_cast<int>(cache->size()));
    EXPECT_EQ(cache->conflictCount(), 0u);
    EXPECT_EQ(cache->fastHitCount(), 0u);
    EXPECT_EQ(string(0, "0"), "0:0") << "the first in slot order finds a place";
}

TEST_F(CacheTest, KeepsEveryValueWhenItGrows) {
    make(16);
    std::vector<std::string> names;
    for (unsigned int i = 0; i < 12; ++i) {
        names.push_back(string(i, "k"));
    }
    ASSERT_EQ(cache->size(), 12u);
    cache->setCapacity(64);
    EXPECT_EQ(cache->size(), 12u);
    for (unsigned int i = 0; i < 12; ++i) {
        EXPECT_EQ(string(i, "k"), names[i]);
    }
    EXPECT_EQ(cache->conflictCount(), 0u);
}

TEST_F(CacheTest, ForgetsHistoriesWhenTheCapacityIsSet) {
    make(2);
    string(1, "a");
    hit(8, 1, "a");
    cache->setCapacity(2);
    string(1, "b");
    EXPECT_EQ(string(1, "b"), "1:b") << "the slot had no history";
    EXPECT_EQ(cache->fastHitCount(), 1u);
}

TEST_F(CacheTest, PurgesToTheSmallestSize) {
    for (unsigned int const capacity : {8192u, 1024u, 16u}) {
        SCOPED_TRACE(capacity);
        make(capacity);
        string(1, "a");
        string(1, "a");
        cache->purgeMemory();
        EXPECT_EQ(cache->capacity(), 1024u);
        EXPECT_EQ(cache->size(), 0u);
        EXPECT_EQ(cache->fastHitCount(), 0u);
        EXPECT_EQ(converter.log.alive, 0);
        for (unsigned int i = 0; i < 2000; ++i) {
            string(i, std::to_string(i));
        }
        EXPECT_EQ(cache->size(), 1024u);
    }
}

TEST_F(CacheTest, StandsWhenAConversionThrows) {
    make(2);
    converter.throws = true;
    EXPECT_THROW(string(1, "a"), std::runtime_error);  // a free slot
    EXPECT_EQ(cache->size(), 0u);
    converter.throws = false;
    string(1, "a");
    converter.throws = true;
    EXPECT_THROW(string(1, "b"), std::runtime_error);  // a slot that is replaced
    EXPECT_EQ(cache->size(), 0u) << "the old value was released first";
    EXPECT_EQ(converter.log.alive, 0);
    converter.throws = false;
    EXPECT_EQ(string(1, "a"), "1:a");
    hit(8, 1, "a");
    converter.throws = true;
    EXPECT_THROW(string(1, "b"), std::runtime_error);  // no slot
    converter.throws = false;
    EXPECT_EQ(string(1, "a"), "1:a");
    EXPECT_EQ(cache->size(), 1u);
    EXPECT_EQ(converter.log.alive, 1);
}

TEST_F(CacheTest, ReportsAValueThatCouldNotBeMade) {
    make(2);
    converter.givesNull = true;
    EXPECT_THROW(string(1, "a"), std::bad_alloc);
    EXPECT_THROW(number(1, "1"), std::bad_alloc);
    EXPECT_EQ(cache->size(), 0u);
    converter.givesNull = false;
    EXPECT_EQ(string(1, "a"), "0:a");
}

TEST_F(CacheTest, CallsTheConverterInItsOrder) {
    // The places of the virtual operations: two for the destructor, then these.
    constexpr std::size_t STRING = 2;
    constexpr std::size_t NUMBER = 3;
    SimpleObjectCache::RawDataToObjectConverter * const object = &converter;
    void * const * const table = *reinterpret_cast<void * const * const *>(object);
    using StringPlace = FieldValue * (*)(void *, void const *, unsigned int);
    using NumberPlace =
        FieldValue * (*)(void *, void const *, unsigned int, void const *, void const *);
    RefCountedPtr<FieldValue> const text =
        reinterpret_cast<StringPlace>(table[STRING])(object, "a", 1);
    EXPECT_EQ(text->getFieldType(), FLDTYPE_STRING);
    char const bytes[] = "1.5";
    RefCountedPtr<FieldValue> const number =
        reinterpret_cast<NumberPlace>(table[NUMBER])(object, bytes, 3, bytes + 1, nullptr);
    EXPECT_EQ(number->getFieldType(), FLDTYPE_NUMBER);
    EXPECT_EQ(converter.fractionStart, bytes + 1);
}

TEST_F(CacheTest, AllocatesNothingOnAHit) {
    if (!AllocationCounter::available()) {
        GTEST_SKIP() << "allocations are not counted here";
    }
    make(16);
    cache->cachedString(1, "a", 1);
    cache->cachedNumber(1, "a", 1, nullptr, nullptr);
    AllocationCounter const allocations;
    for (int i = 0; i < 100; ++i) {
        cache->cachedString(1, "a", 1);
        cache->cachedNumber(1, "a", 1, nullptr, nullptr);
    }
    EXPECT_EQ(allocations.count(), 0);
    EXPECT_EQ(cache->fastHitCount(), 200u);
}

/// The bytes of what has been made before are given again, so that memory runs out in the cache alone.
class GivenConverter : public SimpleObjectCache::RawDataToObjectConverter {
public:
    FieldValue * stringFromRawData(void const *, unsigned int) override { return next.get(); }
    FieldValue * numberFromRawData(void const *, unsigned int, void const *,
                                   void const *) override {
        return next.get();
    }
    RefCountedPtr<FieldValue> next;
};

TEST_F(CacheTest, ReportsMemoryThatIsOut) {
    if (!AllocationFailure::available()) {
        GTEST_SKIP() << "allocations cannot be made to fail in this build";
    }
    GivenConverter given;
    given.next = new ProbeValue(converter.log, FLDTYPE_STRING, "value");
    auto const throwsAfter = [](long long allowed, auto const & work) {
        AllocationFailure failure(allowed);
        try {
            work();
            return false;
        } catch (std::bad_alloc const &) {
            return true;
        }
    };
    for (long long const allowed : {0, 1}) {
        EXPECT_TRUE(throwsAfter(allowed, [&] { SimpleObjectCache table(&given); }));
        EXPECT_TRUE(throwsAfter(allowed, [&] { SimpleObjectCache table(&given, 16); }));
    }
    // Long enough to stand outside of the slot.
    std::string const key(100, 'k');
    std::string const other(100, 'o');
    auto const lookUp = [](SimpleObjectCache & target, unsigned int hash,
                           std::string const & text) {
        target.cachedString(hash, text.data(), static_cast<unsigned int>(text.size()));
    };
    SimpleObjectCache table(&given, 1);
    EXPECT_TRUE(throwsAfter(0, [&] { lookUp(table, 1, key); }));
    EXPECT_EQ(table.size(), 0u);
    EXPECT_EQ(given.next->getRefCount(), 1);
    lookUp(table, 1, key);
    EXPECT_TRUE(throwsAfter(0, [&] { lookUp(table, 2, other); }));
    EXPECT_EQ(table.size(), 0u) << "the old value had gone by then";
    EXPECT_EQ(given.next->getRefCount(), 1);
    lookUp(table, 1, key);
    for (long long const allowed : {0, 1}) {
        EXPECT_TRUE(throwsAfter(allowed, [&] { table.setCapacity(1024); }));
        EXPECT_EQ(table.capacity(), 1u);
        EXPECT_EQ(table.size(), 1u);
    }
    EXPECT_FALSE(throwsAfter(0, [&] { lookUp(table, 1, key); }));
    EXPECT_EQ(table.fastHitCount(), 1u);
}

// The table again, written down plainly, with names in place of values. It is the reference for long
// random runs.

class CacheModel {
public:
    explicit CacheModel(unsigned int capacity) : slots_(capacity) {}

    std::string lookUp(FieldTypeEnum type, std::uint32_t hash, std::string const & key) {
        auto const capacity = static_cast<std::uint32_t>(slots_.size());
        std::optional<std::size_t> victim;
        std::uint32_t slot = hash % capacity;
        for (std::uint32_t const prime : {3u, 5u, 7u, 11u}) {
            Slot & found = slots_[slot];
            if (!found.entry) {
                found.entry = Entry{hash, type, key, convert(key)};
                return found.entry->name;
            }
            Entry const & entry = *found.entry;
            if (entry.hash == hash && entry.type == type && entry.key == key) {
                ++hits;
                found.usage = (found.usage * 2 + 1) % 256;
                return entry.name;
            }
            ++conflicts;
            if (!victim) {
                if (found.usage == 0) {
                    victim = slot;
                } else {
                    found.usage /= 2;
                    age();
                    age();
                }
            }
            slot = place(hash, key, type, prime, capacity);
        }
        if (!victim) {
            return convert(key);
        }
        slots_[*victim].entry.reset();
        slots_[*victim].entry = Entry{hash, type, key, convert(key)};
        return slots_[*victim].entry->name;
    }

    void clear() {
        slots_.assign(slots_.size(), Slot());
        conflicts = 0;
        hits = 0;
    }

    void setCapacity(unsigned int capacity) {
        std::vector<Slot> fresh(capacity);
        for (Slot const & old : slots_) {
            if (!old.entry) {
                continue;
            }
            Entry const & entry = *old.entry;
            std::uint32_t slot = entry.hash % capacity;
            for (std::uint32_t const prime : {3u, 5u, 7u, 11u}) {
                if (!fresh[slot].entry) {
                    fresh[slot].entry = entry;
                    break;
                }
                slot = place(entry.hash, entry.key, entry.type, prime, capacity);
            }
        }
        slots_ = fresh;
        conflicts = 0;
        hits = 0;
    }

    void purge() {
        slots_.assign(1024, Slot());
        conflicts = 0;
        hits = 0;
    }

    std::vector<std::string> names() const {
        std::vector<std::string> all;
        for (Slot const & slot : slots_) {
            if (slot.entry) {
                all.push_back(slot.entry->name);
            }
        }
        return all;
    }

    unsigned int size() const {
        unsigned int count = 0;
        for (Slot const & slot : slots_) {
            count += slot.entry ? 1 : 0;
        }
        return count;
    }

    int conversions = 0;
    unsigned long conflicts = 0;
    unsigned long hits = 0;

private:
    struct Entry {
        std::uint32_t hash;
        FieldTypeEnum type;
        std::string key;
        std::string name;
    };
    struct Slot {
        std::optional<Entry> entry;
        int usage = 0;
    };

    static std::uint32_t place(std::uint32_t hash, std::string const & key, FieldTypeEnum type,
                               std::uint32_t prime, std::uint32_t capacity) {
        auto const step = static_cast<std::uint32_t>(key.size()) + 3 + (type == FLDTYPE_NUMBER);
        return (hash + step * prime) % capacity;
    }

    std::string convert(std::string const & key) {
        return std::to_string(conversions++) + ':' + key;
    }

    void age() {
        std::int64_t const state = static_cast<std::int32_t>(register_);
        std::int64_t const halved = state >= 0 ? state / 2 : -((-state + 1) / 2);
        register_ = static_cast<std::uint32_t>(halved) ^ (register_ % 2 != 0 ? 0x80200003u : 0u);
        slots_[register_ % slots_.size()].usage /= 2;
    }

    std::vector<Slot> slots_;
    std::uint32_t register_ = 0;
};

class CacheAgainstModel : public CacheTest, public ::testing::WithParamInterface<unsigned int> {};

TEST_P(CacheAgainstModel, AgreesStepByStep) {
    unsigned int const capacity = GetParam();
    constexpr unsigned int SEED = 20140102;
    SCOPED_TRACE("seed " + std::to_string(SEED));
    std::mt19937 random(SEED + capacity);
    auto const below = [&](unsigned int limit) {
        return static_cast<unsigned int>(random() % limit);
    };

    // Half of the keys come often and half of them seldom, a quarter with crowded hashes.
    struct Key {
        std::uint32_t hash;
        FieldTypeEnum type;
        std::string text;
    };
    std::vector<Key> keys;
    for (unsigned int i = 0; i < capacity * 3 + 8; ++i) {
        std::string text(below(12), 'k');
        text += std::to_string(i / 2);
        std::uint32_t const hash =
            below(4) == 0
                ? below(3) * 0x01000000u
                : SimpleObjectCache::hashCode(text.data(), static_cast<unsigned int>(text.size()));
        keys.push_back({hash, below(3) == 0 ? FLDTYPE_NUMBER : FLDTYPE_STRING, text});
    }

    make(capacity);
    CacheModel model(capacity);
    constexpr int STEPS = 60000;
    for (int step = 0; step < STEPS; ++step) {
        unsigned int const action = below(STEPS);
        if (action < 4) {
            cache->clear();
            model.clear();
        } else if (action < 10) {
            unsigned int const changed = 1u << below(13);
            cache->setCapacity(changed);
            model.setCapacity(changed);
        } else if (action < 14) {
            cache->setCapacity(capacity);
            model.setCapacity(capacity);
        } else if (action < 16) {
            cache->purgeMemory();
            model.purge();
        } else {
            auto const count = static_cast<unsigned int>(keys.size());
            Key const & key = keys[below(2) == 0 ? below(count) : below(count / 4 + 1)];
            std::string const name = key.type == FLDTYPE_STRING ? string(key.hash, key.text)
                                                                : number(key.hash, key.text);
            ASSERT_EQ(name, model.lookUp(key.type, key.hash, key.text)) << "step " << step;
            ASSERT_EQ(cache->conflictCount(), model.conflicts) << "step " << step;
            ASSERT_EQ(cache->fastHitCount(), model.hits) << "step " << step;
            ASSERT_EQ(converter.conversions, model.conversions) << "step " << step;
            ASSERT_EQ(converter.log.alive, static_cast<int>(cache->size())) << "step " << step;
            converter.log.events.clear();
            continue;
        }
        ASSERT_EQ(cache->size(), model.size()) << "step " << step;
        ASSERT_EQ(cache->conflictCount(), model.conflicts) << "step " << step;
        ASSERT_EQ(cache->fastHitCount(), model.hits) << "step " << step;
        ASSERT_EQ(converter.log.alive, static_cast<int>(model.size())) << "step " << step;
    }
    EXPECT_EQ(cache->size(), model.size());
    EXPECT_EQ(converter.log.alive, static_cast<int>(model.names().size()));
}

INSTANTIATE_TEST_SUITE_P(Capacities, CacheAgainstModel,
                         ::testing::Values(1u, 2u, 4u, 16u, 1024u, 4096u),
                         ::testing::PrintToStringParamName());

}  // namespace
