#pragma once

#include <functional>
#include <string>
#include <vector>

#include "examples/catalogue/Complaints.h"
#include "tvk/definitions/DataTypeDef.h"
#include "tvk/definitions/DataTypeDefManager.h"
#include "tvk/values/RefCountedPtr.h"

/// The names that stand for types in a file of definitions, to be replaced by the types themselves
/// when all of those are known.
///
/// A definition holds one count on each type that it refers to. Types that refer to each other in a
/// circle would keep each other alive for ever, so circles are found while there are only names.
class References {
public:
    /// How many types may stand inside each other. Labelling a message and releasing a registry go
    /// down from type to type, and this bounds the stack that they need.
    static constexpr int MAX_DEPTH = 64;

    using Setter = std::function<void(tvk::DataTypeDef const *)>;

    /// `from` is the type whose definition names another, null if a message does; it is counted.
    /// `set` is what takes the type in the end.
    void add(std::string place, tvk::DataTypeDef const * from, CString const & typeName,
             Setter set);

    /// Reports names that no type has, cycles, and types beyond MAX_DEPTH.
    void check(tvk::DataTypeDefManager const & types, Complaints & complaints) const;

    /// Requires: check has nothing to report.
    void resolve(tvk::DataTypeDefManager const & types) const;

private:
    struct Reference {
        std::string place;
        tvk::RefCountedPtr<tvk::DataTypeDef const> from;
        CString typeName;
        Setter set;
    };

    std::vector<Reference> references_;
};
