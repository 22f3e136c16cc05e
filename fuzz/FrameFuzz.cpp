// Property: a stream gives the same frames and the same error as the plain model of the format,
// however it is cut into pieces; and a frame that is read as a message is written as one that is read as
// an equal message, or, where its JSON has NULs or is not ASCII, as one that is so from the second time
// on. The first byte of an input chooses the limit of a frame, the second one the pieces.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <string_view>

#include "fuzz/FuzzCheck.h"
#include "modules/asio/FrameMessages.h"
#include "modules/asio/FrameReader.h"
#include "modules/asio/FrameWriter.h"
#include "tests/support/ExactBuffer.h"
#include "tests/support/FrameModel.h"
#include "tests/support/FrameStream.h"
#include "tests/support/SameMessage.h"
#include "tvk/platform/CodePage.h"

namespace {

using namespace tvk;

using MessageReference = RefCountedPtr<KestrinMessage>;

constexpr unsigned int NO_LIMIT = std::numeric_limits<unsigned int>::max();

test::StreamContent contentInPieces(std::string_view stream, unsigned int limit,
                                    unsigned int seed) {
    std::minstd_rand random(seed + 1);
    std::size_t const largest = 1 + seed % 16 * 8;
    FrameReader reader(limit);
    test::StreamContent content;
    test::takeFrames(reader, content);
    while (!stream.empty() && content.errorCode == 0) {
        std::string_view const piece = stream.substr(0, 1 + random() % largest);
        stream.remove_prefix(piece.size());
        test::feed(reader, piece);
        test::takeFrames(reader, content);
    }
    // What the reader has not seen stands behind the last frame as well.
    content.pending += stream.size();
    return content;
}

/// No byte above ASCII, no escape that gives one, and no NUL: nothing that is converted or cut.
bool isPlain(std::string_view json) {
    return std::all_of(json.begin(), json.end(),
                       [](char byte) { return static_cast<signed char>(byte) > 0; }) &&
           json.find("\\u") == std::string_view::npos;
}

bool isPlain(test::PlainFrame const & frame) {
    return isPlain(frame.body) && isPlain(frame.headerFields.value_or("")) &&
           (!frame.subMessages ||
            std::all_of(frame.subMessages->begin(), frame.subMessages->end(),
                        [](test::PlainFrame const & inner) { return isPlain(inner); }));
}

/// From blocks that end with the parts, with a cache of its own.
MessageReference messageOf(test::PlainFrame const & frame) {
    test::FrameCopy const copy = test::copyOf(frame);
    test::ExactBuffer const type(copy.type);
    test::ExactBuffer const subject(copy.subject);
    test::ExactBuffer const headerFields(copy.headerFields);
    test::ExactBuffer const subMessages(copy.subMessages);
    test::ExactBuffer const body(copy.body);
    Frame parts;
    parts.kind = static_cast<FrameKind>(copy.kind);
    parts.flags = copy.flags;
    parts.number = copy.number;
    parts.type = {type.data(), type.size()};
    parts.subject = {subject.data(), subject.size()};
    parts.headerFields = {headerFields.data(), headerFields.size()};
    parts.subMessages = {subMessages.data(), subMessages.size()};
    parts.body = {body.data(), body.size()};

    SimpleObjectCache cache(SimpleObjectCache::defaultRawDataConverter(), 64);
    FrameMessages messages(&cache);
    ErrorInfo error;
    MessageReference const message = messages.read(parts, &error);
    FUZZ_CHECK(message.isNull() ==
               (error.getErrorCode() == KestrinConstants::ERR_InvalidMessageData));
    FUZZ_CHECK(message.isNull() == error.hasError());
    return message;
}

/// The frame that a message is written as, which has the kind and the number of another one.
test::PlainFrame written(KestrinMessage const & message, test::PlainFrame const & like) {
    FrameWriter writer;
    ErrorInfo error;
    std::string_view const bytes =
        writer.write(static_cast<FrameKind>(like.kind), like.isFailure ? FRAME_FAILURE : 0,
                     like.number, "", message, &error, NO_LIMIT);
    FUZZ_CHECK(!bytes.empty() && !error.hasError());
    test::PlainFrame frame;
    std::size_t size = 0;
    FUZZ_CHECK(test::FrameModel(NO_LIMIT).next(bytes, &frame, &size) ==
               test::FrameModel::Result::FRAME);
    FUZZ_CHECK(size == bytes.size());
    return frame;
}

void checkMessages(test::PlainFrame const & frame) {
    MessageReference const first = messageOf(frame);
    if (first.isNull()) {
        return;
    }
    test::PlainFrame const again = written(*first, frame);
    MessageReference const second = messageOf(again);
    FUZZ_CHECK(!second.isNull());
    if (isPlain(frame)) {
        FUZZ_CHECK(test::sameMessage(*first, *second));
    }
    test::PlainFrame const onceMore = written(*second, frame);
    MessageReference const third = messageOf(onceMore);
    FUZZ_CHECK(!third.isNull());
    FUZZ_CHECK(test::sameMessage(*second, *third));
    FUZZ_CHECK(written(*third, frame) == onceMore);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * bytes, std::size_t size) {
    // A greater input has nothing new.
    constexpr std::size_t LARGEST = 1 << 16;
    if (size < 2 || size > LARGEST) {
        return 0;
    }
    unsigned int const limit = bytes[0] % 4 == 0 ? 20U + bytes[0] : NO_LIMIT;
    std::string_view stream(reinterpret_cast<char const *>(bytes) + 2, size - 2);
    platform::setAnsiCodePage(65001);

    FUZZ_CHECK(contentInPieces(stream, limit, bytes[1]) == test::contentByModel(stream, limit));

    test::FrameModel const model(limit);
    test::PlainFrame frame;
    std::size_t frameSize = 0;
    while (model.next(stream, &frame, &frameSize) == test::FrameModel::Result::FRAME) {
        checkMessages(frame);
        stream.remove_prefix(frameSize);
    }
    return 0;
}
