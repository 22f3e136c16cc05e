#pragma once

#include <cstddef>
#include <functional>
#include <type_traits>
#include <utility>

namespace tvk {

/// Counted reference to an object of a class derived from RefCounted, or null.
///
/// Assignment: the new object is counted first, then the old one is released, then the pointer is
///             stored. So a pointer that only the old object keeps alive may be assigned, and the
///             destructor of the old object still sees the old pointer here.
/// Threads:    as RefCounted.
template <class T>
class RefCountedPtr {
public:
    using element_type = T;

    constexpr RefCountedPtr() noexcept = default;
    constexpr RefCountedPtr(std::nullptr_t) noexcept {}
    RefCountedPtr(T * pointer) : pointer_(pointer) { count(pointer_); }
    RefCountedPtr(RefCountedPtr const & other) : pointer_(other.pointer_) { count(pointer_); }
    RefCountedPtr(RefCountedPtr && other) noexcept
        : pointer_(std::exchange(other.pointer_, nullptr)) {}

    template <class U, class = std::enable_if_t<std::is_convertible_v<U *, T *>>>
    RefCountedPtr(RefCountedPtr<U> const & other) : pointer_(other.get()) {
        count(pointer_);
    }
    template <class U, class = std::enable_if_t<std::is_convertible_v<U *, T *>>>
    RefCountedPtr(RefCountedPtr<U> && other) noexcept
        : pointer_(std::exchange(other.pointer_, nullptr)) {}

    ~RefCountedPtr() noexcept { release(pointer_); }

    RefCountedPtr & operator=(T * pointer) {
        if (pointer != pointer_) {
            count(pointer);
            release(pointer_);
            pointer_ = pointer;
        }
        return *this;
    }
    RefCountedPtr & operator=(std::nullptr_t) { return *this = static_cast<T *>(nullptr); }
    RefCountedPtr & operator=(RefCountedPtr const & other) { return *this = other.pointer_; }
    RefCountedPtr & operator=(RefCountedPtr && other) noexcept { return take(other); }

    template <class U, class = std::enable_if_t<std::is_convertible_v<U *, T *>>>
    RefCountedPtr & operator=(RefCountedPtr<U> const & other) {
        return *this = static_cast<T *>(other.get());
    }
    template <class U, class = std::enable_if_t<std::is_convertible_v<U *, T *>>>
    RefCountedPtr & operator=(RefCountedPtr<U> && other) noexcept {
        return take(other);
    }

    T * get() const noexcept { return pointer_; }
    T * operator->() const noexcept { return pointer_; }
    T & operator*() const noexcept { return *pointer_; }
    bool isNull() const noexcept { return pointer_ == nullptr; }
    explicit operator bool() const noexcept { return pointer_ != nullptr; }

    void swap(RefCountedPtr & other) noexcept { std::swap(pointer_, other.pointer_); }

    /// Gives up the object without releasing it: its count is the caller's.
    T * detach() noexcept { return std::exchange(pointer_, nullptr); }
    /// Takes over a count that the caller has.
    static RefCountedPtr attached(T * counted) noexcept {
        RefCountedPtr reference;
        reference.pointer_ = counted;
        return reference;
    }

private:
    template <class U>
    friend class RefCountedPtr;

    static void count(T const * object) {
        if (object != nullptr) {
            object->addRef();
        }
    }
    static void release(T const * object) {
        if (object != nullptr) {
            object->removeRef();
        }
    }
    template <class U>
    RefCountedPtr & take(RefCountedPtr<U> & other) noexcept {
        if (other.pointer_ != pointer_) {
            T * const taken = std::exchange(other.pointer_, nullptr);
            release(pointer_);
            pointer_ = taken;
        }
        return *this;
    }

    T * pointer_ = nullptr;
};

template <class T>
void swap(RefCountedPtr<T> & left, RefCountedPtr<T> & right) noexcept {
    left.swap(right);
}

template <class T, class U>
bool operator==(RefCountedPtr<T> const & left, RefCountedPtr<U> const & right) noexcept {
    return left.get() == right.get();
}
template <class T, class U>
bool operator!=(RefCountedPtr<T> const & left, RefCountedPtr<U> const & right) noexcept {
    return left.get() != right.get();
}
template <class T, class U>
bool operator==(RefCountedPtr<T> const & left, U const * right) noexcept {
    return left.get() == right;
}
template <class T, class U>
bool operator==(U const * left, RefCountedPtr<T> const & right) noexcept {
    return left == right.get();
}
template <class T, class U>
bool operator!=(RefCountedPtr<T> const & left, U const * right) noexcept {
    return left.get() != right;
}
template <class T, class U>
bool operator!=(U const * left, RefCountedPtr<T> const & right) noexcept {
    return left != right.get();
}
template <class T>
bool operator==(RefCountedPtr<T> const & left, std::nullptr_t) noexcept {
    return left.isNull();
}
template <class T>
bool operator==(std::nullptr_t, RefCountedPtr<T> const & right) noexcept {
    return right.isNull();
}
template <class T>
bool operator!=(RefCountedPtr<T> const & left, std::nullptr_t) noexcept {
    return !left.isNull();
}
template <class T>
bool operator!=(std::nullptr_t, RefCountedPtr<T> const & right) noexcept {
    return !right.isNull();
}
/// The order of the addresses, for ordered containers.
template <class T, class U>
bool operator<(RefCountedPtr<T> const & left, RefCountedPtr<U> const & right) noexcept {
    return std::less<void const *>()(left.get(), right.get());
}

}  // namespace tvk

template <class T>
struct std::hash<tvk::RefCountedPtr<T>> {
    std::size_t operator()(tvk::RefCountedPtr<T> const & pointer) const noexcept {
        return std::hash<T *>()(pointer.get());
    }
};
