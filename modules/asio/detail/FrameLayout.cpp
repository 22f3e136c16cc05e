#include "modules/asio/detail/FrameLayout.h"

#include <cstdarg>
#include <cstring>

#include "modules/asio/detail/Errors.h"
#include "tvk/errors/KestrinConstants.h"

namespace tvk::detail {

namespace {

constexpr int BROKEN_FRAME = KestrinConstants::ERR_ProtocolFailure;

// Where the fields stand.
constexpr std::size_t KIND_AT = 4;
constexpr std::size_t FLAGS_AT = 5;
constexpr std::size_t TYPE_SIZE_AT = 6;
constexpr std::size_t SUBJECT_SIZE_AT = 8;
constexpr std::size_t RESERVED_AT = 10;
constexpr std::size_t HEAD_SIZE_AT = 12;
constexpr std::size_t NUMBER_AT = 16;

constexpr std::size_t SHORT_SIZE = 2;
constexpr std::size_t LONG_SIZE = 4;

template <class Number>
Number load(char const * bytes) {
    Number value = 0;
    for (std::size_t i = 0; i < sizeof(Number); ++i) {
        value = static_cast<Number>(value << 8U | static_cast<unsigned char>(bytes[i]));
    }
    return value;
}

template <class Number>
void store(char * bytes, Number value) {
    for (std::size_t i = sizeof(Number); i-- > 0;) {
        bytes[i] = static_cast<char>(static_cast<unsigned char>(value & 0xffU));
        value = static_cast<Number>(value >> 8U);
    }
}

int flagsOf(int kind, FrameLevel level) {
    int const common = FRAME_HEADER_FIELDS | FRAME_SUB_MESSAGES;
    if (level == FrameLevel::SUB_MESSAGE) {
        return common | FRAME_REQUEST_ID_TEXT;
    }
    return kind == FRAME_REPLY ? common | FRAME_FAILURE : common;
}

/// The head of a frame, from which one part after the other is taken.
class Head {
public:
    Head(std::string_view bytes, ErrorInfo * error) : rest_(bytes), error_(error) {}

    std::string_view rest() const { return rest_; }

    /// Requires: it is there.
    std::string_view take(std::size_t size) {
        std::string_view const taken = rest_.substr(0, size);
        rest_.remove_prefix(size);
        return taken;
    }

    bool takeText(std::size_t size, char const * name, std::string_view * text) {
        *text = take(size);
        return isWireText(*text) ||
               refuseFrame(error_, BROKEN_FRAME, "the %s of %zu bytes is not UTF-8 without NUL",
                           name, size);
    }

    /// With its size, of `sizeSize` bytes, in front.
    bool takeSized(std::size_t sizeSize, char const * name, std::string_view * part) {
        if (rest_.size() < sizeSize) {
            return doesNotFit(name, sizeSize);
        }
        char const * const number = take(sizeSize).data();
        std::size_t const size = sizeSize == SHORT_SIZE ? loadUInt16(number) : loadUInt32(number);
        if (rest_.size() < size) {
            return doesNotFit(name, size);
        }
        *part = take(size);
        return true;
    }

    bool doesNotFit(char const * name, std::size_t size) const {
        return refuseFrame(error_, BROKEN_FRAME,
                           "%s: %zu bytes do not fit in the %zu bytes left of the head", name, size,
                           rest_.size());
    }

private:
    std::string_view rest_;
    ErrorInfo * error_;
};

bool splitRequestId(Head & head, std::string_view * id, ErrorInfo * error) {
    return head.takeSized(SHORT_SIZE, "request identifier", id) &&
           (isWireText(*id) ||
            refuseFrame(error, BROKEN_FRAME,
                        "the request identifier of %zu bytes is not UTF-8 without NUL",
                        id->size()));
}

bool refuseCount(std::size_t size, ErrorInfo * error) {
    return refuseFrame(error, BROKEN_FRAME, "%zu bytes are no count of sub-messages", size);
}

std::size_t asciiStart(std::string_view text) {
    constexpr std::uint64_t ONES = 0x0101010101010101;
    constexpr std::uint64_t HIGH_BITS = ONES << 7U;
    std::size_t at = 0;
    for (std::uint64_t block = 0; text.size() - at >= sizeof block; at += sizeof block) {
        std::memcpy(&block, text.data() + at, sizeof block);
        // A NUL borrows from the bit above it.
        if (((block | (block - ONES)) & HIGH_BITS) != 0) {
            break;
        }
    }
    return at;
}

bool isTrail(std::string_view text, std::size_t at) {
    return at < text.size() && (static_cast<unsigned char>(text[at]) & 0xc0U) == 0x80;
}

/// The bytes of the character at a place; 0 where there is none, or NUL.
std::size_t characterSize(std::string_view text, std::size_t at) {
    auto const lead = static_cast<unsigned char>(text[at]);
    if (lead < 0x80) {
        return lead != 0 ? 1 : 0;
    }
    if (!isTrail(text, at + 1)) {
        return 0;
    }
    auto const second = static_cast<unsigned char>(text[at + 1]);
    if (lead < 0xe0) {
        return lead >= 0xc2 ? 2 : 0;
    }
    if (!isTrail(text, at + 2)) {
        return 0;
    }
    if (lead < 0xf0) {
        // Neither what two bytes could say nor half of a pair.
        bool const isAllowed = lead == 0xe0 ? second >= 0xa0 : lead == 0xed ? second < 0xa0 : true;
        return isAllowed ? 3 : 0;
    }
    // Neither what three bytes could say nor what is beyond U+10FFFF.
    bool const isAllowed = lead == 0xf0   ? second >= 0x90
                           : lead == 0xf4 ? second < 0x90
                                          : lead < 0xf4;
    return isAllowed && isTrail(text, at + 3) ? 4 : 0;
}

}  // namespace

std::uint16_t loadUInt16(char const * bytes) { return load<std::uint16_t>(bytes); }
std::uint32_t loadUInt32(char const * bytes) { return load<std::uint32_t>(bytes); }
std::uint64_t loadUInt64(char const * bytes) { return load<std::uint64_t>(bytes); }
void storeUInt16(char * bytes, std::uint16_t value) { store(bytes, value); }
void storeUInt32(char * bytes, std::uint32_t value) { store(bytes, value); }
void storeUInt64(char * bytes, std::uint64_t value) { store(bytes, value); }

bool isKnownKind(int kind, FrameLevel level) {
    bool const isMessage = kind >= FRAME_REQUEST && kind <= FRAME_NOTICE;
    return level == FrameLevel::SUB_MESSAGE
               ? isMessage || kind == 0
               : isMessage || (kind >= FRAME_HELLO && kind <= FRAME_GOODBYE);
}

FixedPart FixedPart::load(char const * bytes) {
    FixedPart part;
    part.length = loadUInt32(bytes);
    part.kind = static_cast<unsigned char>(bytes[KIND_AT]);
    part.flags = static_cast<unsigned char>(bytes[FLAGS_AT]);
    part.typeSize = loadUInt16(bytes + TYPE_SIZE_AT);
    part.subjectSize = loadUInt16(bytes + SUBJECT_SIZE_AT);
    part.reserved = loadUInt16(bytes + RESERVED_AT);
    part.headSize = loadUInt32(bytes + HEAD_SIZE_AT);
    part.number = loadUInt64(bytes + NUMBER_AT);
    return part;
}

void FixedPart::store(char * bytes) const {
    storeUInt32(bytes, length);
    bytes[KIND_AT] = static_cast<char>(kind);
    bytes[FLAGS_AT] = static_cast<char>(flags);
    storeUInt16(bytes + TYPE_SIZE_AT, typeSize);
    storeUInt16(bytes + SUBJECT_SIZE_AT, subjectSize);
    storeUInt16(bytes + RESERVED_AT, reserved);
    storeUInt32(bytes + HEAD_SIZE_AT, headSize);
    storeUInt64(bytes + NUMBER_AT, number);
}

bool FixedPart::check(FrameLevel level, ErrorInfo * error) const {
    char const * const name = level == FrameLevel::TOP ? "frame" : "sub-message";
    if (!isKnownKind(kind, level)) {
        return refuseFrame(error, BROKEN_FRAME, "unknown kind %d of a %s", kind, name);
    }
    if (int const unknown = flags & ~flagsOf(kind, level); unknown != 0) {
        return refuseFrame(error, BROKEN_FRAME, "a %s of kind %d has no flags %d", name, kind,
                           unknown);
    }
    if (reserved != 0) {
        return refuseFrame(error, BROKEN_FRAME, "the reserved bytes of a %s are %d, not 0", name,
                           reserved);
    }
    if (level == FrameLevel::SUB_MESSAGE && number != 0) {
        return refuseFrame(error, BROKEN_FRAME, "the number of a sub-message is %llu, not 0",
                           static_cast<unsigned long long>(number));
    }
    if (headSize > length - MINIMUM_FRAME_LENGTH) {
        return refuseFrame(
            error, BROKEN_FRAME, "a head of %lu bytes does not fit in a %s of length %lu",
            static_cast<unsigned long>(headSize), name, static_cast<unsigned long>(length));
    }
    std::uint32_t const texts = std::uint32_t{typeSize} + subjectSize;
    if (texts > headSize) {
        return refuseFrame(error, BROKEN_FRAME,
                           "type and subject of %lu bytes do not fit in a head of %lu bytes",
                           static_cast<unsigned long>(texts), static_cast<unsigned long>(headSize));
    }
    return true;
}

bool splitFrame(FixedPart const & fixed, std::string_view bytes, SubFrame * frame,
                ErrorInfo * error) {
    SubFrame parts;
    parts.kind = static_cast<FrameKind>(fixed.kind);
    parts.flags = fixed.flags;
    parts.number = fixed.number;
    parts.body = bytes.substr(FRAME_FIXED_SIZE + fixed.headSize);

    Head head(bytes.substr(FRAME_FIXED_SIZE, fixed.headSize), error);
    if (!head.takeText(fixed.typeSize, "type", &parts.type) ||
        !head.takeText(fixed.subjectSize, "subject", &parts.subject)) {
        return false;
    }
    if ((fixed.flags & FRAME_REQUEST_ID_TEXT) != 0 &&
        !splitRequestId(head, &parts.requestId, error)) {
        return false;
    }
    if ((fixed.flags & FRAME_HEADER_FIELDS) != 0 &&
        !head.takeSized(LONG_SIZE, "header fields", &parts.headerFields)) {
        return false;
    }
    if ((fixed.flags & FRAME_SUB_MESSAGES) != 0) {
        parts.subMessages = head.take(head.rest().size());
        if (parts.subMessages.size() < LONG_SIZE) {
            return refuseCount(parts.subMessages.size(), error);
        }
    }
    if (!head.rest().empty()) {
        return refuseFrame(error, BROKEN_FRAME, "%zu bytes of the head belong to nothing",
                           head.rest().size());
    }
    *frame = parts;
    return true;
}

SubFrames::Step SubFrames::next(SubFrame * frame, ErrorInfo * error) {
    if (!hasCount_ && !takeCount(error)) {
        return Step::BROKEN;
    }
    if (left_ != 0) {
        --left_;
        return takeFrame(frame, error) ? Step::FRAME : Step::BROKEN;
    }
    if (!rest_.empty()) {
        refuseFrame(error, BROKEN_FRAME, "%zu bytes stand behind the last sub-message",
                    rest_.size());
        return Step::BROKEN;
    }
    return Step::END;
}

bool SubFrames::takeCount(ErrorInfo * error) {
    if (rest_.size() < LONG_SIZE) {
        return refuseCount(rest_.size(), error);
    }
    left_ = loadUInt32(rest_.data());
    rest_.remove_prefix(LONG_SIZE);
    hasCount_ = true;
    return true;
}

bool SubFrames::takeFrame(SubFrame * frame, ErrorInfo * error) {
    if (rest_.size() < FRAME_FIXED_SIZE) {
        return refuseFrame(error, BROKEN_FRAME, "a sub-message does not fit in the %zu bytes left",
                           rest_.size());
    }
    FixedPart const fixed = FixedPart::load(rest_.data());
    if (fixed.length < MINIMUM_FRAME_LENGTH || fixed.length > rest_.size() - FRAME_LENGTH_SIZE) {
        return refuseFrame(
            error, BROKEN_FRAME,
            "a sub-message of length %lu is too short or does not fit in the %zu bytes "
            "left",
            static_cast<unsigned long>(fixed.length), rest_.size());
    }
    std::string_view const bytes = rest_.substr(0, FRAME_LENGTH_SIZE + fixed.length);
    rest_.remove_prefix(bytes.size());
    return fixed.check(FrameLevel::SUB_MESSAGE, error) && splitFrame(fixed, bytes, frame, error);
}

bool checkSubFrames(std::string_view bytes, int depth, ErrorInfo * error) {
    if (!checkDepth(depth, BROKEN_FRAME, error)) {
        return false;
    }
    SubFrames frames(bytes);
    SubFrame frame;
    SubFrames::Step step = frames.next(&frame, error);
    while (step == SubFrames::Step::FRAME) {
        if (!frame.subMessages.empty() && !checkSubFrames(frame.subMessages, depth + 1, error)) {
            return false;
        }
        step = frames.next(&frame, error);
    }
    return step == SubFrames::Step::END;
}

bool checkDepth(int depth, int code, ErrorInfo * error) {
    return depth <= MAXIMUM_SUB_MESSAGE_DEPTH ||
           refuseFrame(error, code, "sub-messages are nested more than %d deep",
                       MAXIMUM_SUB_MESSAGE_DEPTH);
}

bool isWireText(std::string_view text) {
    std::size_t at = asciiStart(text);
    while (at < text.size()) {
        std::size_t const size = characterSize(text, at);
        if (size == 0) {
            return false;
        }
        at += size;
    }
    return true;
}

bool refuseFrame(ErrorInfo * error, int code, char const * format, ...) {
    if (error != nullptr) {
        std::va_list arguments;
        va_start(arguments, format);
        CString text;
        text.FormatV(format, arguments);
        va_end(arguments);
        *error = agentError(code, text);
    }
    return false;
}

}  // namespace tvk::detail
