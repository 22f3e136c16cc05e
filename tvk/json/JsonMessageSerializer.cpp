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
#include "tvk/json/detail/PlainText.h"
#include "tvk/json/detail/ReadyNames.h"
#include "tvk/platform/CodePage.h"
#include "tvk/values/detail/FieldMap.h"
#include "tvk/values/detail/OneBlock.h"
#include "tvk/values/detail/OwnValues.h"

namespace tvk {

namespace {

constexpr unsigned int INITIAL_CAPACITY = 8192;
/// What stands free behind a prefix that made the buffer grow.
constexpr unsigned int ROOM_BEHIND_PREFIX = 2048;

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

bool hasHighByte(char const * text, unsigned int length) {
    return std::any_of(text, text + length,
                       [](char byte) { return static_cast<unsigned char>(byte) >= 0x80; });
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
          plain_((options & JSON_ESCAPE_SLASH) != 0),
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

    enum class Kind { SHAPED_RECORD, RECORD_IN_MAP, OTHER_RECORD, OWN_LIST, OTHER_LIST };

    /// A record or list that is being written, and how far.
    struct Open {
        Kind kind;
        unsigned int next;
        unsigned int count;
        Reference const * values;           // of a shaped record or an own list
        detail::FieldShape const * shape;   // of a shaped record
        detail::ReadyNames const * names;   // of a shaped record; null for names without quotes
        FieldsInMap::const_iterator field;  // the next one of a record in a map
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
    /// Texts up to this length are written without a look at the room of their own.
    static constexpr unsigned int SHORT_TEXT = 24;
    /// More than a comma, quotes and twice a short text, or any word, may ask for.
    static constexpr std::uint64_t ROOM_FOR_SHORT_VALUE = 2 * SHORT_TEXT + 2 * BLOCK;
    /// No byte of a text asks for more: one becomes three in UTF-8 at most.
    static constexpr std::uint64_t ROOM_FOR_ANY_BYTE = 2 * platform::ANSI_TO_UTF8_ROOM;

    char * open(RecordData const & record, char * out) {
        out = put(out, '{');
        detail::FieldMap const * const own = detail::FieldMap::ofOwn(record);
        Open opened = {};
        if (own == nullptr) {
            std::vector<RecordData::Field> fields = record.getAllFields();
            opened.kind = Kind::OTHER_RECORD;
            opened.count = static_cast<unsigned int>(fields.size());
            others_.push({std::move(fields), nullptr, nullptr});
        } else if (detail::FieldShape const * const shape = own->shape(); shape != nullptr) {
            opened.kind = Kind::SHAPED_RECORD;
            opened.count = static_cast<unsigned int>(shape->count());
            opened.values = own->values();
            opened.shape = shape;
            opened.names = quotesNames_ ? &detail::ReadyNames::of(*shape) : nullptr;
        } else {
            opened.kind = Kind::RECORD_IN_MAP;
            opened.count = static_cast<unsigned int>(own->count());
            if (opened.count != 0) {
                opened.field = own->map().begin();
            }
        }
        open_.push(std::move(opened));
        return out;
    }

    char * open(ListData const & list, char * out) {
        out = put(out, '[');
        Open opened = {};
        if (&typeid(list) == &typeid(ListDataImpl)) {
            auto const elements =
                detail::OwnValues::elements(static_cast<ListDataImpl const &>(list));
            opened.kind = Kind::OWN_LIST;
            opened.count = static_cast<unsigned int>(elements.size());
            opened.values = elements.data();
        } else {
            opened.kind = Kind::OTHER_LIST;
            opened.count = list.getCount();
            others_.push({{}, &list, nullptr});
        }
        open_.push(std::move(opened));
        return out;
    }

    /// Writes what is open to its end. A container within it goes on top and comes first.
    char * finish(char * out) {
        while (!open_.empty()) {
            Open & container = open_.top();
            FieldValue const * inner = nullptr;
            switch (container.kind) {
                case Kind::SHAPED_RECORD:
                    out = writeShapedFields(container, out, inner);
                    break;
                case Kind::RECORD_IN_MAP:
                    out = writeFieldsInMap(container, out, inner);
                    break;
                case Kind::OTHER_RECORD:
                    out = writeOtherFields(container, out, inner);
                    break;
                case Kind::OWN_LIST:
                    out = writeOwnElements(container, out, inner);
                    break;
                case Kind::OTHER_LIST:
                    out = writeOtherElements(container, out, inner);
                    break;
            }
            if (inner != nullptr) {
                out = openValue(*inner, out);
            } else {
                out = close(container.kind, out);
            }
        }
        return out;
    }

    char * openValue(FieldValue const & value, char * out) {
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

    // Each of these writes to the end of the container, or to the next one within it, which then is
    // `inner`.

    char * writeShapedFields(Open & record, char * out, FieldValue const *& inner) {
        for (unsigned int i = record.next; i < record.count; ++i) {
            out = record.names != nullptr ? writeReadyName(record, i, out)
                                          : writeName(record.shape->name(i), i == 0, out);
            out = writeValue(record.values[i].get(), out, inner);
            if (inner != nullptr) {
                record.next = i + 1;
                return out;
            }
        }
        return out;
    }

    char * writeFieldsInMap(Open & record, char * out, FieldValue const *& inner) {
        while (record.next < record.count && inner == nullptr) {
            auto const & [name, value] = *record.field++;
            out = writeName(name, record.next++ == 0, out);
            out = writeValue(value.get(), out, inner);
        }
        return out;
    }

    char * writeOtherFields(Open & record, char * out, FieldValue const *& inner) {
        std::vector<RecordData::Field> const & fields = others_.top().fields;
        while (record.next < record.count && inner == nullptr) {
            RecordData::Field const & field = fields[record.next];
            out = writeName(*field.name, record.next++ == 0, out);
            out = writeValue(field.value, out, inner);
        }
        return out;
    }

    char * writeOwnElements(Open & list, char * out, FieldValue const *& inner) {
        for (unsigned int i = list.next; i < list.count; ++i) {
            if (i != 0) {
                out = put(out, ',');
            }
            out = writeValue(list.values[i].get(), out, inner);
            if (inner != nullptr) {
                list.next = i + 1;
                return out;
            }
        }
        return out;
    }

    char * writeOtherElements(Open & list, char * out, FieldValue const *& inner) {
        Other & other = others_.top();
        other.held = nullptr;
        while (list.next < list.count) {
            Reference element = other.list->getElement(list.next);
            if (list.next++ != 0) {
                out = put(out, ',');
            }
            out = writeValue(element.get(), out, inner);
            if (inner != nullptr) {
                other.held = std::move(element);
                break;
            }
        }
        return out;
    }

    /// Writes a scalar. Lists and records are left to the caller, in `inner`.
    char * writeValue(FieldValue const * value, char * out, FieldValue const *& inner) {
        if (value == nullptr) {
            return put(out, std::string_view("null"));
        }
        // By address: where two modules have a description of one class each, the value is taken for
        // one of another class, which gives the same by the calls of its interface.
        std::type_info const * const type = &typeid(*value);
        if (type == &typeid(detail::OneBlock<StringData>) || type == &typeid(StringData)) {
            return writeString(detail::OwnValues::text(static_cast<StringData const &>(*value)),
                               out);
        }
        if (type == &typeid(detail::OneBlock<NumberData>) || type == &typeid(NumberData)) {
            return writeNumber(static_cast<NumberData const &>(*value), out);
        }
        return writeOtherValue(*value, out, inner);
    }

    char * writeOtherValue(FieldValue const & value, char * out, FieldValue const *& inner) {
        switch (value.getFieldType()) {
            case FLDTYPE_NUMBER:
                return isBoolean(value) ? writeBoolean(value, out)
                                        : writeText(value.asString(), out);
            case FLDTYPE_LIST:
            case FLDTYPE_RECORD:
                inner = &value;
                return out;
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

    char * writeNumber(NumberData const & number, char * out) {
        if (isBoolean(number)) {
            return writeBoolean(number, out);
        }
        CString const & text = detail::OwnValues::text(number);
        unsigned int const length = sizeOf(text);
        if (hasAmpleRoom(length, out) && plain_.copyAll(text.GetString(), length, out)) {
            return out + length;
        }
        return writeTextCarefully(text, out);
    }

    char * writeString(CString const & text, char * out) {
        unsigned int const length = sizeOf(text);
        if (hasAmpleRoom(length, out) && plain_.copyAll(text.GetString(), length, out + 1)) {
            out[0] = '"';
            out[length + 1] = '"';
            return out + length + 2;
        }
        out = put(out, '"');
        out = writeTextCarefully(text, out);
        return put(out, '"');
    }

    char * writeText(CString const & text, char * out) {
        unsigned int const length = sizeOf(text);
        if (hasAmpleRoom(length, out) && plain_.copyAll(text.GetString(), length, out)) {
            return out + length;
        }
        return writeTextCarefully(text, out);
    }

    char * writeReadyName(Open const & record, unsigned int index, char * out) {
        detail::ReadyNames::Name const name = record.names->names()[index];
        if (room(out) < 2 * std::uint64_t{name.length} + BLOCK) {
            return writeName(record.shape->name(index), index == 0, out);
        }
        unsigned int const commas = index == 0 ? 1 : 0;  // the first name has none
        char const * const text = record.names->texts() + name.start + commas;
        std::memcpy(out, text, BLOCK);
        unsigned int const length = name.length - commas;
        for (std::size_t at = BLOCK; at < length; at += BLOCK) {
            std::memcpy(out + at, text + at, BLOCK);
        }
        return out + length;
    }

    char * writeName(CString const & name, bool isFirst, char * out) {
        if (!isFirst) {
            out = put(out, ',');
        }
        out = quotesNames_ ? writeString(name, out) : writeText(name, out);
        return put(out, ':');
    }

    /// One text, escaped and in UTF-8, without quotes. Growth follows twice its length in UTF-8,
    /// before it is known what the text needs.
    char * writeTextCarefully(CString const & text, char * out) {
        unsigned int const length = sizeOf(text);
        char const * const bytes = text.GetString();
        if (hasHighByte(bytes, length)) {
            Utf8Text const converted(bytes, length);
            return writeUtf8(converted.text(), converted.length(), out);
        }
        return writeUtf8(bytes, length, out);
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

    char * grow(char * out, std::uint64_t bytes) {
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
    detail::PlainAscii plain_;
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
