#pragma once

#include "bench/Work.h"
#include "tvk/json/detail/TableHandler.h"

// Included in front of the scanner's sources, which are compiled once more with the handler below in
// the place of TableHandler: the scanner with a handler inlined, in each of its variants.

namespace tvk::detail {

/// Sums the events up. The user data is the EventSum.
class SummingHandler {
public:
    static constexpr bool TERMINATED_COPIES = TableHandler::TERMINATED_COPIES;

    SummingHandler(SimpleJsonHandler const &, void * userData)
        : sum_(*static_cast<bench::EventSum *>(userData)) {}

    void startObject() { sum_.startObject(); }
    void endObject() { sum_.endObject(); }
    void startArray() { sum_.startArray(); }
    void endArray() { sum_.endArray(); }
    unsigned int knownName(char const *, std::size_t) { return 0; }
    void fieldName(char const *, unsigned int length) { sum_.name(length); }
    void stringValue(unsigned int hash, char const *, unsigned int length) {
        sum_.string(hash, length);
    }
    void booleanValue(bool value) { sum_.boolean(value); }
    void nullValue() { sum_.null(); }
    void numberValue(unsigned int hash, char const *, unsigned int length, char const *,
                     char const *) {
        sum_.number(hash, length);
    }

private:
    bench::EventSum & sum_;
};

}  // namespace tvk::detail

#define TableHandler SummingHandler
