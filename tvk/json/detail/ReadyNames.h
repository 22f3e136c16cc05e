#pragma once

#include <memory>
#include <vector>

#include "tvk/json/detail/TextBlock.h"
#include "tvk/values/detail/FieldShape.h"

namespace tvk::detail {

/// The names of a shape as they stand in JSON text, `,"name":` and the first one without the comma,
/// to be copied in blocks. They are
/// settled once, when a record of the shape is written first.
///
/// Threads: immutable. Two threads may meet at the making; one of the results stays.
class ReadyNames : public FieldShape::Companion {
public:
    struct Name {
        std::uint32_t start;   // in texts()
        std::uint32_t length;  // NOT_READY where code page or options have a say in the text
    };
    static constexpr std::uint32_t NOT_READY = 0xFFFFFFFF;

    /// Those of `shape`, which keeps them.
    static ReadyNames const & of(FieldShape const & shape) {
        FieldShape::Companion const * const kept = shape.companion();
        return kept != nullptr ? static_cast<ReadyNames const &>(*kept) : make(shape);
    }

    explicit ReadyNames(FieldShape const & shape);

    FieldShape const & shape() const { return shape_; }

    /// In the order of the shape.
    Name const * names() const { return names_.data(); }
    /// A block can be read from the start of each name on.
    char const * texts() const { return texts_.data(); }

private:
    static ReadyNames const & make(FieldShape const & shape);

    FieldShape const & shape_;
    std::vector<Name> names_;
    std::vector<char> texts_;
};

}  // namespace tvk::detail
