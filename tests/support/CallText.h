#pragma once

#include <cstddef>
#include <sstream>
#include <string>
#include <utility>

#include "tvk/platform/CString.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk::test {

// An argument of a call as text: the bytes of a text in quotes, the address of an object. A log and
// the expectation of it are both made here, so addresses compare and need not be read.

inline std::string argumentText(CString const & text) {
    return '"' + std::string(text.GetString(), static_cast<std::size_t>(text.GetLength())) + '"';
}
inline std::string argumentText(char const * text) { return argumentText(CString(text)); }
inline std::string argumentText(bool flag) { return flag ? "true" : "false"; }
inline std::string argumentText(int number) { return std::to_string(number); }
inline std::string argumentText(std::nullptr_t) { return "null"; }
inline std::string argumentText(void const * object) {
    if (object == nullptr) {
        return argumentText(nullptr);
    }
    std::ostringstream text;
    text << object;
    return text.str();
}
template <class T>
std::string argumentText(RefCountedPtr<T> const & object) {
    return argumentText(static_cast<void const *>(object.get()));
}

/// A call as text: callText("subscribe", CString("quote"), 7) is `subscribe("quote", 7)`.
template <class... Arguments>
std::string callText(std::string operation, Arguments const &... arguments) {
    operation += '(';
    [[maybe_unused]] char const * separator = "";  // a call may have no argument
    ((operation += std::exchange(separator, ", ") + argumentText(arguments)), ...);
    return operation + ')';
}

}  // namespace tvk::test
