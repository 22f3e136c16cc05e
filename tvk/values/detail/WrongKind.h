#pragma once

namespace tvk::detail {

/// Throws the text as a `char *`, the type that callers of a wrong accessor catch.
[[noreturn]] inline void throwWrongKind(char const * text) { throw const_cast<char *>(text); }

}  // namespace tvk::detail
