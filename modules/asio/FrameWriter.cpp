#include "modules/asio/FrameWriter.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "modules/asio/detail/FrameLayout.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/json/JsonMessageSerializer.h"
#include "tvk/platform/CodePage.h"
#include "tvk/values/ListDataImpl.h"
#include "tvk/values/MappedRecordData.h"

namespace tvk {

namespace {

constexpr int BAD_SIZE = KestrinConstants::ERR_InvalidMessageSize;
constexpr int BAD_DATA = KestrinConstants::ERR_InvalidMessageData;

bool isPlain(std::string_view text) {
    unsigned int high = 0;
    for (char const byte : text) {
        high |= static_cast<unsigned char>(byte);
    }
    return high < 0x80;
}

std::string_view viewOf(CString const & text) {
    return {text.GetString(), static_cast<std::size_t>(text.GetLength())};
}

/// JSON of records, behind a prefix, in a buffer that is kept.
class Json {
public:
    /// The whole, prefix included; a text above the limit may lack something.
    std::string_view write(std::string_view prefix, RecordData const & record,
                           std::uint64_t limit) {
        std::string_view text = writeOnce(prefix, record);
        std::size_t const room = serializer().capacity() - prefix.size();
        if (text.size() - prefix.size() > room / 2 - SLACK && text.size() <= limit) {
            enlarge(prefix.size() + 4 * (std::uint64_t{text.size()} + SLACK));
            text = writeOnce(prefix, record);
        }
        return text;
    }

    /// The bytes of the last result, to be changed in place.
    char * bytes() { return static_cast<char *>(serializer().getResultsBuffer()); }

    /// Gives the memory back.
    void forget() { serializer_.reset(); }

private:
    // The serializer drops the last escape of a text that, at twice its length, fills its room to the
    // end. A text is no longer than the whole, so that cannot be where the room is more than twice that.
    static constexpr std::size_t SLACK = 128;

    JsonMessageSerializer & serializer() {
        return serializer_.has_value() ? *serializer_ : serializer_.emplace();
    }

    std::string_view writeOnce(std::string_view prefix, RecordData const & record) {
        unsigned int const size = serializer().recordDataToJson(
            prefix.data(), static_cast<unsigned int>(prefix.size()), record, 0);
        return {bytes(), size};
    }

    /// Room comes from a prefix of its size alone.
    void enlarge(std::uint64_t capacity) {
        std::uint64_t const largest = std::numeric_limits<unsigned int>::max() / 2;
        std::vector<char> const prefix(static_cast<std::size_t>(std::min(capacity, largest)));
        RefCountedPtr<ListData> const nothing(new ListDataImpl(CString()));
        serializer().listDataToJson(prefix.data(), static_cast<unsigned int>(prefix.size()),
                                    *nothing, 0);
    }

    std::optional<JsonMessageSerializer> serializer_;
};

}  // namespace

struct FrameWriter::Impl {
    /// What is known of a frame beside its message.
    struct Envelope {
        int kind;
        int flags;
        unsigned long long number;
        CString const & subject;
    };

    std::string_view write(Envelope const & envelope, KestrinMessage const & message);

    // Each of these adds to `frame`; false with `*error`.
    bool addHead(Envelope const & envelope, KestrinMessage const & message, int depth);
    bool addText(CString const & text, char const * name, std::uint16_t * size);
    bool addRequestId(CString const & id);
    bool addSubject(CString const & subject, KestrinMessageHeader const & header,
                    std::uint16_t * size);
    bool addHeaderFields(KestrinMessageHeader const & header);
    bool addSubMessages(KestrinMessage const & message, int depth);
    bool addSubMessage(KestrinMessage const & message, int depth);

    std::uint64_t largestSize() const {
        return std::uint64_t{maximumFrameSize} + detail::FRAME_LENGTH_SIZE;
    }
    bool checkSize(std::size_t size);
    void forget();
    bool hasFieldsToWrite(KestrinMessageHeader const & header) const;

    std::string frame;  // without the body
    Json json;          // of the whole frame
    Json part;
    std::vector<char> room;
    CString const subjectName = "subject";
    CString const noSubject;
    ErrorInfo * error = nullptr;
    unsigned int maximumFrameSize = 0;
};

FrameWriter::FrameWriter() : impl_(std::make_unique<Impl>()) {}

FrameWriter::~FrameWriter() = default;

std::string_view FrameWriter::write(FrameKind kind, int flags, unsigned long long number,
                                    CString const & subject, KestrinMessage const & message,
                                    ErrorInfo * error, unsigned int maximumFrameSize) {
    impl_->error = error;
    impl_->maximumFrameSize = maximumFrameSize;
    std::string_view frame;
    try {
        frame = impl_->write({kind, flags & FRAME_FAILURE, number, subject}, message);
    } catch (char * text) {
        detail::refuseFrame(error, BAD_DATA, "a value has no form on the wire: %s", text);
    }
    if (frame.empty()) {
        impl_->forget();
    }
    return frame;
}

std::string_view FrameWriter::Impl::write(Envelope const & envelope,
                                          KestrinMessage const & message) {
    if (!detail::isKnownKind(envelope.kind, detail::FrameLevel::TOP)) {
        detail::refuseFrame(error, KestrinConstants::ERR_ProtocolFailure,
                            "unknown kind %d of a frame", envelope.kind);
        return {};
    }
    if (envelope.flags != 0 && envelope.kind != FRAME_REPLY) {
        detail::refuseFrame(error, KestrinConstants::ERR_ProtocolFailure,
                            "a frame of kind %d cannot be a failure", envelope.kind);
        return {};
    }
    frame.clear();
    if (!addHead(envelope, message, 0)) {
        return {};
    }
    if (message.getFieldCount() == 0) {
        detail::storeUInt32(frame.data(),
                            static_cast<std::uint32_t>(frame.size() - detail::FRAME_LENGTH_SIZE));
        return frame;
    }
    std::string_view const whole = json.write(frame, message, largestSize());
    if (!checkSize(whole.size())) {
        return {};
    }
    detail::storeUInt32(json.bytes(),
                        static_cast<std::uint32_t>(whole.size() - detail::FRAME_LENGTH_SIZE));
    return whole;
}

/// All but the length and the body.
bool FrameWriter::Impl::addHead(Envelope const & envelope, KestrinMessage const & message,
                                int depth) {
    std::size_t const start = frame.size();
    frame.append(detail::FRAME_FIXED_SIZE, '\0');
    KestrinMessageHeader const & header = message.header();
    detail::FixedPart fixed;
    fixed.kind = static_cast<std::uint8_t>(envelope.kind);
    fixed.number = envelope.number;
    int flags = envelope.flags;

    if (!addText(header.getMessageTypeId(), "type", &fixed.typeSize) ||
        !addSubject(envelope.subject, header, &fixed.subjectSize)) {
        return false;
    }
    // The number of a whole frame is its identifier.
    CString const id = depth != 0 ? header.getRequestId() : CString();
    if (!id.IsEmpty()) {
        flags |= FRAME_REQUEST_ID_TEXT;
        if (!addRequestId(id)) {
            return false;
        }
    }
    if (hasFieldsToWrite(header)) {
        flags |= FRAME_HEADER_FIELDS;
        if (!addHeaderFields(header)) {
            return false;
        }
    }
    if (message.getSubMessageCount() != 0) {
        flags |= FRAME_SUB_MESSAGES;
        if (!addSubMessages(message, depth + 1)) {
            return false;
        }
    }
    if (!checkSize(frame.size())) {
        return false;
    }
    fixed.flags = static_cast<std::uint8_t>(flags);
    fixed.headSize = static_cast<std::uint32_t>(frame.size() - start - detail::FRAME_FIXED_SIZE);
    fixed.store(frame.data() + start);
    return true;
}

bool FrameWriter::Impl::addText(CString const & text, char const * name, std::uint16_t * size) {
    std::string_view utf8 = viewOf(text);
    if (!isPlain(utf8)) {
        room.resize(std::max(room.size(), utf8.size() * platform::ANSI_TO_UTF8_ROOM));
        utf8 = {room.data(), platform::ansiToUtf8(utf8.data(), utf8.size(), room.data())};
    }
    if (utf8.size() > detail::MAXIMUM_FRAME_TEXT) {
        return detail::refuseFrame(error, BAD_SIZE, "the %s has %zu bytes, more than %zu", name,
                                   utf8.size(), detail::MAXIMUM_FRAME_TEXT);
    }
    if (utf8.find('\0') != std::string_view::npos) {
        return detail::refuseFrame(error, BAD_DATA, "the %s of %zu bytes has a NUL", name,
                                   utf8.size());
    }
    frame.append(utf8);
    *size = static_cast<std::uint16_t>(utf8.size());
    return true;
}

bool FrameWriter::Impl::addRequestId(CString const & id) {
    std::size_t const at = frame.size();
    std::uint16_t size = 0;
    frame.append(sizeof size, '\0');
    if (!addText(id, "request identifier", &size)) {
        return false;
    }
    detail::storeUInt16(frame.data() + at, size);
    return true;
}

bool FrameWriter::Impl::addSubject(CString const & subject, KestrinMessageHeader const & header,
                                   std::uint16_t * size) {
    if (!subject.IsEmpty() || header.getFieldCount() == 0) {
        return addText(subject, "subject", size);
    }
    RefCountedPtr<FieldValue> const value = header.getFieldValue(subjectName);
    if (value.isNull()) {
        return true;
    }
    FieldTypeEnum const type = value->getFieldType();
    if (type != FLDTYPE_STRING && type != FLDTYPE_NUMBER) {
        return detail::refuseFrame(error, BAD_DATA,
                                   "the header's subject is no text but a value of type %d", type);
    }
    return addText(value->asString(), "subject", size);
}

bool FrameWriter::Impl::hasFieldsToWrite(KestrinMessageHeader const & header) const {
    unsigned int const count = header.getFieldCount();
    return count > 1 || (count == 1 && !header.hasField(subjectName));
}

bool FrameWriter::Impl::addHeaderFields(KestrinMessageHeader const & header) {
    RefCountedPtr<MappedRecordData> others;
    RecordData const * fields = &header;
    if (header.hasField(subjectName)) {
        others = new MappedRecordData(static_cast<RecordData const &>(header));
        others->removeField(subjectName);
        fields = others.get();
    }
    std::string_view const text = part.write({}, *fields, largestSize());
    char size[sizeof(std::uint32_t)];
    detail::storeUInt32(size, static_cast<std::uint32_t>(text.size()));
    frame.append(size, sizeof size).append(text);
    return true;
}

bool FrameWriter::Impl::addSubMessages(KestrinMessage const & message, int depth) {
    if (!detail::checkDepth(depth, BAD_DATA, error)) {
        return false;
    }
    unsigned int const count = message.getSubMessageCount();
    char bytes[sizeof(std::uint32_t)];
    detail::storeUInt32(bytes, count);
    frame.append(bytes, sizeof bytes);
    for (unsigned int i = 0; i < count; ++i) {
        RefCountedPtr<KestrinMessage> const subMessage = message.getSubMessage(i);
        if (subMessage.isNull()) {
            return detail::refuseFrame(error, BAD_DATA, "sub-message %u is null", i);
        }
        if (!addSubMessage(*subMessage, depth)) {
            return false;
        }
    }
    return true;
}

bool FrameWriter::Impl::addSubMessage(KestrinMessage const & message, int depth) {
    std::size_t const start = frame.size();
    int const kind = message.header().getMessageKind();
    bool const isKnown = detail::isKnownKind(kind, detail::FrameLevel::SUB_MESSAGE);
    if (!addHead({isKnown ? kind : 0, 0, 0, noSubject}, message, depth)) {
        return false;
    }
    if (message.getFieldCount() != 0) {
        std::string_view const body = part.write({}, message, largestSize());
        if (!checkSize(frame.size() + body.size())) {
            return false;
        }
        frame.append(body);
    }
    detail::storeUInt32(
        frame.data() + start,
        static_cast<std::uint32_t>(frame.size() - start - detail::FRAME_LENGTH_SIZE));
    return true;
}

bool FrameWriter::Impl::checkSize(std::size_t size) {
    return size <= largestSize() ||
           detail::refuseFrame(
               error, BAD_SIZE, "a frame of length %llu or more, above %u is not allowed",
               static_cast<unsigned long long>(size - detail::FRAME_LENGTH_SIZE), maximumFrameSize);
}

/// What was refused may have been of any size.
void FrameWriter::Impl::forget() {
    json.forget();
    part.forget();
    std::string().swap(frame);
}

}  // namespace tvk
