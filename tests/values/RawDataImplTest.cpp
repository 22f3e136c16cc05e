#include "tvk/values/RawDataImpl.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/support/AllocationCounter.h"
#include "tests/support/AllocationFailure.h"
#include "tests/support/ExactBuffer.h"
#include "tests/support/PrintCString.h"
#include "tests/support/RawDataDouble.h"
#include "tests/support/VirtualOrder.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk {
namespace {

using test::slotOf;
using Raw = RefCountedPtr<RawDataImpl>;

static_assert(!std::is_destructible_v<RawDataImpl>);

std::string bytesOf(RawData const & value, std::size_t length) {
    return std::string(static_cast<char const *>(value.getBuffer()), length);
}

/// A value of that size, with those bytes.
Raw filled(std::string const & bytes) {
    Raw const value(new RawDataImpl);
    value->setSize(static_cast<unsigned int>(bytes.size()), 0);
    if (!bytes.empty()) {
        std::memcpy(value->getBuffer(), bytes.data(), bytes.size());
    }
    return value;
}

struct Capacity {
    unsigned int asked;
    unsigned int given;
};

Capacity const CAPACITIES[] = {{0, 0},   {1, 4},   {2, 4},      {3, 4},       {4, 4},
                               {5, 8},   {7, 8},   {8, 8},      {9, 12},      {63, 64},
                               {64, 64}, {65, 68}, {999, 1000}, {1000, 1000}, {1001, 1004}};

TEST(RawDataImpl, StartsWithoutABuffer) {
    Raw const value(new RawDataImpl);
    EXPECT_EQ(value->getBuffer(), nullptr);
    EXPECT_EQ(value->getSize(), 0u);
    EXPECT_EQ(value->getCapacity(), 0u);
    EXPECT_EQ(value->getFieldType(), FLDTYPE_RAW);
}

TEST(RawDataImpl, ReservesMultiplesOfFour) {
    for (Capacity const & row : CAPACITIES) {
        SCOPED_TRACE(row.asked);
        Raw const value(new RawDataImpl(row.asked));
        EXPECT_EQ(value->getCapacity(), row.given);
        EXPECT_EQ(value->getSize(), 0u);
        EXPECT_EQ(value->getBuffer() == nullptr, row.asked == 0);
    }
}

TEST(RawDataImpl, GrowsToMultiplesOfFourByEveryRoad) {
    for (Capacity const & row : CAPACITIES) {
        SCOPED_TRACE(row.asked);
        test::ExactBuffer const bytes(std::string(row.asked, 'b'));
        Raw const built(new RawDataImpl(bytes.data(), row.asked));
        EXPECT_EQ(built->getCapacity(), row.given);
        Raw const appended(new RawDataImpl);
        appended->appendData(bytes.data(), row.asked);
        EXPECT_EQ(appended->getCapacity(), row.given);
        Raw const sized(new RawDataImpl);
        sized->setSize(row.asked, 0);
        EXPECT_EQ(sized->getCapacity(), row.given);
        EXPECT_EQ(sized->getSize(), row.asked);
    }
}

TEST(RawDataImpl, GrowsExactlyAndNeverDoubles) {
    Raw const value(new RawDataImpl(100u));
    std::string const bytes(101, 'x');
    value->appendData(bytes.data(), 101);
    EXPECT_EQ(value->getCapacity(), 104u);
    value->appendData(bytes.data(), 100);
    EXPECT_EQ(value->getCapacity(), 104u);
}

TEST(RawDataImpl, DeliberateAppendingLeavesTheSize) {
    test::ExactBuffer const bytes("abcde");
    Raw const built(new RawDataImpl(bytes.data(), bytes.length()));
    EXPECT_EQ(built->getSize(), 0u);
    EXPECT_EQ(built->getCapacity(), 8u);
    EXPECT_EQ(bytesOf(*built, 5), "abcde");

    Raw const appended(new RawDataImpl);
    EXPECT_EQ(&appended->appendData(bytes.data(), bytes.length()), appended.get());
    EXPECT_EQ(appended->getSize(), 0u);
    EXPECT_EQ(bytesOf(*appended, 5), "abcde");
    // So the next ones come to the same place.
    appended->appendData("XY", 2);
    EXPECT_EQ(bytesOf(*appended, 5), "XYcde");
}

TEST(RawDataImpl, AppendsBehindItsSize) {
    Raw const value(new RawDataImpl(12u));
    value->setSize(3, 'a');
    value->appendData("bcd", 3);
    EXPECT_EQ(value->getSize(), 3u);
    EXPECT_EQ(value->getCapacity(), 12u);
    EXPECT_EQ(bytesOf(*value, 6), "aaabcd");
}

TEST(RawDataImpl, DeliberateRoomIsJudgedByTheNewLengthAlone) {
    Raw const value(new RawDataImpl(8u));
    value->setSize(4, 'a');
    ASSERT_EQ(value->getCapacity(), 8u);
    value->appendData("bcde", 4);
    EXPECT_EQ(value->getCapacity(), 8u);
    value->appendData("bcdefghij", 4);
    EXPECT_EQ(value->getCapacity(), 8u);
    EXPECT_EQ(bytesOf(*value, 8), "aaaabcde");
}

TEST(RawDataImpl, AppendingNothingAllocatesNothing) {
    Raw const value(new RawDataImpl);
    test::AllocationCounter const allocations;
    RawData const & result = value->appendData(nullptr, 0);
    EXPECT_EQ(allocations.count(), 0);
    EXPECT_EQ(&result, value.get());
    EXPECT_EQ(value->getBuffer(), nullptr);
}

TEST(RawDataImpl, FillsWhatASizeAdds) {
    Raw const value(new RawDataImpl);
    value->setSize(3, 65);
    EXPECT_EQ(value->getCapacity(), 4u);
    EXPECT_EQ(value->getSize(), 3u);
    EXPECT_EQ(bytesOf(*value, 3), "AAA");
    value->setSize(1, 0);
    EXPECT_EQ(value->getSize(), 1u);
    EXPECT_EQ(value->getCapacity(), 4u);
    EXPECT_EQ(bytesOf(*value, 3), "AAA");
    value->setSize(3, 66);
    EXPECT_EQ(value->getCapacity(), 4u);
    EXPECT_EQ(bytesOf(*value, 3), "ABB");
    value->setSize(4, 0x143);
    EXPECT_EQ(value->getCapacity(), 8u);
    EXPECT_EQ(bytesOf(*value, 4), "ABBC");
    value->setSize(5, -1);
    EXPECT_EQ(bytesOf(*value, 5), "ABBC\xff");
}

TEST(RawDataImpl, ASizeOverwritesAppendedBytes) {
    Raw const value(new RawDataImpl("abcd", 4));
    value->setSize(2, '-');
    EXPECT_EQ(bytesOf(*value, 4), "--cd");
}

TEST(RawDataImpl, DeliberateASizeAsksForTheSumOfBothSizes) {
    Raw const value(new RawDataImpl);
    value->setSize(100, 1);
    EXPECT_EQ(value->getCapacity(), 100u);
    value->setSize(100, 1);
    EXPECT_EQ(value->getCapacity(), 200u);
    EXPECT_EQ(value->getSize(), 100u);
    // Even a shrink can grow the buffer.
    Raw const shrunk(new RawDataImpl);
    shrunk->setSize(100, 1);
    shrunk->setSize(1, 0);
    EXPECT_EQ(shrunk->getCapacity(), 104u);
    EXPECT_EQ(shrunk->getSize(), 1u);
    EXPECT_EQ(bytesOf(*shrunk, 100), std::string(100, '\1'));
}

TEST(RawDataImpl, RandomOperationsFollowTheRules) {
    std::mt19937 random(99);
    for (int round = 0; round < 200; ++round) {
        Raw const value(new RawDataImpl);
        unsigned int capacity = 0;
        unsigned int size = 0;
        std::string bytes;  // the whole buffer
        std::string known;  // 'k' where the model knows a byte
        auto const grow = [&](unsigned int amount) {
            capacity = (amount + 3) / 4 * 4;
            bytes.resize(capacity);
            known.resize(capacity, ' ');
        };
        auto const write = [&](unsigned int at, std::string const & text) {
            bytes.replace(at, text.size(), text);
            known.replace(at, text.size(), text.size(), 'k');
        };
        for (int step = 0; step < 60; ++step) {
            auto const amount = static_cast<unsigned int>(random() % 40);
            char const fill = static_cast<char>('a' + random() % 26);
            switch (random() % 8) {
                case 0:
                    value->clear();
                    capacity = size = 0;
                    bytes.clear();
                    known.clear();
                    break;
                case 1:
                case 2:
                case 3: {
                    unsigned int const roomBefore = std::max(amount, capacity);
                    if (amount > capacity ? size + amount > (amount + 3) / 4 * 4
                                          : size + amount > roomBefore) {
                        break;  // past the room: not a caller's right
                    }
                    if (amount > capacity) {
                        grow(amount);
                    }
                    std::string const text(amount, fill);
                    value->appendData(text.data(), amount);
                    write(size, text);
                    break;
                }
                default:
                    if (amount + size > capacity) {
                        grow(amount + size);
                    }
                    if (amount > size) {
                        write(size, std::string(amount - size, fill));
                    }
                    size = amount;
                    value->setSize(amount, fill);
            }
            ASSERT_EQ(value->getCapacity(), capacity);
            ASSERT_EQ(value->getSize(), size);
            for (unsigned int i = 0; i < capacity; ++i) {
                if (known[i] == 'k') {
                    ASSERT_EQ(bytesOf(*value, capacity)[i], bytes[i]) << i;
                }
            }
        }
    }
}

TEST(RawDataImpl, ClearGivesTheBufferBack) {
    Raw const value = filled("abc");
    value->clear();
    EXPECT_EQ(value->getBuffer(), nullptr);
    EXPECT_EQ(value->getSize(), 0u);
    EXPECT_EQ(value->getCapacity(), 0u);
    value->clear();
    value->setSize(2, 'x');
    EXPECT_EQ(bytesOf(*value, 2), "xx");
}

TEST(RawDataImpl, DeliberateACopyTakesAsManyBytesAsTheSizeSays) {
    Raw const fresh(new RawDataImpl("abcde", 5));
    Raw const emptyCopy(new RawDataImpl(*fresh));
    EXPECT_EQ(emptyCopy->getCapacity(), 0u);
    EXPECT_EQ(emptyCopy->getSize(), 0u);
    EXPECT_EQ(emptyCopy->getBuffer(), nullptr);

    Raw const source = filled("abcde");
    Raw const second(source);
    auto * const object = new RawDataImpl(*source);
    EXPECT_EQ(object->getRefCount(), 0);
    Raw const copy(object);
    EXPECT_EQ(copy->getSize(), 0u);
    EXPECT_EQ(copy->getCapacity(), 8u);
    EXPECT_EQ(bytesOf(*copy, 5), "abcde");
    EXPECT_NE(copy->getBuffer(), source->getBuffer());
}

TEST(RawDataImpl, IsBuiltFromAnyRawData) {
    RefCountedPtr<RawData> const source(new test::RawDataDouble("other"));
    Raw const copy(new RawDataImpl(*source));
    EXPECT_EQ(copy->getSize(), 0u);
    EXPECT_EQ(copy->getCapacity(), 8u);
    EXPECT_EQ(bytesOf(*copy, 5), "other");
    RawData const & interface = *copy;
    Raw const again(new RawDataImpl(interface));
    EXPECT_EQ(again->getCapacity(), 0u);
}

TEST(RawDataImpl, AssignmentClearsAndTakesTheBytes) {
    Raw const source = filled("abcde");
    Raw const second(source);
    Raw const target = filled("a much longer text than that");
    RawDataImpl & result = *target = *source;
    EXPECT_EQ(&result, target.get());
    EXPECT_EQ(target->getRefCount(), 1);
    EXPECT_EQ(target->getSize(), 0u);
    EXPECT_EQ(target->getCapacity(), 8u);
    EXPECT_EQ(bytesOf(*target, 5), "abcde");

    Raw const throughInterface = filled("a much longer text than that");
    RefCountedPtr<RawData> const other(new test::RawDataDouble("other"));
    *throughInterface = *other;
    EXPECT_EQ(throughInterface->getRefCount(), 1);
    EXPECT_EQ(throughInterface->getSize(), 0u);
    EXPECT_EQ(throughInterface->getCapacity(), 8u);
    EXPECT_EQ(bytesOf(*throughInterface, 5), "other");

    Raw const fresh(new RawDataImpl("abcde", 5));
    *target = *fresh;
    EXPECT_EQ(target->getCapacity(), 0u);
}

TEST(RawDataImpl, AssigningItselfChangesNothing) {
    Raw const value = filled("abc");
    RawDataImpl & alias = *value;
    *value = alias;
    EXPECT_EQ(bytesOf(*value, 3), "abc");
    EXPECT_EQ(value->getSize(), 3u);
    *value = static_cast<RawData const &>(alias);
    EXPECT_EQ(bytesOf(*value, 3), "abc");
    EXPECT_EQ(value->getSize(), 3u);
}

TEST(RawDataImpl, ComparesSizeAndBytes) {
    EXPECT_TRUE(*filled("abc") == *filled("abc"));
    EXPECT_FALSE(*filled("abc") == *filled("abd"));
    EXPECT_FALSE(*filled("abc") == *filled("ab"));
    EXPECT_TRUE(*filled("") == *filled(""));
    EXPECT_TRUE(*filled(std::string("a\0b", 3)) == *filled(std::string("a\0b", 3)));
    EXPECT_FALSE(*filled(std::string("a\0b", 3)) == *filled(std::string("a\0c", 3)));
}

TEST(RawDataImpl, DeliberateAppendedBytesDoNotCountInComparisons) {
    Raw const left(new RawDataImpl("abc", 3));
    Raw const right(new RawDataImpl("xyz", 3));
    EXPECT_TRUE(*left == *right);
    EXPECT_TRUE(*left == *Raw(new RawDataImpl));
}

TEST(RawDataImpl, PrintsItsAddressAndSize) {
    Raw const value = filled("abc");
    char expected[64];
    std::snprintf(expected, sizeof expected, "rawData@%p %d bytes", value->getBuffer(), 3);
    EXPECT_EQ(value->toString(), expected);
    std::snprintf(expected, sizeof expected, "rawData@%p %d bytes", static_cast<void *>(nullptr),
                  0);
    EXPECT_EQ(Raw(new RawDataImpl)->toString(), expected);
}

TEST(RawDataImpl, KeepsItsBufferWhereMemoryIsOut) {
    if (!test::AllocationFailure::available()) {
        GTEST_SKIP() << "allocations cannot be made to fail here";
    }
    Raw const value = filled("abc");
    void * const buffer = value->getBuffer();
    std::string const bytes(5000, 'x');
    std::function<void()> const growths[] = {
        [&] { value->setSize(5000, 0); },
        [&] { value->appendData(bytes.data(), 5000); },
    };
    for (auto const & growth : growths) {
        bool refused = false;
        std::string text;
        test::AllocationFailure failure;
        try {
            growth();
        } catch (std::bad_alloc const &) {
            refused = true;
        }
        failure.end();
        EXPECT_TRUE(refused);
        EXPECT_EQ(value->getBuffer(), buffer);
        EXPECT_EQ(value->getCapacity(), 4u);
        EXPECT_EQ(value->getSize(), 3u);
        EXPECT_EQ(bytesOf(*value, 3), "abc");
    }
}

TEST(RawDataImpl, IsTornDownWhereItsFirstBufferCannotBeHad) {
    if (!test::AllocationFailure::available()) {
        GTEST_SKIP() << "allocations cannot be made to fail here";
    }
    bool refused = false;
    test::AllocationFailure failure(1);  // the object itself can be had
    try {
        new RawDataImpl(5000u);
    } catch (std::bad_alloc const &) {
        refused = true;
    }
    failure.end();
    EXPECT_TRUE(refused);
}

TEST(RawDataImpl, RefusesSizesThatPass32Bits) {
    EXPECT_THROW(Raw(new RawDataImpl(0xffffffffu)), std::bad_alloc);
    Raw const value = filled("abc");
    EXPECT_THROW(value->setSize(0xfffffffeu, 0), std::bad_alloc);
    EXPECT_EQ(value->getSize(), 3u);
    EXPECT_EQ(bytesOf(*value, 3), "abc");
}

template <class Class>
void expectOrder() {
    test::expectVirtualOrder(16, {{"getBuffer", slotOf(&Class::getBuffer)},
                                  {"getSize", slotOf(&Class::getSize)},
                                  {"getCapacity", slotOf(&Class::getCapacity)},
                                  {"appendData", slotOf(&Class::appendData)},
                                  {"setSize", slotOf(&Class::setSize)},
                                  {"clear", slotOf(&Class::clear)}});
}

TEST(RawDataOrder, StandsBehindThatOfFieldValue) {
    expectOrder<RawData>();
    expectOrder<RawDataImpl>();
}

}  // namespace
}  // namespace tvk
