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
#include <utility>
#include <vector>

#include "tvk/json/JsonUtil.h"
#include "tvk/json/detail/InlineStack.h"
#include "tvk/json/detail/PlainText.h"
#include "tvk/platform/CodePage.h"

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
class JsonWriter {
public:
    JsonWriter(char ** buffer, unsigned int position, unsigned int * capacity, int options)
        : buffer_(buffer),
          capacity_(capacity),
          start_(position),
          position_(position),
          options_(options),
          plain_((options & JSON_ESCAPE_SLASH) != 0) {}

    void write(RecordData const & record) {
        openRecord(record, nullptr);
        finish();
    }

    void write(ListData const & list) {
        openList(list, nullptr);
        finish();
    }

    unsigned int written() const { return position_ - start_; }

private:
    using Reference = RefCountedPtr<FieldValue>;

    /// A record or list that is being written, and how far.
    struct Open {
        Reference held;         // null where the container around it keeps it alive
        ListData const * list;  // null for a record
        std::vector<RecordData::Field> fields;
        unsigned int count;
        unsigned int next;
    };

    /// Depths that messages have; the parser keeps room for as many.
    static constexpr std::size_t ORDINARY_DEPTH = 32;

    void openRecord(RecordData const & record, Reference held) {
        put('{');
        std::vector<RecordData::Field> fields = record.getAllFields();
        auto const count = static_cast<unsigned int>(fields.size());
        open_.push({std::move(held), nullptr, std::move(fields), count, 0});
    }

    void openList(ListData const & list, Reference held) {
        put('[');
        open_.push({std::move(held), &list, {}, list.getCount(), 0});
    }

    /// Writes what is open to its end. A container within it goes on top and comes first.
    void finish() {
        while (!open_.empty()) {
            Open & container = open_.top();
            bool const isList = container.list != nullptr;
            bool const hasEnded = isList ? writeElements(container) : writeFields(container);
            if (hasEnded) {
                put(isList ? ']' : '}');
                open_.pop();
            }
        }
    }

    /// False when a container has been opened, which ends the life of `container` as a reference.
    bool writeFields(Open & container) {
        while (container.next < container.count) {
            RecordData::Field const & field = container.fields[container.next];
            writeName(*field.name, container.next++ == 0);
            if (!writeScalar(field.value)) {
                openContainer(*field.value, nullptr);
                return false;
            }
        }
        return true;
    }

    bool writeElements(Open & container) {
        while (container.next < container.count) {
            // Lists may make an element up when it is asked for: it is held while it is written.
            Reference element = container.list->getElement(container.next);
            if (container.next++ != 0) {
                put(',');
            }
            if (!writeScalar(element.get())) {
                FieldValue const & value = *element;
                openContainer(value, std::move(element));
                return false;
            }
        }
        return true;
    }

    void openContainer(FieldValue const & value, Reference held) {
        if (value.getFieldType() == FLDTYPE_LIST) {
            openList(value.asList(), std::move(held));
        } else {
            openRecord(value.asRecord(), std::move(held));
        }
    }

    /// False, and nothing written, for lists and records.
    bool writeScalar(FieldValue const * value) {
        if (value == nullptr) {
            put(std::string_view("null"));
            return true;
        }
        switch (value->getFieldType()) {
            case FLDTYPE_NUMBER:
                writeNumber(*value);
                return true;
            case FLDTYPE_LIST:
            case FLDTYPE_RECORD:
                return false;
            // Raw data throws here.
            case FLDTYPE_STRING:
            case FLDTYPE_RAW:
            default:
                writeString(value->asString());
                return true;
        }
    }

    void writeNumber(FieldValue const & number) {
        if (&number == FieldValue::TRUE_VALUE) {
            put(std::string_view("true"));
        } else if (&number == FieldValue::FALSE_VALUE) {
            put(std::string_view("false"));
        } else {
            writeText(number.asString());
        }
    }

    void writeString(CString const & text) {
        put('"');
        writeText(text);
        put('"');
    }

    void writeName(CString const & name, bool isFirst) {
        if (!isFirst) {
            put(',');
        }
        if ((options_ & JSON_UNQUOTED_NAMES) != 0) {
            writeText(name);
        } else {
            writeString(name);
        }
        put(':');
    }

    /// One text, escaped and in UTF-8, without quotes. Growth follows twice its length, before it is
    /// known what the text needs.
    void writeText(CString const & text) {
        unsigned int const length = sizeOf(text);
        char const * const bytes = text.GetString();
        if (std::uint64_t{length} * 2 <= *capacity_ - position_ &&
            plain_.copy(bytes, length, end()) == length) {
            position_ += length;
        } else if (hasHighByte(bytes, length)) {
            Utf8Text const converted(bytes, length);
            writeUtf8(converted.text(), converted.length());
        } else {
            writeUtf8(bytes, length);
        }
    }

    void writeUtf8(char const * text, unsigned int length) {
        require(std::uint64_t{length} * 2);
        unsigned int written = 0;
        JsonUtil::writeUnquotedJsonStringValue(text, length, end(), *capacity_ - position_,
                                               &written, options_);
        position_ += written;
    }

    void put(char character) {
        require(1);
        *end() = character;
        ++position_;
    }

    void put(std::string_view text) {
        require(text.size());
        std::memcpy(end(), text.data(), text.size());
        position_ += static_cast<unsigned int>(text.size());
    }

    void require(std::uint64_t bytes) {
        if (bytes > *capacity_ - position_) {
            grow(position_ + bytes);
        }
    }

    void grow(std::uint64_t needed) {
        std::uint64_t const doubled = std::min<std::uint64_t>(
            std::uint64_t{*capacity_} * 2, std::numeric_limits<unsigned int>::max());
        reallocate(buffer_, capacity_, std::max(needed, doubled));
    }

    char * end() const { return *buffer_ + position_; }

    char ** buffer_;
    unsigned int * capacity_;
    unsigned int start_;
    unsigned int position_;
    int options_;
    detail::PlainText plain_;
    detail::InlineStack<Open, ORDINARY_DEPTH> open_;
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
    JsonWriter writer(buffer, position, capacity, options);
    writer.write(record);
    return writer.written();
}

unsigned int JsonMessageSerializer::internalWriteListData(char ** buffer, unsigned int position,
                                                          unsigned int * capacity,
                                                          ListData const & list, int options) {
    JsonWriter writer(buffer, position, capacity, options);
    writer.write(list);
    return writer.written();
}

}  // namespace tvk
