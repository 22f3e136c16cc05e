#include "tvk/json/JsonMessageSerializer.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <string_view>
#include <typeinfo>
#include <utility>
#include <vector>

#include "tvk/json/JsonUtil.h"
#include "tvk/json/detail/InlineStack.h"
#include "tvk/json/detail/JsonEscapes.h"
#include "tvk/json/detail/PlainText.h"
#include "tvk/json/detail/ReadyNames.h"
#include "tvk/json/detail/WellFormedUtf8.h"
#include "tvk/platform/CodePage.h"
#include "tvk/platform/TargetCode.h"
#include "tvk/values/MappedRecordData.h"
#include "tvk/values/detail/FieldMap.h"
#include "tvk/values/detail/OneBlock.h"
#include "tvk/values/detail/OwnValues.h"

namespace tvk {

namespace {

constexpr unsigned int INITIAL_CAPACITY = 8192;
/// What stands free behind a prefix that made the buffer grow.
constexpr unsigned int ROOM_BEHIND_PREFIX = 2048;
constexpr unsigned int UTF8_CODE_PAGE = 65001;

unsigned int sizeOf(CString const & text) { return static_cast<unsigned int>(text.GetLength()); }

void reallocate(char ** buffer, unsigned int * capacity, std::uint64_t size) {
    if (size > std::numeric_limits<unsigned int>::max()) {
        throw std::bad_alloc();
    }
    void * const grown = std::realloc(*buffer, static_cast<std::size_t>(size));
    if (grown == nullptr) {
        throw std::bad_alloc();
    }
    *buffer = static_cast<char *>(grown);
    *capacity = static_cast<unsigned int>(size);
}

bool hasHighByte(char const * text, std::size_t length) {
    unsigned char seen = 0;
    for (std::size_t i = 0; i < length; ++i) {
        seen |= static_cast<unsigned char>(text[i]);
    }
    return seen >= 0x80;
}

/// UTF-8 of a text in the application's code page, for as long as this object lives.
class Utf8Text {
public:
    Utf8Text(char const * text, unsigned int length) {
        std::size_t const room = platform::ANSI_TO_UTF8_ROOM * std::size_t{length};
        if (room > sizeof short_) {
            long_ = std::make_unique_for_overwrite<char[]>(room);
        }
        std::size_t const size =
            platform::ansiToUtf8(text, length, long_ == nullptr ? short_ : long_.get());
        if (size > std::numeric_limits<unsigned int>::max()) {
            throw std::bad_alloc();
        }
        length_ = static_cast<unsigned int>(size);
    }

    char const * text() const { return long_ == nullptr ? short_ : long_.get(); }
    unsigned int length() const { return length_; }

private:
    char short_[384];
    std::unique_ptr<char[]> long_;
    unsigned int length_;
};

/// Writes one value with all that is nested in it, at the end of a growing text.
///
/// There are two roads, which give the same bytes and the same growth. Where the room is ample,
/// whatever the next piece may need, pieces are copied as they stand, in blocks. Elsewhere, and
/// where a text holds what is to be escaped or converted, each write measures its own room first.
class JsonWriter {
public:
    JsonWriter(char ** buffer, unsigned int position, unsigned int * capacity, int options)
        : buffer_(buffer),
          capacity_(capacity),
          end_(*buffer + *capacity),
          options_(options),
          quotesNames_((options & JSON_UNQUOTED_NAMES) == 0),
          true_(FieldValue::TRUE_VALUE),
          false_(FieldValue::FALSE_VALUE),
          plainAscii_((options & JSON_ESCAPE_SLASH) != 0),
          plainUtf8_((options & JSON_ESCAPE_SLASH) != 0),
          start_(position) {}

    /// The bytes written.
    template <class Container>
    unsigned int write(Container const & container) {
        char * out = *buffer_ + start_;
        out = open(container, out);
        out = finish(out);
        return static_cast<unsigned int>(out - *buffer_) - start_;
    }

private:
    using Reference = RefCountedPtr<FieldValue>;
    using FieldsInMap = detail::FieldMap::Map;

    enum class Kind {
        SHAPED_RECORD,
        UNQUOTED_RECORD,
        RECORD_IN_MAP,
        OTHER_RECORD,
        OWN_LIST,
        OTHER_LIST
    };

    /// A record or list that is being written, and how far.
    struct Open {
        Kind kind;
        unsigned int next;
        unsigned int count;
        // Of a record with a shape, whose names are written without quotes where it is UNQUOTED.
        detail::ReadyNames const * names;
        union {
            Reference const * values;           // of a shaped record or an own list
            FieldsInMap::const_iterator field;  // the next one of a record in a map
        };
    };

    /// How far a container was written, and the one within it that comes next, null at its end.
    struct Step {
        char * out;
        FieldValue const * inner;
    };

    /// What a container of another class needs besides.
    struct Other {
        std::vector<RecordData::Field> fields;
        ListData const * list;
        // Lists may make an element up when it is asked for: it is held while it is written.
        Reference held;
    };

    /// Depths that messages have; the parser keeps room for as many.
    static constexpr std::size_t ORDINARY_DEPTH = 32;
    /// A block may be stored where less than one is left to write.
    static constexpr std::uint64_t BLOCK = detail::TextBlock::SIZE;
    /// More than any write of a value up to a block asks for: twice its length between quotes behind a
    /// comma, and what a block is stored over.
    static constexpr std::uint64_t ROOM_FOR_SHORT_VALUE = 4 * BLOCK;
    /// No byte of a text asks for more: one becomes three in UTF-8 at most.
    static constexpr std::uint64_t ROOM_FOR_ANY_BYTE = 2 * platform::ANSI_TO_UTF8_ROOM;

    char * open(RecordData const & record, char * out) {
        if (detail::FieldMap const * const fields = detail::FieldMap::ofOwn(record);
            fields != nullptr) {
            return openOwn(*fields, out);
        }
        out = put(out, '{');
        std::vector<RecordData::Field> fields = record.getAllFields();
        open_.push({Kind::OTHER_RECORD, 0, static_cast<unsigned int>(fields.size()), nullptr, {}});
        others_.push({std::move(fields), nullptr, nullptr});
        return out;
    }

    char * openOwn(detail::FieldMap const & fields, char * out) {
        out = put(out, '{');
        auto const count = static_cast<unsigned int>(fields.count());
        if (detail::FieldShape const * const shape = fields.shape(); shape != nullptr) {
            open_.push({quotesNames_ ? Kind::SHAPED_RECORD : Kind::UNQUOTED_RECORD,
                        0,
                        count,
                        &detail::ReadyNames::of(*shape),
                        {fields.values()}});
        } else {
            Open record = {Kind::RECORD_IN_MAP, 0, count, nullptr, {}};
            if (count != 0) {
                record.field = fields.map().begin();
            }
            open_.push(Open(record));
        }
        return out;
    }

    char * open(ListData const & list, char * out) {
        if (&typeid(list) == &typeid(ListDataImpl)) {
            return openOwn(static_cast<ListDataImpl const &>(list), out);
        }
        out = put(out, '[');
        open_.push({Kind::OTHER_LIST, 0, list.getCount(), nullptr, {}});
        others_.push({{}, &list, nullptr});
        return out;
    }

    char * openOwn(ListDataImpl const & list, char * out) {
        out = put(out, '[');
        auto const elements = detail::OwnValues::elements(list);
        open_.push({Kind::OWN_LIST,
                    0,
                    static_cast<unsigned int>(elements.size()),
                    nullptr,
                    {elements.data()}});
        return out;
    }

    /// Writes what is open to its end. A container within it goes on top and comes first.
    char * finish(char * out) {
        while (!open_.empty()) {
            Open & container = open_.top();
            Step const step =
                container.kind == Kind::SHAPED_RECORD ? writeShapedFields(container, out)
                : container.kind == Kind::OWN_LIST    ? writeOwnElements(container, out)
                                                      : writeRareContainer(container, out);
            out = step.inner != nullptr ? openValue(*step.inner, step.out)
                                        : close(container.kind, step.out);
        }
        return out;
    }

    TVK_NOINLINE Step writeRareContainer(Open & container, char * out) {
        switch (container.kind) {
            case Kind::UNQUOTED_RECORD:
                return writeUnquotedFields(container, out);
            case Kind::RECORD_IN_MAP:
                return writeFieldsInMap(container, out);
            case Kind::OTHER_RECORD:
                return writeOtherFields(container, out);
            default:
                return writeOtherElements(container, out);
        }
    }

    char * openValue(FieldValue const & value, char * out) {
        std::type_info const * const type = &typeid(value);
        if (type == &typeid(MappedRecordData)) {
            return openOwn(detail::FieldMap::of(static_cast<MappedRecordData const &>(value)), out);
        }
        if (type == &typeid(ListDataImpl)) {
            return openOwn(static_cast<ListDataImpl const &>(value), out);
        }
        return value.getFieldType() == FLDTYPE_LIST ? open(value.asList(), out)
                                                    : open(value.asRecord(), out);
    }

    char * close(Kind kind, char * out) {
        bool const isList = kind == Kind::OWN_LIST || kind == Kind::OTHER_LIST;
        out = put(out, isList ? ']' : '}');
        if (kind == Kind::OTHER_LIST || kind == Kind::OTHER_RECORD) {
            others_.pop();
        }
        open_.pop();
        return out;
    }

    // Each of these writes to the end of the container, or to the next one within it.

    Step writeShapedFields(Open & record, char * out) {
        detail::ReadyNames::Name const * const names = record.names->names();
        char const * const texts = record.names->texts();
        Reference const * const values = record.values;
        unsigned int const count = record.count;
        for (unsigned int i = record.next; i < count; ++i) {
            detail::ReadyNames::Name const name = names[i];
            FieldValue const * const value = values[i].get();
            bool const hasRoom = room(out) >= 2 * std::uint64_t{name.length} + ROOM_FOR_SHORT_VALUE;
            out = hasRoom ? copyName(texts + name.start, name.length, out)
                          : writeName(record.names->shape().name(i), i == 0, out);
            char * const behind = hasRoom ? writeValueInRoom(value, out) : writeValue(value, out);
            if (behind == nullptr) {
                record.next = i + 1;
                return {out, value};
            }
            out = behind;
        }
        return {out, nullptr};
    }

    TVK_INLINE static char * copyName(char const * text, std::size_t length, char * out) {
        std::memcpy(out, text, BLOCK);
        for (std::size_t at = BLOCK; at < length; at += BLOCK) {
            std::memcpy(out + at, text + at, BLOCK);
        }
        return out + length;
    }

    Step writeUnquotedFields(Open & record, char * out) {
        while (record.next < record.count) {
            unsigned int const i = record.next++;
            out = writeName(record.names->shape().name(i), i == 0, out);
            FieldValue const * const value = record.values[i].get();
            char * const behind = writeValue(value, out);
            if (behind == nullptr) {
                return {out, value};
            }
            out = behind;
        }
        return {out, nullptr};
    }

    Step writeFieldsInMap(Open & record, char * out) {
        while (record.next < record.count) {
            auto const & [name, value] = *record.field++;
            out = writeName(name, record.next++ == 0, out);
            char * const behind = writeValue(value.get(), out);
            if (behind == nullptr) {
                return {out, value.get()};
            }
            out = behind;
        }
        return {out, nullptr};
    }

    Step writeOtherFields(Open & record, char * out) {
        std::vector<RecordData::Field> const & fields = others_.top().fields;
        while (record.next < record.count) {
            RecordData::Field const & field = fields[record.next];
            out = writeName(*field.name, record.next++ == 0, out);
            char * const behind = writeValue(field.value, out);
            if (behind == nullptr) {
                return {out, field.value};
            }
            out = behind;
        }
        return {out, nullptr};
    }

    Step writeOwnElements(Open & list, char * out) {
        Reference const * const values = list.values;
        unsigned int const count = list.count;
        for (unsigned int i = list.next; i < count; ++i) {
            FieldValue const * const value = values[i].get();
            bool const hasRoom = room(out) >= ROOM_FOR_SHORT_VALUE;
            if (hasRoom) {
                *out = ',';
                out += i != 0 ? 1 : 0;
            } else if (i != 0) {
                out = put(out, ',');
            }
            char * const behind = hasRoom ? writeValueInRoom(value, out) : writeValue(value, out);
            if (behind == nullptr) {
                list.next = i + 1;
                return {out, value};
            }
            out = behind;
        }
        return {out, nullptr};
    }

    Step writeOtherElements(Open & list, char * out) {
        Other & other = others_.top();
        other.held = nullptr;
        while (list.next < list.count) {
            Reference element = other.list->getElement(list.next);
            if (list.next++ != 0) {
                out = put(out, ',');
            }
            char * const behind = writeValue(element.get(), out);
            if (behind == nullptr) {
                other.held = std::move(element);
                return {out, other.held.get()};
            }
            out = behind;
        }
        return {out, nullptr};
    }

    // Each of these writes a scalar and returns the place behind it; for lists and records null, and
    // nothing is written.

    /// Requires: ROOM_FOR_SHORT_VALUE, but for what a comma has taken.
    TVK_INLINE char * writeValueInRoom(FieldValue const * value, char * out) {
        if (value == nullptr) {
            return std::copy_n("null", 4, out);
        }
        // By address: where two modules have a description of one class each, the value is taken for
        // one of another class, which gives the same by the calls of its interface.
        std::type_info const * const type = &typeid(*value);
        if (type == &typeid(detail::OneBlock<StringData>) || type == &typeid(StringData)) {
            CString const & text = detail::OwnValues::text(static_cast<StringData const &>(*value));
            unsigned int const length = sizeOf(text);
            *out = '"';
            if (length <= BLOCK && plainAscii_.copyStart(text.GetString(), length, out + 1)) {
                out[length + 1] = '"';
                return out + length + 2;
            }
            return writeString(text, out);
        }
        if (type == &typeid(detail::OneBlock<NumberData>) ||
            (type == &typeid(NumberData) && !isBoolean(*value))) {
            CString const & text = detail::OwnValues::text(static_cast<NumberData const &>(*value));
            unsigned int const length = sizeOf(text);
            if (length <= BLOCK && plainAscii_.copyStart(text.GetString(), length, out)) {
                return out + length;
            }
            return writeText(text, out);
        }
        return type == &typeid(MappedRecordData) || type == &typeid(ListDataImpl)
                   ? nullptr
                   : writeOtherValue(*value, out);
    }

    TVK_NOINLINE char * writeValue(FieldValue const * value, char * out) {
        if (room(out) >= ROOM_FOR_SHORT_VALUE) {
            return writeValueInRoom(value, out);
        }
        return value != nullptr ? writeOtherValue(*value, out) : put(out, std::string_view("null"));
    }

    TVK_NOINLINE char * writeOtherValue(FieldValue const & value, char * out) {
        switch (value.getFieldType()) {
            case FLDTYPE_NUMBER:
                return isBoolean(value) ? writeBoolean(value, out)
                                        : writeText(value.asString(), out);
            case FLDTYPE_LIST:
            case FLDTYPE_RECORD:
                return nullptr;
            // Raw data throws here.
            case FLDTYPE_STRING:
            case FLDTYPE_RAW:
            default:
                return writeString(value.asString(), out);
        }
    }

    bool isBoolean(FieldValue const & number) const {
        return &number == true_ || &number == false_;
    }

    char * writeBoolean(FieldValue const & number, char * out) {
        return put(out, &number == true_ ? std::string_view("true") : std::string_view("false"));
    }

    TVK_NOINLINE char * writeString(CString const & text, char * out) {
        unsigned int const length = sizeOf(text);
        if (hasAmpleRoom(length, out) && plainAscii_.copyAll(text.GetString(), length, out + 1)) {
            out[0] = '"';
            out[length + 1] = '"';
            return out + length + 2;
        }
        out = put(out, '"');
        out = writeTextCarefully(text, out);
        return put(out, '"');
    }

    TVK_NOINLINE char * writeText(CString const & text, char * out) {
        unsigned int const length = sizeOf(text);
        if (hasAmpleRoom(length, out) && plainAscii_.copyAll(text.GetString(), length, out)) {
            return out + length;
        }
        return writeTextCarefully(text, out);
    }

    TVK_NOINLINE char * writeName(CString const & name, bool isFirst, char * out) {
        if (!isFirst) {
            out = put(out, ',');
        }
        out = quotesNames_ ? writeString(name, out) : writeText(name, out);
        return put(out, ':');
    }

    /// One text, escaped and in UTF-8, without quotes.
    TVK_NOINLINE char * writeTextCarefully(CString const & text, char * out) {
        unsigned int const length = sizeOf(text);
        char const * const bytes = text.GetString();
        std::uint64_t const wanted =
            (ROOM_FOR_ANY_BYTE + platform::ANSI_TO_UTF8_ROOM) * std::uint64_t{length};
        return room(out) >= wanted + BLOCK ? escapeInAmpleRoom(bytes, length, out)
                                           : escapeInMeasuredRoom(bytes, length, out);
    }

    /// For texts for which the buffer would not have grown, whatever they hold. There is room behind
    /// the result for the text in UTF-8 as well.
    char * escapeInAmpleRoom(char const * text, std::size_t length, char * out) {
        if (!hasHighByte(text, length) || (platform::ansiCodePage() == UTF8_CODE_PAGE &&
                                           detail::WellFormedUtf8::is(text, length))) {
            return escape(text, length, out);
        }
        char * const utf8 = out + ROOM_FOR_ANY_BYTE * length;
        return escape(utf8, platform::ansiToUtf8(text, length, utf8), out);
    }

    /// Well-formed UTF-8. A NUL ends it.
    char * escape(char const * text, std::size_t length, char * out) {
        for (std::size_t at = 0;; ++at) {
            std::size_t const plain = plainUtf8_.copy(text + at, length - at, out);
            at += plain;
            out += plain;
            if (at == length || text[at] == '\0') {
                return out;
            }
            if (char const letter = detail::escapeOf(text[at]); letter != 0) {
                *out++ = '\\';
                *out++ = letter;
            } else {
                *out++ = text[at];
            }
        }
    }

    /// Growth follows twice the length in UTF-8, before it is known what the text needs.
    char * escapeInMeasuredRoom(char const * text, unsigned int length, char * out) {
        if (hasHighByte(text, length)) {
            Utf8Text const converted(text, length);
            return writeUtf8(converted.text(), converted.length(), out);
        }
        return writeUtf8(text, length, out);
    }

    char * writeUtf8(char const * text, unsigned int length, char * out) {
        out = require(out, std::uint64_t{length} * 2);
        unsigned int written = 0;
        JsonUtil::writeUnquotedJsonStringValue(
            text, length, out, static_cast<unsigned int>(end_ - out), &written, options_);
        return out + written;
    }

    char * put(char * out, char character) {
        out = require(out, 1);
        *out = character;
        return out + 1;
    }

    char * put(char * out, std::string_view text) {
        out = require(out, text.size());
        std::memcpy(out, text.data(), text.size());
        return out + text.size();
    }

    std::uint64_t room(char const * out) const { return static_cast<std::uint64_t>(end_ - out); }

    /// Room for a plain text between quotes, for which the buffer would not have grown.
    bool hasAmpleRoom(unsigned int length, char const * out) const {
        return room(out) >= 2 * std::uint64_t{length} + BLOCK;
    }

    char * require(char * out, std::uint64_t bytes) {
        return bytes > room(out) ? grow(out, bytes) : out;
    }

    TVK_NOINLINE char * grow(char * out, std::uint64_t bytes) {
        auto const position = static_cast<std::uint64_t>(out - *buffer_);
        std::uint64_t const doubled = std::min<std::uint64_t>(
            std::uint64_t{*capacity_} * 2, std::numeric_limits<unsigned int>::max());
        reallocate(buffer_, capacity_, std::max(position + bytes, doubled));
        end_ = *buffer_ + *capacity_;
        return *buffer_ + position;
    }

    char ** buffer_;
    unsigned int * capacity_;
    char * end_;
    int options_;
    bool quotesNames_;
    FieldValue const * true_;
    FieldValue const * false_;
    detail::PlainAscii plainAscii_;
    detail::PlainUtf8 plainUtf8_;
    unsigned int start_;
    detail::InlineStack<Open, ORDINARY_DEPTH> open_;
    detail::InlineStack<Other, ORDINARY_DEPTH> others_;
};

}  // namespace

JsonMessageSerializer::JsonMessageSerializer() : buffer_(nullptr), capacity_(0) {
    reallocate(&buffer_, &capacity_, INITIAL_CAPACITY);
}

JsonMessageSerializer & JsonMessageSerializer::operator=(JsonMessageSerializer const & other) =
    default;

JsonMessageSerializer::~JsonMessageSerializer() { std::free(buffer_); }

unsigned int JsonMessageSerializer::messageToJson(void const * prefix, unsigned int prefixSize,
                                                  KestrinMessage const & message, int options) {
    return recordDataToJson(prefix, prefixSize, message, options);
}

unsigned int JsonMessageSerializer::recordDataToJson(void const * prefix, unsigned int prefixSize,
                                                     RecordData const & record, int options) {
    writePrefix(prefix, prefixSize);
    return prefixSize + internalWriteRecordData(&buffer_, prefixSize, &capacity_, record, options);
}

unsigned int JsonMessageSerializer::listDataToJson(void const * prefix, unsigned int prefixSize,
                                                   ListData const & list, int options) {
    writePrefix(prefix, prefixSize);
    return prefixSize + internalWriteListData(&buffer_, prefixSize, &capacity_, list, options);
}

void JsonMessageSerializer::ensureBufferSize(unsigned int size) {
    if (size > capacity_) {
        reallocate(&buffer_, &capacity_, size);
    }
}

void JsonMessageSerializer::writePrefix(void const * prefix, unsigned int prefixSize) {
    if (prefixSize == 0) {
        return;
    }
    if (prefixSize > std::numeric_limits<unsigned int>::max() - ROOM_BEHIND_PREFIX) {
        throw std::bad_alloc();
    }
    ensureBufferSize(prefixSize + ROOM_BEHIND_PREFIX);
    std::memcpy(buffer_, prefix, prefixSize);
}

unsigned int JsonMessageSerializer::internalWriteRecordData(char ** buffer, unsigned int position,
                                                            unsigned int * capacity,
                                                            RecordData const & record,
                                                            int options) {
    return JsonWriter(buffer, position, capacity, options).write(record);
}

unsigned int JsonMessageSerializer::internalWriteListData(char ** buffer, unsigned int position,
                                                          unsigned int * capacity,
                                                          ListData const & list, int options) {
    return JsonWriter(buffer, position, capacity, options).write(list);
}

}  // namespace tvk
