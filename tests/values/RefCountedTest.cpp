#include "tvk/values/RefCounted.h"

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <type_traits>
#include <vector>

#include "tests/support/AllocationCounter.h"
#include "tests/support/VirtualOrder.h"
#include "tvk/values/FieldValue.h"
#include "tvk/values/ListData.h"
#include "tvk/values/MappedMessage.h"
#include "tvk/values/PropertySet.h"
#include "tvk/values/RawData.h"

namespace tvk {
namespace {

using test::slotOf;

int const LAST_COUNT = RefCounted::CONSTANT_REF_COUNT;

/// Counts how often it ends; its destructor is open, so it may stand anywhere.
class Counted : public RefCounted {
public:
    explicit Counted(int * ends = nullptr) : ends_(ends) {}
    ~Counted() override {
        if (ends_ != nullptr) {
            ++*ends_;
        }
    }

    static std::optional<std::size_t> destroySlot() { return slotOf(&Counted::destroyObject); }

    // The caller hands over null: that must do nothing.
    __attribute__((no_sanitize("undefined"))) static void destroyPlainly(Counted const * object) {
        object->RefCounted::destroyObject();
    }

private:
    int * ends_;
};

void count(Counted & object, int times) {
    for (int i = 0; i < times; ++i) {
        object.addRef();
    }
}

/// The classes whose assignment carries the count, each as a concrete class that adds nothing to it.
template <class Abstract>
bool assignsTheCount() {
    return std::is_copy_assignable_v<Abstract>;
}

TEST(RefCounted, StartsUnowned) {
    Counted const object;
    EXPECT_EQ(object.getRefCount(), 0);
}

TEST(RefCounted, CountsUpAndDownAndEndsAtZero) {
    int ends = 0;
    auto * const object = new Counted(&ends);
    object->addRef();
    EXPECT_EQ(object->getRefCount(), 1);
    object->addRef();
    EXPECT_EQ(object->getRefCount(), 2);
    object->removeRef();
    EXPECT_EQ(object->getRefCount(), 1);
    EXPECT_EQ(ends, 0);
    object->removeRef();
    EXPECT_EQ(ends, 1);
}

TEST(RefCounted, RemovingFromAnUnownedObjectDestroysNothing) {
    int ends = 0;
    {
        Counted const object(&ends);
        object.removeRef();
        EXPECT_EQ(object.getRefCount(), -1);
        object.removeRef();
        EXPECT_EQ(object.getRefCount(), -2);
        object.addRef();
        object.addRef();
        EXPECT_EQ(object.getRefCount(), 0);
        EXPECT_EQ(ends, 0);
    }
    EXPECT_EQ(ends, 1);
}

TEST(RefCounted, AConstantIsNeverCounted) {
    int ends = 0;
    {
        Counted object(&ends);
        object.setConstantRefCount();
        EXPECT_EQ(object.getRefCount(), 0x7fffffff);
        count(object, 1000);
        EXPECT_EQ(object.getRefCount(), 0x7fffffff);
        for (int i = 0; i < 3000; ++i) {
            object.removeRef();
        }
        EXPECT_EQ(object.getRefCount(), 0x7fffffff);
        EXPECT_EQ(ends, 0);
    }
}

/// A count next to the limit, reached in no time: assignment carries counts.
class PinnedCount : public RefCounted {
public:
    ~PinnedCount() override = default;
};

TEST(RefCounted, CountingUpToTheLimitMakesAConstant) {
    // Counting there takes 0x7fffffff steps; the object lies in memory whose count is set by hand.
    PinnedCount object;
    int const nearly = LAST_COUNT - 1;
    int * const place = reinterpret_cast<int *>(reinterpret_cast<char *>(&object) + sizeof(void *));
    ASSERT_EQ(*place, object.getRefCount());
    *place = nearly;
    ASSERT_EQ(object.getRefCount(), nearly);
    object.removeRef();
    EXPECT_EQ(object.getRefCount(), nearly - 1);
    object.addRef();
    EXPECT_EQ(object.getRefCount(), nearly);
    object.addRef();
    EXPECT_EQ(object.getRefCount(), LAST_COUNT);
    object.addRef();
    object.removeRef();
    object.removeRef();
    EXPECT_EQ(object.getRefCount(), LAST_COUNT);
}

TEST(RefCounted, ACopyStartsUnowned) {
    Counted object;
    count(object, 5);
    Counted const copy(object);
    EXPECT_EQ(copy.getRefCount(), 0);
    EXPECT_EQ(object.getRefCount(), 5);
    object.setConstantRefCount();
    Counted const copyOfConstant(object);
    EXPECT_EQ(copyOfConstant.getRefCount(), 0);
}

TEST(RefCounted, DeliberateAssignmentTakesOverTheCount) {
    Counted source;
    Counted target;
    count(source, 5);
    count(target, 2);
    RefCounted & result = static_cast<RefCounted &>(target) =
        static_cast<RefCounted const &>(source);
    EXPECT_EQ(&result, &target);
    EXPECT_EQ(target.getRefCount(), 5);
    EXPECT_EQ(source.getRefCount(), 5);
    source.setConstantRefCount();
    static_cast<RefCounted &>(target) = source;
    EXPECT_EQ(target.getRefCount(), LAST_COUNT);
}

TEST(RefCounted, DeliberateAssignmentOfTheAbstractClassesTakesOverTheCountToo) {
    EXPECT_TRUE(assignsTheCount<FieldValue>());
    EXPECT_TRUE(assignsTheCount<RawData>());
    EXPECT_TRUE(assignsTheCount<ListData>());
    EXPECT_TRUE(assignsTheCount<RecordData>());
    EXPECT_TRUE(assignsTheCount<PropertySet>());
    EXPECT_TRUE(assignsTheCount<KestrinMessage>());
    EXPECT_TRUE(assignsTheCount<KestrinMessageHeader>());

    RefCountedPtr<KestrinMessage> const source(new MappedMessage);
    RefCountedPtr<KestrinMessage> const other = source;
    RefCountedPtr<KestrinMessage> const target(new MappedMessage);
    source->setFieldValue("a", "text");
    FieldValue & targetValue = *target;
    targetValue = *source;
    EXPECT_EQ(target->getRefCount(), 2);
    EXPECT_EQ(target->getFieldCount(), 0u);
    target->removeRef();
}

TEST(RefCounted, DestroyObjectStandsBehindTheDestructor) {
    test::expectVirtualOrder(2, {{"destroyObject", Counted::destroySlot()}});
}

TEST(RefCounted, DestroyingNullDoesNothing) {
    Counted const * volatile null = nullptr;
    Counted::destroyPlainly(null);
    int ends = 0;
    Counted::destroyPlainly(new Counted(&ends));
    EXPECT_EQ(ends, 1);
}

/// Ends in its own way: kept instead of deleted.
class Kept : public RefCounted {
public:
    ~Kept() override = default;
    mutable int ends = 0;

protected:
    void destroyObject() const override { ++ends; }
};

TEST(RefCounted, ADropToZeroReachesTheMostDerivedClass) {
    Kept const object;
    object.addRef();
    object.removeRef();
    EXPECT_EQ(object.ends, 1);
    EXPECT_EQ(object.getRefCount(), 0);
}

TEST(RefCounted, AllocatesThroughTheLibrary) {
    static_assert(std::is_same_v<decltype(RefCounted::operator new(1)), void *>);
    void * const one = RefCounted::operator new(24);
    ASSERT_NE(one, nullptr);
    RefCounted::operator delete(one);
    void * const many = RefCounted::operator new[](24);
    ASSERT_NE(many, nullptr);
    RefCounted::operator delete[](many);
}

TEST(RefCounted, PlacementFormsAllocateNothing) {
    std::vector<Counted *> places(sizeof(Counted));
    void * const room = places.data();
    EXPECT_EQ(RefCounted::operator new(sizeof(Counted), room), room);
    // Through a pointer: compilers warn of a release that releases nothing.
    void (*const volatile placementDelete)(void *, void *) noexcept = &RefCounted::operator delete;
    placementDelete(room, room);
    test::AllocationCounter const allocations;
    int ends = 0;
    auto * const object = new (room) Counted(&ends);
    EXPECT_EQ(static_cast<void *>(object), room);
    object->~Counted();
    EXPECT_EQ(ends, 1);
    EXPECT_EQ(allocations.count(), 0);
}

TEST(RefCounted, ArraysAreAllocatedAsOne) {
    int ends = 0;
    std::unique_ptr<Counted[]> objects(
        new Counted[3]{Counted(&ends), Counted(&ends), Counted(&ends)});
    EXPECT_EQ(ends, 0);
    objects.reset();
    EXPECT_EQ(ends, 3);
}

}  // namespace
}  // namespace tvk
