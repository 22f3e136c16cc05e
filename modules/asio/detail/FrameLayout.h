#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "modules/asio/Frame.h"
#include "tvk/platform/CString.h"

namespace tvk {

class ErrorInfo;

namespace detail {

/// The length and all that stands at a fixed place behind it.
constexpr std::size_t FRAME_FIXED_SIZE = 24;
/// The length field, which does not count itself.
constexpr std::size_t FRAME_LENGTH_SIZE = 4;
constexpr std::uint32_t MINIMUM_FRAME_LENGTH = FRAME_FIXED_SIZE - FRAME_LENGTH_SIZE;
/// The sub-messages of a frame are 1 deep, theirs are 2 deep.
constexpr int MAXIMUM_SUB_MESSAGE_DEPTH = 64;
/// Texts with a size of 2 bytes: type, subject, request identifier of a sub-message.
constexpr std::size_t MAXIMUM_FRAME_TEXT = 0xffff;

// Numbers on the wire are big-endian.
std::uint16_t loadUInt16(char const * bytes);
std::uint32_t loadUInt32(char const * bytes);
std::uint64_t loadUInt64(char const * bytes);
void storeUInt16(char * bytes, std::uint16_t value);
void storeUInt32(char * bytes, std::uint32_t value);
void storeUInt64(char * bytes, std::uint64_t value);

/// Whether a frame stands for itself or within another.
enum class FrameLevel { TOP, SUB_MESSAGE };

/// For a sub-message 0 too: it need not say what it is.
bool isKnownKind(int kind, FrameLevel level);

/// The first FRAME_FIXED_SIZE bytes of a frame.
struct FixedPart {
    std::uint32_t length = MINIMUM_FRAME_LENGTH;
    std::uint8_t kind = 0;
    std::uint8_t flags = 0;
    std::uint16_t typeSize = 0;
    std::uint16_t subjectSize = 0;
    std::uint16_t reserved = 0;
    std::uint32_t headSize = 0;
    std::uint64_t number = 0;

    static FixedPart load(char const * bytes);
    void store(char * bytes) const;

    /// Whether all that can be known before the rest is there is in order; the length is taken as
    /// it is. False with `*error`.
    bool check(FrameLevel level, ErrorInfo * error) const;
};

struct SubFrame : Frame {
    std::string_view requestId;  ///< UTF-8
};

/// Finds the parts of a frame whose fixed part has been checked. Sub-messages are not looked into.
/// False with `*error`. Requires: `bytes` is the whole frame.
bool splitFrame(FixedPart const & fixed, std::string_view bytes, SubFrame * frame,
                ErrorInfo * error);

/// Walks over the sub-messages of a frame, one level deep.
class SubFrames {
public:
    enum class Step { FRAME, END, BROKEN };

    /// The bytes as Frame::subMessages has them.
    explicit SubFrames(std::string_view bytes) : rest_(bytes) {}

    /// END behind the last one, if nothing stands there; BROKEN with `*error`.
    Step next(SubFrame * frame, ErrorInfo * error);

private:
    bool takeCount(ErrorInfo * error);
    bool takeFrame(SubFrame * frame, ErrorInfo * error);

    std::string_view rest_;
    std::uint32_t left_ = 0;
    bool hasCount_ = false;
};

/// Whether sub-messages that are `depth` deep are sound, with all that is nested in them. False with
/// `*error`.
bool checkSubFrames(std::string_view bytes, int depth, ErrorInfo * error);

/// False with `*error`: where sub-messages are nested too deep.
bool checkDepth(int depth, int code, ErrorInfo * error);

/// Well-formed UTF-8 without NUL.
bool isWireText(std::string_view text);

/// Puts code and text into `error`, if it is not null. Always false.
bool refuseFrame(ErrorInfo * error, int code, char const * format, ...) TVK_PRINTF_LIKE(3, 4);

}  // namespace detail
}  // namespace tvk
