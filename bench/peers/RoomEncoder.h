#pragma once

#include "bench/peers/EachItem.h"

/// Encoders that write into room of the caller. A `Form` has the length of a result and a `write`,
/// which may put a NUL behind the result.
namespace tvk::bench {

struct Base64Form {
    static std::size_t length(std::size_t bytes) { return (bytes + 2) / 3 * 4; }
};

struct HexForm {
    static std::size_t length(std::size_t bytes) { return bytes * 2; }
};

/// Into a room that is kept.
template <class Form>
class IntoRoom {
public:
    std::string_view operator()(std::string_view bytes) {
        std::size_t const length = Form::length(bytes.size());
        if (room_.size() < length) {
            room_.resize(length);
        }
        Form::write(bytes, room_.data());
        return {room_.data(), length};
    }

private:
    std::string room_;
};

/// Into a text of its own, as tvk's results are.
template <class Form>
struct IntoString {
    std::string operator()(std::string_view bytes) const {
        std::string text(Form::length(bytes.size()), '\0');
        Form::write(bytes, text.data());
        return text;
    }
};

template <class Form>
void addRoomEncoder(std::vector<Peer<Encoder>> & peers, std::string const & name) {
    addFunction<IntoRoom<Form>>(peers, name);
    addFunction<IntoString<Form>>(peers, name + "_string");
}

inline unsigned char const * unsignedBytes(std::string_view bytes) {
    return reinterpret_cast<unsigned char const *>(bytes.data());
}

}  // namespace tvk::bench
