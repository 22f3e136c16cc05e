#include "tvk/values/RefCountedPtr.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <type_traits>
#include <unordered_set>

#include "tvk/values/RefCounted.h"

namespace tvk {
namespace {

class Base : public RefCounted {
public:
    explicit Base(int * ends = nullptr) : ends_(ends) {}
    int answer() const { return 42; }
    static void end(Base const & object) { object.destroyObject(); }

protected:
    ~Base() override {
        if (ends_ != nullptr) {
            ++*ends_;
        }
    }

private:
    int * ends_;
};

class Derived : public Base {
public:
    using Base::Base;
};

class Unrelated : public RefCounted {};

using BasePtr = RefCountedPtr<Base>;
using DerivedPtr = RefCountedPtr<Derived>;

static_assert(std::is_nothrow_destructible_v<BasePtr>);
static_assert(sizeof(BasePtr) == sizeof(void *));
static_assert(std::is_convertible_v<Base *, BasePtr>);
static_assert(std::is_convertible_v<DerivedPtr, BasePtr>);
static_assert(!std::is_convertible_v<BasePtr, DerivedPtr>);
static_assert(!std::is_convertible_v<RefCountedPtr<Unrelated>, BasePtr>);
static_assert(!std::is_convertible_v<BasePtr, bool>);
static_assert(std::is_constructible_v<bool, BasePtr>);
static_assert(std::is_convertible_v<BasePtr, RefCountedPtr<Base const>>);

TEST(RefCountedPtr, NullIsAllowedEverywhere) {
    BasePtr empty;
    BasePtr const fromNull(nullptr);
    BasePtr const fromPointer(static_cast<Base *>(nullptr));
    EXPECT_TRUE(empty.isNull());
    EXPECT_FALSE(static_cast<bool>(empty));
    EXPECT_EQ(empty.get(), nullptr);
    EXPECT_EQ(empty, fromNull);
    EXPECT_EQ(fromNull, fromPointer);
    BasePtr const copy(empty);
    empty = copy;
    empty = nullptr;
    empty = static_cast<Base *>(nullptr);
    EXPECT_TRUE(empty.isNull());
}

TEST(RefCountedPtr, CountsOnConstructionAndReleasesOnDestruction) {
    int ends = 0;
    {
        BasePtr const first(new Base(&ends));
        EXPECT_EQ(first->getRefCount(), 1);
        {
            BasePtr const second(first);
            EXPECT_EQ(first->getRefCount(), 2);
            BasePtr const third = first.get();
            EXPECT_EQ(first->getRefCount(), 3);
        }
        EXPECT_EQ(first->getRefCount(), 1);
        EXPECT_EQ(ends, 0);
    }
    EXPECT_EQ(ends, 1);
}

TEST(RefCountedPtr, GivesAccessToTheObject) {
    BasePtr const pointer(new Base);
    EXPECT_EQ(pointer->answer(), 42);
    EXPECT_EQ((*pointer).answer(), 42);
    EXPECT_EQ(&*pointer, pointer.get());
    EXPECT_FALSE(pointer.isNull());
    EXPECT_TRUE(static_cast<bool>(pointer));
}

TEST(RefCountedPtr, AssignmentCountsTheNewAndReleasesTheOld) {
    int firstEnds = 0;
    int secondEnds = 0;
    BasePtr target(new Base(&firstEnds));
    BasePtr const source(new Base(&secondEnds));
    BasePtr & result = target = source;
    EXPECT_EQ(&result, &target);
    EXPECT_EQ(firstEnds, 1);
    EXPECT_EQ(source->getRefCount(), 2);
    target = nullptr;
    EXPECT_EQ(source->getRefCount(), 1);
    target = source.get();
    EXPECT_EQ(source->getRefCount(), 2);
    EXPECT_EQ(secondEnds, 0);
}

TEST(RefCountedPtr, AssigningWhatIsHeldChangesNothing) {
    int ends = 0;
    BasePtr pointer(new Base(&ends));
    BasePtr & alias = pointer;
    pointer = alias;
    EXPECT_EQ(pointer->getRefCount(), 1);
    pointer = pointer.get();
    EXPECT_EQ(pointer->getRefCount(), 1);
    BasePtr const other(pointer);
    pointer = other;
    EXPECT_EQ(pointer->getRefCount(), 2);
    pointer = std::move(alias);
    EXPECT_EQ(pointer->getRefCount(), 2);
    EXPECT_EQ(ends, 0);
}

/// Holds one more object, which nobody else keeps alive.
class Owner : public Base {
public:
    explicit Owner(BasePtr kept) : kept_(std::move(kept)) {}
    BasePtr & kept() { return kept_; }

private:
    BasePtr kept_;
};

TEST(RefCountedPtr, TakesAPointerThatOnlyTheOldObjectKeepsAlive) {
    int ends = 0;
    auto * const inner = new Base(&ends);
    BasePtr pointer(new Owner(inner));
    pointer = inner;
    EXPECT_EQ(pointer.get(), inner);
    EXPECT_EQ(inner->getRefCount(), 1);
    EXPECT_EQ(ends, 0);
}

TEST(RefCountedPtr, TakesAReferenceThatDiesWithTheOldObject) {
    int ends = 0;
    RefCountedPtr<Owner> owner(new Owner(new Base(&ends)));
    auto * const inner = owner->kept().get();
    BasePtr pointer(owner);
    BasePtr & source = owner->kept();
    owner = nullptr;
    pointer = source;
    EXPECT_EQ(pointer.get(), inner);
    EXPECT_EQ(pointer->getRefCount(), 1);
    EXPECT_EQ(ends, 0);

    RefCountedPtr<Owner> second(new Owner(new Base(&ends)));
    BasePtr moved(second);
    BasePtr & movedSource = second->kept();
    auto * const movedInner = movedSource.get();
    second = nullptr;
    moved = std::move(movedSource);
    EXPECT_EQ(moved.get(), movedInner);
    EXPECT_EQ(moved->getRefCount(), 1);
    EXPECT_EQ(ends, 0);
}

/// Looks at a pointer and at the object that it is about to hold, while it ends.
class Watcher : public Base {
public:
    struct Sight {
        Base * held = nullptr;
        int newCount = 0;
    };
    Watcher(BasePtr const * watched, Base const * incoming, Sight * sight)
        : watched_(watched), incoming_(incoming), sight_(sight) {}

protected:
    ~Watcher() override {
        sight_->held = watched_->get();
        sight_->newCount = incoming_ == nullptr ? -1 : incoming_->getRefCount();
    }

private:
    BasePtr const * watched_;
    Base const * incoming_;
    Sight * sight_;
};

TEST(RefCountedPtr, StoresLast) {
    BasePtr const incoming(new Base);
    BasePtr pointer;
    Watcher::Sight sight;
    auto * const old = new Watcher(&pointer, incoming.get(), &sight);
    pointer = old;
    pointer = incoming;
    EXPECT_EQ(sight.held, old);
    EXPECT_EQ(sight.newCount, 2);
    EXPECT_EQ(pointer, incoming);
}

TEST(RefCountedPtr, StoresNullLastToo) {
    BasePtr pointer;
    Watcher::Sight sight;
    auto * const old = new Watcher(&pointer, nullptr, &sight);
    pointer = old;
    pointer = nullptr;
    EXPECT_EQ(sight.held, old);
    EXPECT_TRUE(pointer.isNull());
}

TEST(RefCountedPtr, StoresAMovedReferenceLastToo) {
    BasePtr incoming(new Base);
    Base * const object = incoming.get();
    BasePtr pointer;
    Watcher::Sight sight;
    auto * const old = new Watcher(&pointer, object, &sight);
    pointer = old;
    pointer = std::move(incoming);
    EXPECT_EQ(sight.held, old);
    EXPECT_EQ(sight.newCount, 1);
    EXPECT_EQ(pointer, object);
    EXPECT_TRUE(incoming.isNull());
}

TEST(RefCountedPtr, MovingCountsNothing) {
    BasePtr first(new Base);
    Base * const object = first.get();
    BasePtr second(std::move(first));
    EXPECT_TRUE(first.isNull());
    EXPECT_EQ(second, object);
    EXPECT_EQ(object->getRefCount(), 1);
    first = std::move(second);
    EXPECT_TRUE(second.isNull());
    EXPECT_EQ(object->getRefCount(), 1);
}

TEST(RefCountedPtr, ConvertsToABase) {
    DerivedPtr derived(new Derived);
    BasePtr base(derived);
    EXPECT_EQ(derived->getRefCount(), 2);
    EXPECT_TRUE(base == derived);
    base = nullptr;
    base = derived;
    EXPECT_EQ(derived->getRefCount(), 2);
    base = nullptr;
    Derived * const object = derived.get();
    base = std::move(derived);
    EXPECT_TRUE(derived.isNull());
    EXPECT_EQ(object->getRefCount(), 1);
    BasePtr const moved(DerivedPtr(new Derived));
    EXPECT_EQ(moved->getRefCount(), 1);
    RefCountedPtr<Base const> const constant(base);
    EXPECT_EQ(object->getRefCount(), 2);
}

TEST(RefCountedPtr, SwapCountsNothing) {
    BasePtr first(new Base);
    BasePtr second(new Base);
    Base * const firstObject = first.get();
    Base * const secondObject = second.get();
    first.swap(second);
    EXPECT_EQ(first, secondObject);
    swap(first, second);
    EXPECT_EQ(first, firstObject);
    EXPECT_EQ(second, secondObject);
    EXPECT_EQ(firstObject->getRefCount(), 1);
}

TEST(RefCountedPtr, ComparesByAddress) {
    BasePtr const first(new Base);
    BasePtr const same(first);
    BasePtr const other(new Base);
    DerivedPtr const derived(new Derived);
    EXPECT_TRUE(first == same);
    EXPECT_FALSE(first != same);
    EXPECT_TRUE(first != other);
    EXPECT_TRUE(first == same.get());
    EXPECT_TRUE(same.get() == first);
    EXPECT_TRUE(first != other.get());
    EXPECT_TRUE(other.get() != first);
    EXPECT_TRUE(derived != first);
    EXPECT_TRUE(first != nullptr);
    EXPECT_TRUE(nullptr != first);
    EXPECT_FALSE(first == nullptr);
    EXPECT_FALSE(nullptr == first);
    EXPECT_NE(first < other, other < first);
    EXPECT_FALSE(first < same);
}

TEST(RefCountedPtr, StandsInContainers) {
    BasePtr const first(new Base);
    BasePtr const second(new Base);
    std::set<BasePtr> const ordered = {first, second, first};
    std::unordered_set<BasePtr> const hashed = {first, second, second};
    EXPECT_EQ(ordered.size(), 2u);
    EXPECT_EQ(hashed.size(), 2u);
    EXPECT_EQ(first->getRefCount(), 3);
}

TEST(RefCountedPtr, LeavesAConstantAlone) {
    int ends = 0;
    auto * const object = new Base(&ends);
    object->setConstantRefCount();
    {
        BasePtr const first(object);
        BasePtr const second(first);
    }
    EXPECT_EQ(ends, 0);
    EXPECT_EQ(object->getRefCount(), RefCounted::CONSTANT_REF_COUNT);
    // The memory is given back by hand: a constant never ends.
    Base::end(*object);
    EXPECT_EQ(ends, 1);
}

/// Fails at its end.
class Failing : public RefCounted {
protected:
    void destroyObject() const override { throw 1; }
};

TEST(RefCountedPtrDeathTest, AFailingEndEndsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH({ RefCountedPtr<Failing> const pointer(new Failing); }, "");
}

}  // namespace
}  // namespace tvk
