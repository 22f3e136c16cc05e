#pragma once

#include <cstddef>

#include "tvk/platform/Export.h"

namespace tvk {

/// Intrusive reference count: base of every value, message, definition and service.
///
/// Ownership: 0 means unowned; the first RefCountedPtr makes it 1, the drop to 0 destroys. Derived
///            classes keep their destructors non-public: objects live on the heap and end through
///            removeRef. They are allocated and released by this library whichever module wrote the
///            `new`.
/// Constants: a count of CONSTANT_REF_COUNT is never counted and never destroyed.
/// Threads:   not atomic; only a constant may be referenced from several threads.
/// Failure:   nothing is thrown or reported.
class TVK_API RefCounted {
public:
    /// The count of a constant. A count that reaches it by counting up makes a constant too.
    static constexpr int CONSTANT_REF_COUNT = 0x7fffffff;

    RefCounted() = default;

    /// A copy is a new object: its count starts at 0.
    RefCounted(RefCounted const &) {}

    /// Deliberate: takes over the source's count, here and in every abstract class. Chart records
    /// and the headers of assigned messages rely on it; the concrete value classes never come here.
    RefCounted & operator=(RefCounted const & other) {
        refCount_ = other.refCount_;
        return *this;
    }

    /// No effect on a constant.
    void addRef() const {
        if (refCount_ != CONSTANT_REF_COUNT) {
            ++refCount_;
        }
    }

    /// May destroy *this: touch no member after the call. A count that was 0 becomes -1, and
    /// nothing is destroyed. No effect on a constant.
    void removeRef() const {
        if (refCount_ != CONSTANT_REF_COUNT && --refCount_ == 0) {
            destroyObject();
        }
    }

    int getRefCount() const { return refCount_; }

    /// Makes a constant of this object, for good.
    void setConstantRefCount() { refCount_ = CONSTANT_REF_COUNT; }

    static void * operator new(std::size_t size);
    static void * operator new(std::size_t size, void * place) noexcept;
    static void * operator new[](std::size_t size);
    static void operator delete(void * memory) noexcept;
    static void operator delete(void * memory, void * place) noexcept;
    static void operator delete[](void * memory) noexcept;

protected:
    // The order of the virtual operations is interface, here and in every derived class.
    virtual ~RefCounted();
    /// Ends the object when its count has dropped to 0: `delete this`. Nothing on a null `this`.
    virtual void destroyObject() const;

private:
    mutable int refCount_ = 0;
};

}  // namespace tvk
