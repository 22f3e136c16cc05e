// The serializer copies ready pieces where the room is ample, and measures each write elsewhere. Here
// both are compared with the plain model, in text and in growth: for every kind of record, every room
// and every byte.

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/support/RandomValues.h"
#include "tests/support/ReferenceSerializer.h"
#include "tests/support/UsingCodePage.h"
#include "tvk/json/JsonMessageParser.h"
#include "tvk/json/JsonMessageSerializer.h"
#include "tvk/values/MappedMessage.h"
#include "tvk/values/MappedMessageHeader.h"

namespace {

using namespace tvk;
using test::RandomValues;
using test::ReferenceSerializer;
using test::UsingCodePage;

using Value = RefCountedPtr<FieldValue>;

constexpr int ALL_OPTIONS[] = {0, JSON_ESCAPE_SLASH, JSON_UNQUOTED_NAMES,
                               JSON_ESCAPE_SLASH | JSON_UNQUOTED_NAMES};

CString bytesOf(std::string_view text) {
    return CString(text.data(), static_cast<int>(text.size()));
}

class DerivedRecord : public MappedRecordData {
protected:
    ~DerivedRecord() override = default;
};

class DerivedMessage : public MappedMessage {
protected:
    ~DerivedMessage() override = default;
};

/// A record of which everything is made up, in an order of its own.
class ForeignRecord : public MappedRecordData {
public:
    std::vector<Field> getAllFields() const override {
        std::vector<Field> fields = MappedRecordData::getAllFields();
        std::reverse(fields.begin(), fields.end());
        return fields;
    }

protected:
    ~ForeignRecord() override = default;
};

/// The road that a record takes through the serializer.
enum class Road { SHAPED, IN_MAP, MESSAGE, HEADER, DERIVED, DERIVED_MESSAGE, FOREIGN };
constexpr Road ALL_ROADS[] = {Road::SHAPED,  Road::IN_MAP,          Road::MESSAGE, Road::HEADER,
                              Road::DERIVED, Road::DERIVED_MESSAGE, Road::FOREIGN};

class SerializerRoads : public ::testing::Test {
protected:
    /// A record with these fields, whose names are ASCII without quotes where it is SHAPED.
    RefCountedPtr<RecordData> record(Road road,
                                     std::vector<std::pair<CString, Value>> const & fields) {
        RefCountedPtr<RecordData> result = empty(road, fields);
        for (auto const & [name, value] : fields) {
            result->setFieldValue(name, value);
        }
        return result;
    }

    /// Compares what is written with the model's text and growth.
    void expectAsModelled(FieldValue const & value, std::string const & prefix, int options) {
        auto const prefixSize = static_cast<unsigned int>(prefix.size());
        if (writer_->capacity() != CAPACITY) {
            writer_ = std::make_unique<JsonMessageSerializer>();
        }
        ReferenceSerializer model(std::max(CAPACITY, prefixSize == 0 ? 0 : prefixSize + 2048),
                                  options);
        model.text = prefix;
        model.write(&value);
        unsigned int const size =
            value.getFieldType() == FLDTYPE_LIST
                ? writer_->listDataToJson(prefix.data(), prefixSize, value.asList(), options)
                : writer_->recordDataToJson(prefix.data(), prefixSize, value.asRecord(), options);
        std::string_view const text(static_cast<char const *>(writer_->getResultsBuffer()), size);
        ASSERT_EQ(text, model.text);
        ASSERT_EQ(writer_->capacity(), model.capacity());
    }
    void expectAsModelled(FieldValue const & value, int options) {
        expectAsModelled(value, "", options);
    }

    /// The same behind texts that leave each room from 0 to `most` for the value.
    void expectAsModelledInEveryRoom(Value const & value, unsigned int most, int options) {
        RefCountedPtr<ListData> const list(new ListDataImpl(CString()));
        std::string const prefix(6144, 'p');
        for (unsigned int room = 0; room <= most; ++room) {
            list->removeAllElements();
            for (unsigned int left = 2048 - 1; left > room;) {
                // Quotes and a comma take three bytes, and a text asks for twice its length.
                unsigned int const length =
                    std::min((left - 3) / 2, left > room + 3 ? left - room - 3 : 0);
                list->addElement(length == 0 ? FieldValue::TWO_NUMBER_VALUE
                                             : Value(new StringData(length, 'x')).get());
                left -= std::min(left, length == 0 ? 2 : length + 3);
            }
            list->addElement(value);
            expectAsModelled(*list, prefix, options);
            if (HasFatalFailure()) {
                FAIL() << "room " << room;
            }
        }
    }

    SimpleObjectCache cache_{SimpleObjectCache::defaultRawDataConverter()};
    JsonMessageParser parser_{&cache_};

private:
    static constexpr unsigned int CAPACITY = 8192;

    RefCountedPtr<RecordData> empty(Road road,
                                    std::vector<std::pair<CString, Value>> const & fields) {
        switch (road) {
            case Road::SHAPED:
                return shaped(fields);
            case Road::IN_MAP:
                return new MappedRecordData;
            case Road::MESSAGE:
                return RefCountedPtr<RecordData>(new MappedMessage);
            case Road::HEADER:
                return RefCountedPtr<RecordData>(new MappedMessageHeader);
            case Road::DERIVED:
                return new DerivedRecord;
            case Road::DERIVED_MESSAGE:
                return RefCountedPtr<RecordData>(new DerivedMessage);
            case Road::FOREIGN:
                return new ForeignRecord;
        }
        return nullptr;
    }

    /// As the parser makes it: a setFieldValue of a name that is there keeps the shape.
    RefCountedPtr<RecordData> shaped(std::vector<std::pair<CString, Value>> const & fields) {
        std::string text = "{";
        for (auto const & [name, value] : fields) {
            text += (text.size() == 1 ? "\"" : ",\"") + escaped(name) + "\":1";
        }
        text += '}';
        return &parser_
                    .parseOneJsonValue(text.data(), static_cast<unsigned int>(text.size()), 0,
                                       nullptr)
                    ->asRecord();
    }

    static std::string escaped(CString const & name) {
        std::string text;
        for (int i = 0; i < name.GetLength(); ++i) {
            if (std::string_view("\"\\").find(name[i]) != std::string_view::npos) {
                text += '\\';
            }
            text += name[i];
        }
        return text;
    }

    std::unique_ptr<JsonMessageSerializer> writer_ = std::make_unique<JsonMessageSerializer>();
};

std::vector<Value> ordinaryValues() {
    std::vector<Value> values = {nullptr, FieldValue::TRUE_VALUE, FieldValue::FALSE_VALUE,
                                 FieldValue::NEGATIVE_ONE_NUMBER_VALUE,
                                 FieldValue::EMPTY_STRING_VALUE};
    for (std::string const & text :
         {std::string("a"), std::string(7, 'b'), std::string(16, 'c'), std::string(24, 'd'),
          std::string(25, 'e'), std::string(33, 'f'), std::string(10, '"'), std::string(25, '\n'),
          std::string("a/b\\\"\t\x01\x7F"), std::string("ab\0cd", 5),
          std::string("\x93\xFA\x96\x7B \"\x83\x5C/"), std::string(20, '\xB1'),
          std::string("\x93\0\xFA\x93", 4)}) {
        values.push_back(new StringData(bytesOf(text)));
        RefCountedPtr<NumberData> const number(new NumberData(1.5));
        number->setStringRep(bytesOf(text));
        values.push_back(number);
    }
    values.push_back(new ListDataImpl(CString()));
    values.push_back(new MappedRecordData);
    return values;
}

TEST_F(SerializerRoads, AgreeOnValuesInEveryRoom) {
    UsingCodePage const japanese(932);
    for (Value const & value : ordinaryValues()) {
        for (int const options : {0, int{JSON_ESCAPE_SLASH}}) {
            expectAsModelledInEveryRoom(value, 160, options);
            if (HasFatalFailure()) {
                return;
            }
        }
    }
}

TEST_F(SerializerRoads, AgreeOnRecordsInEveryRoom) {
    UsingCodePage const japanese(932);
    std::vector<std::pair<CString, Value>> const fields = {
        {"", FieldValue::TRUE_VALUE},
        {"a", new NumberData(7)},
        {"a rather long name of a field", new StringData("text")},
        {"c/d", nullptr},
        {"q\"\\", new StringData("a/b\"")},
        {"x", new MappedRecordData},
    };
    for (Road const road : ALL_ROADS) {
        SCOPED_TRACE("road " + std::to_string(static_cast<int>(road)));
        Value const value = record(road, fields).get();
        for (int const options : ALL_OPTIONS) {
            expectAsModelledInEveryRoom(value, 200, options);
            if (HasFatalFailure()) {
                return;
            }
        }
    }
}

TEST_F(SerializerRoads, AgreeOnEveryByteAtEveryPlace) {
    for (unsigned int const codePage : {932u, 65001u}) {
        UsingCodePage const using_(codePage);
        for (int byte = 0; byte < 256; ++byte) {
            RefCountedPtr<ListData> const list(new ListDataImpl(CString()));
            for (std::size_t length = 1; length <= 40; ++length) {
                for (std::size_t place = 0; place < length; ++place) {
                    std::string text(length, 'x');
                    text[place] = static_cast<char>(byte);
                    list->addElement(new StringData(bytesOf(text)));
                }
            }
            SCOPED_TRACE("byte " + std::to_string(byte) + " in " + std::to_string(codePage));
            expectAsModelled(*list, 0);
            expectAsModelled(*list, JSON_ESCAPE_SLASH);
            if (HasFatalFailure()) {
                return;
            }
        }
    }
}

TEST_F(SerializerRoads, AgreeOnEveryByteInNames) {
    UsingCodePage const japanese(932);
    for (int byte = 0; byte < 256; ++byte) {
        std::string const middle(1, static_cast<char>(byte));
        std::vector<std::pair<CString, Value>> const fields = {
            {"before", FieldValue::TWO_NUMBER_VALUE},
            {bytesOf("na" + middle + "me"), new StringData("x")},
            {"z", FieldValue::TRUE_VALUE},
        };
        for (Road const road : ALL_ROADS) {
            // The text that is read to give a record its shape cannot hold these as they are.
            if (road == Road::SHAPED && (byte == 0 || byte >= 0x80)) {
                continue;
            }
            SCOPED_TRACE("byte " + std::to_string(byte) + " on road " +
                         std::to_string(static_cast<int>(road)));
            RefCountedPtr<RecordData> const value = record(road, fields);
            for (int const options : ALL_OPTIONS) {
                expectAsModelled(*value, options);
            }
            if (HasFatalFailure()) {
                return;
            }
        }
    }
}

TEST_F(SerializerRoads, AgreeOnNamesThatAreNotAscii) {
    constexpr std::string_view TEXT =
        "{\"\xE6\x97\xA5\":1,\"a\":\"\xE6\x9C\xAC\",\"nul\\u0000x\":2,\"s/\":[{\"\xC3\xA9\":{}}]}";
    Value const value =
        parser_.parseOneJsonValue(TEXT.data(), static_cast<unsigned int>(TEXT.size()), 0, nullptr);
    for (unsigned int const codePage : {932u, 65001u, 1252u, 28591u, 932u}) {
        // The texts of names are kept with their shape, over a change of the code page too.
        UsingCodePage const using_(codePage);
        for (int const options : ALL_OPTIONS) {
            expectAsModelled(*value, options);
        }
    }
}

TEST_F(SerializerRoads, AgreeOnRandomMessages) {
    constexpr unsigned int SEED = 61;
    SCOPED_TRACE("seed " + std::to_string(SEED));
    UsingCodePage const japanese(932);
    RandomValues random(SEED, {"a", "b", "name", "\"", "/", "\n", "\x01", "\x93\xFA", "\xB1",
                               "0123456789abcdef", ""});
    JsonMessageSerializer plain;
    for (int round = 0; round < 2000; ++round) {
        RefCountedPtr<RecordData> const inMap = random.record(4);
        unsigned int const size = plain.recordDataToJson(nullptr, 0, *inMap, 0);
        Value const shaped = parser_.parseOneJsonValue(
            static_cast<char const *>(plain.getResultsBuffer()), size, 0, nullptr);
        RefCountedPtr<RecordData> const derived(new DerivedRecord);
        derived->setFieldValue("map", inMap);
        derived->setFieldValue("shape", shaped);
        derived->setFieldValue("list", random.list(2));
        shaped->asRecord().setFieldValue("derived", new DerivedRecord);
        for (int const options : ALL_OPTIONS) {
            expectAsModelled(*derived, options);
        }
        if (HasFatalFailure()) {
            FAIL() << "round " << round;
        }
    }
}

}  // namespace
