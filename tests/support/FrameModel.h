#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "modules/asio/Frame.h"

namespace tvk::test {

/// A frame with its parts as texts of their own. A part that is not there at all has no flag; the other
/// fields have what the writer of a sound frame gives them, and tests may spoil the bytes.
struct PlainFrame {
    int kind = FRAME_REQUEST;
    bool isFailure = false;
    unsigned long long number = 0;
    std::string type;
    std::string subject;
    std::optional<std::string> requestId;  // of sub-messages alone
    std::optional<std::string> headerFields;
    std::optional<std::vector<PlainFrame>> subMessages;
    std::string body;

    bool operator==(PlainFrame const & other) const = default;
};

inline std::string bigEndian(unsigned long long value, int size) {
    std::string bytes;
    for (int shift = (size - 1) * 8; shift >= 0; shift -= 8) {
        bytes += static_cast<char>(static_cast<unsigned char>(value >> shift));
    }
    return bytes;
}

inline int flagsOf(PlainFrame const & frame) {
    return (frame.isFailure ? FRAME_FAILURE : 0) | (frame.headerFields ? FRAME_HEADER_FIELDS : 0) |
           (frame.subMessages ? FRAME_SUB_MESSAGES : 0) |
           (frame.requestId ? FRAME_REQUEST_ID_TEXT : 0);
}

/// The frame as it goes over the wire.
inline std::string bytesOf(PlainFrame const & frame) {
    std::string head = frame.type + frame.subject;
    if (frame.requestId) {
        head += bigEndian(frame.requestId->size(), 2) + *frame.requestId;
    }
    if (frame.headerFields) {
        head += bigEndian(frame.headerFields->size(), 4) + *frame.headerFields;
    }
    if (frame.subMessages) {
        head += bigEndian(frame.subMessages->size(), 4);
        for (PlainFrame const & subMessage : *frame.subMessages) {
            head += bytesOf(subMessage);
        }
    }
    std::string const fixed = bigEndian(static_cast<unsigned int>(frame.kind), 1) +
                              bigEndian(static_cast<unsigned int>(flagsOf(frame)), 1) +
                              bigEndian(frame.type.size(), 2) + bigEndian(frame.subject.size(), 2) +
                              bigEndian(0, 2) + bigEndian(head.size(), 4) +
                              bigEndian(frame.number, 8);
    return bigEndian(fixed.size() + head.size() + frame.body.size(), 4) + fixed + head + frame.body;
}

/// What stands at the start of a stream, found the slow way: byte by byte, with copies.
class FrameModel {
public:
    enum class Result { NEED_MORE, FRAME, BAD_SIZE, BAD_FRAME };

    explicit FrameModel(unsigned int maximumFrameSize) : maximumFrameSize_(maximumFrameSize) {}

    /// With FRAME the frame is in `*frame` and its size in `*size`.
    Result next(std::string_view stream, PlainFrame * frame, std::size_t * size) const {
        if (stream.size() < 4) {
            return Result::NEED_MORE;
        }
        std::uint64_t const length = number(stream, 0, 4);
        if (length < 20 || length > maximumFrameSize_) {
            return Result::BAD_SIZE;
        }
        if (stream.size() < 24) {
            return Result::NEED_MORE;
        }
        if (!isSoundStart(stream, false)) {
            return Result::BAD_FRAME;
        }
        if (stream.size() < length + 4) {
            return Result::NEED_MORE;
        }
        *size = static_cast<std::size_t>(length + 4);
        std::optional<PlainFrame> const found = whole(stream.substr(0, *size), 0);
        if (!found) {
            return Result::BAD_FRAME;
        }
        *frame = *found;
        return Result::FRAME;
    }

    /// Whether texts may have these bytes: characters of UTF-8 in their shortest form, none of them
    /// NUL, half a pair or beyond U+10FFFF.
    static bool isText(std::string_view bytes) {
        for (std::size_t at = 0; at < bytes.size();) {
            auto const lead = static_cast<unsigned char>(bytes[at]);
            int const trails = lead < 0x80   ? 0
                               : lead < 0xc0 ? -1
                               : lead < 0xe0 ? 1
                               : lead < 0xf0 ? 2
                               : lead < 0xf8 ? 3
                                             : -1;
            if (trails < 0) {
                return false;
            }
            unsigned int character = trails == 0 ? lead : lead & (0x3fU >> trails);
            for (int i = 0; i < trails; ++i) {
                ++at;
                if (at == bytes.size() || (static_cast<unsigned char>(bytes[at]) & 0xc0U) != 0x80) {
                    return false;
                }
                character = character << 6U | (static_cast<unsigned char>(bytes[at]) & 0x3fU);
            }
            ++at;
            constexpr unsigned int SMALLEST[] = {1, 0x80, 0x800, 0x10000};
            if (character < SMALLEST[trails] || character > 0x10ffff ||
                (character >= 0xd800 && character <= 0xdfff)) {
                return false;
            }
        }
        return true;
    }

private:
    static std::uint64_t number(std::string_view bytes, std::size_t at, int size) {
        std::uint64_t value = 0;
        for (int i = 0; i < size; ++i) {
            value = value * 256 + static_cast<unsigned char>(bytes.at(at++));
        }
        return value;
    }

    /// The first 24 bytes by themselves; the length is right.
    static bool isSoundStart(std::string_view bytes, bool isInner) {
        std::uint64_t const kind = number(bytes, 4, 1);
        bool const isMessage = kind >= 1 && kind <= 3;
        if (isInner ? kind > 3 : !isMessage && (kind < 16 || kind > 20)) {
            return false;
        }
        std::uint64_t const flags = number(bytes, 5, 1);
        if (flags >= 16 || ((flags & 1) != 0 && (isInner || kind != 2)) ||
            ((flags & 8) != 0 && !isInner)) {
            return false;
        }
        return number(bytes, 10, 2) == 0 && (!isInner || number(bytes, 16, 8) == 0) &&
               number(bytes, 12, 4) + 20 <= number(bytes, 0, 4) &&
               number(bytes, 6, 2) + number(bytes, 8, 2) <= number(bytes, 12, 4);
    }

    static std::optional<std::string> taken(std::string_view & rest, std::uint64_t size) {
        if (size > rest.size()) {
            return std::nullopt;
        }
        std::string part(rest.substr(0, static_cast<std::size_t>(size)));
        rest.remove_prefix(part.size());
        return part;
    }

    static std::optional<std::string> takenSized(std::string_view & rest, int sizeSize) {
        std::optional<std::string> const size = taken(rest, static_cast<std::uint64_t>(sizeSize));
        return size ? taken(rest, number(*size, 0, sizeSize)) : std::nullopt;
    }

    /// Of a whole frame with a sound start.
    static std::optional<PlainFrame> whole(std::string_view bytes, int depth) {
        PlainFrame frame;
        std::uint64_t const flags = number(bytes, 5, 1);
        frame.kind = static_cast<int>(number(bytes, 4, 1));
        frame.isFailure = (flags & 1) != 0;
        frame.number = number(bytes, 16, 8);
        std::size_t const bodyAt = 24 + static_cast<std::size_t>(number(bytes, 12, 4));
        frame.body = std::string(bytes.substr(bodyAt));

        std::string_view rest = bytes.substr(24, bodyAt - 24);
        frame.type = *taken(rest, number(bytes, 6, 2));
        frame.subject = *taken(rest, number(bytes, 8, 2));
        bool isSound = isText(frame.type) && isText(frame.subject);
        if (isSound && (flags & 8) != 0) {
            frame.requestId = takenSized(rest, 2);
            isSound = frame.requestId && isText(*frame.requestId);
        }
        if (isSound && (flags & 2) != 0) {
            frame.headerFields = takenSized(rest, 4);
            isSound = frame.headerFields.has_value();
        }
        if (isSound && (flags & 4) != 0) {
            frame.subMessages = takenFrames(rest, depth + 1);
            isSound = frame.subMessages.has_value();
        }
        return isSound && rest.empty() ? std::optional(frame) : std::nullopt;
    }

    static std::optional<std::vector<PlainFrame>> takenFrames(std::string_view & rest, int depth) {
        std::optional<std::string> const count = taken(rest, 4);
        if (!count || depth > 64) {
            return std::nullopt;
        }
        std::vector<PlainFrame> frames;
        for (std::uint64_t left = number(*count, 0, 4); left > 0; --left) {
            if (rest.size() < 24 || number(rest, 0, 4) < 20) {
                return std::nullopt;
            }
            std::optional<std::string> const bytes = taken(rest, number(rest, 0, 4) + 4);
            if (!bytes || !isSoundStart(*bytes, true)) {
                return std::nullopt;
            }
            std::optional<PlainFrame> const frame = whole(*bytes, depth);
            if (!frame) {
                return std::nullopt;
            }
            frames.push_back(*frame);
        }
        return frames;
    }

    std::uint64_t maximumFrameSize_;
};

}  // namespace tvk::test
