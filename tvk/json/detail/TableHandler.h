#pragma once

#include <cstddef>

#include "tvk/json/SimpleJsonHandler.h"

namespace tvk::detail {

/// The handler of the public entries: it passes each event on to a table of callbacks.
class TableHandler {
public:
    /// Texts reach the handler as copies with a NUL behind them, not as slices of the input.
    static constexpr bool TERMINATED_COPIES = true;

    TableHandler(SimpleJsonHandler const & table, void * userData)
        : table_(table), userData_(userData) {}

    void startObject() { table_.startObject(userData_); }
    void endObject() { table_.endObject(userData_); }
    void startArray() { table_.startArray(userData_); }
    void endArray() { table_.endArray(userData_); }
    /// No name is known before it has been read.
    unsigned int knownName(char const *, std::size_t) { return 0; }
    void fieldName(char const * name, unsigned int length) {
        table_.fieldName(userData_, name, length);
    }
    void stringValue(unsigned int hash, char const * text, unsigned int length) {
        table_.stringValue(userData_, hash, text, length);
    }
    void booleanValue(bool value) { table_.booleanValue(userData_, value ? 1 : 0); }
    void nullValue() { table_.nullValue(userData_); }
    void numberValue(unsigned int hash, char const * text, unsigned int length,
                     char const * fractionStart, char const * exponentStart) {
        table_.numberValue(userData_, hash, text, length, fractionStart, exponentStart);
    }

private:
    SimpleJsonHandler const & table_;
    void * const userData_;
};

}  // namespace tvk::detail
