#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "tvk/platform/CString.h"

namespace tvk::detail {

/// The names of records that were built alike: the same names in the same order. Such records share
/// one shape and hold nothing but their values, so a feed pays for names and their order once.
///
/// Ownership: counted; held through ShapeReference.
/// Threads:   immutable but for its count, which is atomic, and for the companion, which comes once:
///            records that share a shape may live and end on many threads, and so may the parser
///            that made it.
class FieldShape {
public:
    /// What a layer above this one has worked out about the names.
    class Companion {
    public:
        virtual ~Companion() = default;
    };

    /// `arrival`: the names in the order in which a record gets them. A name may come again.
    explicit FieldShape(std::vector<CString const *> const & arrival);
    FieldShape(FieldShape const &) = delete;
    FieldShape & operator=(FieldShape const &) = delete;
    ~FieldShape() { delete companion(); }

    /// Distinct names.
    std::size_t count() const { return names_.size(); }
    /// In ascending order of their bytes.
    CString const & name(std::size_t place) const { return names_[place]; }
    /// count() for a name that is not there.
    std::size_t find(CString const & name) const;

    /// The place of the name that arrives as the `index`th. A name that comes again keeps its place.
    std::size_t placeOfArrival(std::size_t index) const { return places_[index]; }
    /// Names that arrive, those that come again included.
    std::size_t arrivals() const { return places_.size(); }

    /// Null until there is one, which then stays to the end of the shape.
    Companion const * companion() const { return companion_.load(std::memory_order_acquire); }
    /// Keeps `companion`, or drops it where another thread's came first, and returns the kept one.
    Companion const & keep(std::unique_ptr<Companion const> companion) const;

private:
    friend class ShapeReference;
    friend class ShapeSource;

    void addReferences(std::size_t count) const {
        references_.fetch_add(count, std::memory_order_relaxed);
    }
    void removeReferences(std::size_t count) const {
        if (references_.fetch_sub(count, std::memory_order_acq_rel) == count) {
            delete this;
        }
    }

    mutable std::atomic<std::size_t> references_ = 0;
    std::vector<CString> names_;
    std::vector<unsigned int> places_;
    mutable std::atomic<Companion const *> companion_ = nullptr;
};

/// A counted reference to a shape, or none.
class ShapeReference {
public:
    ShapeReference() = default;
    explicit ShapeReference(FieldShape const * shape) : shape_(shape) { count(); }
    ShapeReference(ShapeReference const & other) : shape_(other.shape_) { count(); }
    ShapeReference(ShapeReference && other) noexcept
        : shape_(std::exchange(other.shape_, nullptr)) {}
    ShapeReference & operator=(ShapeReference other) noexcept {
        swap(other);
        return *this;
    }
    ~ShapeReference() {
        if (shape_ != nullptr) {
            shape_->removeReferences(1);
        }
    }

    FieldShape const * get() const { return shape_; }
    FieldShape const * operator->() const { return shape_; }
    bool isNull() const { return shape_ == nullptr; }

    void swap(ShapeReference & other) noexcept { std::swap(shape_, other.shape_); }

private:
    friend class ShapeSource;

    void count() {
        if (shape_ != nullptr) {
            shape_->addReferences(1);
        }
    }

    FieldShape const * shape_ = nullptr;
};

/// Hands out references to one shape. It has them counted many at a time: an atomic operation costs
/// as much as some fields of a record.
///
/// Threads: one at a time, unlike the references that it hands out.
class ShapeSource {
public:
    ShapeSource() = default;
    ShapeSource(ShapeSource const &) = delete;
    ShapeSource & operator=(ShapeSource const &) = delete;
    ~ShapeSource() { giveBack(); }

    bool isEmpty() const { return shape_ == nullptr; }
    void set(FieldShape const * shape) {
        giveBack();
        shape_ = shape;
        shape_->addReferences(1);
    }

    /// Requires: not empty.
    ShapeReference next() {
        if (counted_ == 0) {
            shape_->addReferences(COUNTED_TOGETHER);
            counted_ = COUNTED_TOGETHER;
        }
        --counted_;
        ShapeReference reference;
        reference.shape_ = shape_;
        return reference;
    }

private:
    static constexpr std::size_t COUNTED_TOGETHER = 4096;

    void giveBack() {
        if (shape_ != nullptr) {
            shape_->removeReferences(counted_ + 1);
            counted_ = 0;
        }
    }

    FieldShape const * shape_ = nullptr;
    std::size_t counted_ = 0;  // for references that are still to be handed out
};

}  // namespace tvk::detail
