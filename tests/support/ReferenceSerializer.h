#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "tvk/json/JsonUtil.h"
#include "tvk/platform/CodePage.h"
#include "tvk/values/ListData.h"
#include "tvk/values/RecordData.h"

namespace tvk::test {

/// The serializer again, written down plainly: the growth before each write, and the text itself.
class ReferenceSerializer {
public:
    ReferenceSerializer(unsigned int capacity, int options)
        : capacity_(capacity), options_(options) {}

    void write(FieldValue const * value) {
        if (value == nullptr) {
            put("null");
        } else if (value->getFieldType() == FLDTYPE_LIST) {
            writeList(value->asList());
        } else if (value->getFieldType() == FLDTYPE_RECORD) {
            writeRecord(value->asRecord());
        } else if (value == FieldValue::TRUE_VALUE) {
            put("true");
        } else if (value == FieldValue::FALSE_VALUE) {
            put("false");
        } else if (value->getFieldType() == FLDTYPE_NUMBER) {
            writeText(value->asString());
        } else {
            put("\"");
            writeText(value->asString());
            put("\"");
        }
    }

    std::string text;
    unsigned int capacity() const { return capacity_; }

private:
    void writeRecord(RecordData const & record) {
        put("{");
        bool isFirst = true;
        for (RecordData::Field const & field : record.getAllFields()) {
            put(isFirst ? "" : ",");
            isFirst = false;
            bool const quotes = (options_ & JSON_UNQUOTED_NAMES) == 0;
            put(quotes ? "\"" : "");
            writeText(*field.name);
            put(quotes ? "\"" : "");
            put(":");
            write(field.value);
        }
        put("}");
    }

    void writeList(ListData const & list) {
        put("[");
        for (unsigned int i = 0; i < list.getCount(); ++i) {
            put(i == 0 ? "" : ",");
            write(list.getElement(i).get());
        }
        put("]");
    }

    void writeText(CString const & bytes) {
        CString const utf8 =
            platform::ansiToUtf8(bytes.GetString(), static_cast<unsigned int>(bytes.GetLength()));
        auto const length = static_cast<unsigned int>(utf8.GetLength());
        grow(2 * length);
        auto const room = static_cast<unsigned int>(capacity_ - text.size());
        std::vector<char> output(room + 1);
        unsigned int written = 0;
        JsonUtil::writeUnquotedJsonStringValue(utf8, length, output.data(), room, &written,
                                               options_);
        text.append(output.data(), written);
    }

    void put(std::string_view bytes) {
        for (char const byte : bytes) {
            if (bytes.size() != 4) {
                grow(1);
            } else if (&byte == bytes.data()) {
                grow(4);
            }
            text += byte;
        }
    }

    void grow(unsigned int bytes) {
        auto const needed = static_cast<unsigned int>(text.size()) + bytes;
        if (capacity_ < needed) {
            capacity_ = std::max(needed, 2 * capacity_);
        }
    }

    unsigned int capacity_;
    int options_;
};

}  // namespace tvk::test
