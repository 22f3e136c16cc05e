#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <initializer_list>
#include <optional>

namespace tvk::test {

/// The place of a member function in the table of its class, counted from 0; nothing when it is not
/// virtual. Read from the pointer to member as the Itanium ABI lays it out: an offset into the table,
/// marked by an odd offset or, on some processors, by an odd adjustment.
///
/// The signature picks one of several overloads: slotOf<ListData const &() const>(&FieldValue::asList).
template <class Signature, class Class>
std::optional<std::size_t> slotOf(Signature Class::*member) {
    struct {
        std::ptrdiff_t place;
        std::ptrdiff_t adjustment;
    } parts;
    static_assert(sizeof parts == sizeof member);
    std::memcpy(&parts, &member, sizeof parts);
    if (parts.place % 2 != 0) {
        return static_cast<std::size_t>(parts.place) / sizeof(void *);
    }
    if (parts.adjustment % 2 != 0) {
        return static_cast<std::size_t>(parts.place) / sizeof(void *);
    }
    return std::nullopt;
}

struct VirtualRow {
    char const * operation;
    std::optional<std::size_t> slot;
};

/// The operations stand one behind the other, the first of them at `first`. A class derived from
/// RefCounted begins with the two entries of its destructor, so destroyObject stands at 2.
inline void expectVirtualOrder(std::size_t first, std::initializer_list<VirtualRow> rows) {
    std::size_t expected = first;
    for (VirtualRow const & row : rows) {
        EXPECT_EQ(row.slot, std::optional(expected)) << row.operation;
        ++expected;
    }
}

}  // namespace tvk::test
