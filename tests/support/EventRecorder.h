#pragma once

#include <cstring>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tvk/json/SimpleJsonHandler.h"

namespace tvk::test {

/// One callback of the JSON scanner, with pointers into the input as offsets.
struct JsonEvent {
    enum Kind {
        START_OBJECT,
        END_OBJECT,
        START_ARRAY,
        END_ARRAY,
        FIELD_NAME,
        STRING,
        BOOLEAN,
        NULL_VALUE,
        NUMBER
    };
    static constexpr long long NONE = -1;

    Kind kind;
    int boolean = 0;
    unsigned int hash = 0;
    std::string text = {};
    bool terminated = true;          ///< a name or a string with a NUL behind it
    long long start = NONE;          ///< of a number
    long long fractionStart = NONE;  ///< likewise; NONE for a null pointer
    long long exponentStart = NONE;
};

inline bool operator==(JsonEvent const & one, JsonEvent const & other) {
    return one.kind == other.kind && one.boolean == other.boolean && one.hash == other.hash &&
           one.text == other.text && one.terminated == other.terminated &&
           one.start == other.start && one.fractionStart == other.fractionStart &&
           one.exponentStart == other.exponentStart;
}

using JsonEvents = std::vector<JsonEvent>;

/// Writes events down. Its table of callbacks is for the library; a model adds events by itself.
///
///     EventRecorder recorder(data);
///     JsonUtil::parseOneJsonValue(data, length, &recorder.handler(), &recorder, options);
///     EXPECT_EQ(describe(recorder.events()), R"([ 1.5 .2 ])");
class EventRecorder {
public:
    /// `data` is the input, to which offsets refer.
    explicit EventRecorder(char const * data) : data_(data) {}

    static SimpleJsonHandler & handler() {
        static SimpleJsonHandler table = {startObject,  endObject, startArray,
                                          endArray,     fieldName, stringValue,
                                          booleanValue, nullValue, numberValue};
        return table;
    }

    void add(JsonEvent event) { events_.push_back(std::move(event)); }
    JsonEvents const & events() const { return events_; }
    JsonEvents takeEvents() { return std::move(events_); }

private:
    // What a callback returns is ignored, so each returns something else.
    static int startObject(void * self) { return plain(self, JsonEvent::START_OBJECT), 0; }
    static int endObject(void * self) { return plain(self, JsonEvent::END_OBJECT), 1; }
    static int startArray(void * self) { return plain(self, JsonEvent::START_ARRAY), -1; }
    static int endArray(void * self) { return plain(self, JsonEvent::END_ARRAY), 2; }
    static int nullValue(void * self) { return plain(self, JsonEvent::NULL_VALUE), -2; }

    static int fieldName(void * self, char const * name, unsigned int length) {
        JsonEvent & event = plain(self, JsonEvent::FIELD_NAME);
        event.text.assign(name, length);
        event.terminated = name[length] == '\0';
        return 3;
    }
    static int stringValue(void * self, unsigned int hash, char const * text, unsigned int length) {
        JsonEvent & event = plain(self, JsonEvent::STRING);
        event.hash = hash;
        event.text.assign(text, length);
        event.terminated = text[length] == '\0';
        return 4;
    }
    static int booleanValue(void * self, int value) {
        plain(self, JsonEvent::BOOLEAN).boolean = value;
        return 5;
    }
    static int numberValue(void * self, unsigned int hash, char const * text, unsigned int length,
                           char const * fractionStart, char const * exponentStart) {
        char const * const data = static_cast<EventRecorder *>(self)->data_;
        auto const offset = [&](char const * place) {
            return place == nullptr ? JsonEvent::NONE : place - data;
        };
        JsonEvent & event = plain(self, JsonEvent::NUMBER);
        event.hash = hash;
        event.text.assign(text, length);
        event.start = offset(text);
        event.fractionStart = offset(fractionStart);
        event.exponentStart = offset(exponentStart);
        return 6;
    }

    static JsonEvent & plain(void * self, JsonEvent::Kind kind) {
        JsonEvents & events = static_cast<EventRecorder *>(self)->events_;
        events.push_back({kind});
        return events.back();
    }

    char const * data_;
    JsonEvents events_;
};

/// The events in one line, for tables and failures: `{ name: 1.5 .8 "text" }`. Behind a number stand
/// the offsets of its fraction and exponent from the start of the input, if it has them. Hashes are left out.
inline std::string describe(JsonEvents const & events) {
    std::string line;
    for (JsonEvent const & event : events) {
        line += line.empty() ? "" : " ";
        switch (event.kind) {
            case JsonEvent::START_OBJECT:
                line += '{';
                break;
            case JsonEvent::END_OBJECT:
                line += '}';
                break;
            case JsonEvent::START_ARRAY:
                line += '[';
                break;
            case JsonEvent::END_ARRAY:
                line += ']';
                break;
            case JsonEvent::FIELD_NAME:
                line += event.text + ':';
                break;
            case JsonEvent::STRING:
                line += '"' + event.text + '"';
                break;
            case JsonEvent::BOOLEAN:
                line += event.boolean == 1 ? "true" : event.boolean == 0 ? "false" : "?";
                break;
            case JsonEvent::NULL_VALUE:
                line += "null";
                break;
            case JsonEvent::NUMBER:
                line += event.text;
                line += event.fractionStart == JsonEvent::NONE
                            ? ""
                            : " ." + std::to_string(event.fractionStart);
                line += event.exponentStart == JsonEvent::NONE
                            ? ""
                            : " e" + std::to_string(event.exponentStart);
                break;
        }
        line += event.terminated ? "" : "<no NUL>";
    }
    return line;
}

/// What a scan came to. A failed one has a text and no position; its events are those before.
struct ScanOutcome {
    JsonEvents events;
    unsigned int position = 0;
    std::string failure;
};

inline bool operator==(ScanOutcome const & one, ScanOutcome const & other) {
    return one.position == other.position && one.failure == other.failure &&
           one.events == other.events;
}

inline void PrintTo(ScanOutcome const & outcome, std::ostream * output) {
    *output << describe(outcome.events) << " | ";
    if (outcome.failure.empty()) {
        *output << "stopped at " << outcome.position;
    } else {
        *output << outcome.failure;
    }
    *output << " | hashes";
    for (JsonEvent const & event : outcome.events) {
        if (event.kind == JsonEvent::STRING || event.kind == JsonEvent::NUMBER) {
            *output << ' ' << std::hex << event.hash << std::dec;
        }
    }
}

}  // namespace tvk::test
