#include "tvk/json/detail/ReadyNames.h"

#include <limits>
#include <optional>
#include <string>

#include "tvk/json/detail/JsonEscapes.h"

namespace tvk::detail {

namespace {

/// The name in JSON text, if that is the same under all options and in every code page.
std::optional<std::string> textOf(CString const & name, bool isFirst) {
    std::string text = isFirst ? "\"" : ",\"";
    for (int i = 0; i < name.GetLength(); ++i) {
        char const byte = name[i];
        if (byte == '/' || byte == '\0' || static_cast<unsigned char>(byte) >= 0x80) {
            return std::nullopt;
        }
        if (char const escape = escapeOf(byte); escape != 0) {
            text += '\\';
            text += escape;
        } else {
            text += byte;
        }
    }
    return text + "\":";
}

}  // namespace

ReadyNames const & ReadyNames::make(FieldShape const & shape) {
    return static_cast<ReadyNames const &>(shape.keep(std::make_unique<ReadyNames const>(shape)));
}

ReadyNames::ReadyNames(FieldShape const & shape) : shape_(shape) {
    names_.reserve(shape.count());
    for (std::size_t place = 0; place < shape.count(); ++place) {
        std::optional<std::string> const text = textOf(shape.name(place), place == 0);
        bool const isReady =
            text.has_value() &&
            text->size() < std::numeric_limits<std::uint32_t>::max() - texts_.size();
        names_.push_back({static_cast<std::uint32_t>(texts_.size()),
                          isReady ? static_cast<std::uint32_t>(text->size()) : NOT_READY});
        if (isReady) {
            texts_.insert(texts_.end(), text->begin(), text->end());
        }
    }
    texts_.resize(texts_.size() + TextBlock::SIZE);
}

}  // namespace tvk::detail
