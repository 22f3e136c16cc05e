#pragma once

#include <cstddef>
#include <vector>

#include "tvk/platform/CString.h"

namespace tvk::detail {

/// The names of records that were built alike: the same names in the same order. Such records share
/// one shape and hold nothing but their values, so a feed pays for names and their order once.
///
/// Threads: immutable; records that share a shape may live on many threads.
class FieldShape {
public:
    /// `arrival`: the names in the order in which a record gets them. A name may come again.
    explicit FieldShape(std::vector<CString const *> const & arrival);

    /// Distinct names.
    std::size_t count() const { return names_.size(); }
    /// In ascending order of their bytes.
    CString const & name(std::size_t place) const { return names_[place]; }
    /// count() for a name that is not there.
    std::size_t find(CString const & name) const;

    /// The place of the name that arrives as the `index`th. A name that comes again keeps its place.
    std::size_t placeOfArrival(std::size_t index) const { return places_[index]; }

private:
    std::vector<CString> names_;
    std::vector<unsigned int> places_;
};

}  // namespace tvk::detail
