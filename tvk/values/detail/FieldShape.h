#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <vector>

#include "tvk/platform/CString.h"

namespace tvk::detail {

/// The names of records that were built alike: the same names in the same order. Such records share
/// one shape and hold nothing but their values, so a feed pays for names and their order once.
///
/// Threads: immutable but for the companion, which comes once; records that share a shape may live on many threads.
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

    /// Null until there is one, which then stays to the end of the shape.
    Companion const * companion() const { return companion_.load(std::memory_order_acquire); }
    /// Keeps `companion`, or drops it where another thread's came first, and returns the kept one.
    Companion const & keep(std::unique_ptr<Companion const> companion) const;

private:
    std::vector<CString> names_;
    std::vector<unsigned int> places_;
    mutable std::atomic<Companion const *> companion_ = nullptr;
};

}  // namespace tvk::detail
