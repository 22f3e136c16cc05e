#pragma once

namespace tvk::detail {

/// Deliberate: throws a plain `char *`, the type that callers of a wrong accessor catch, and the
/// texts differ from class to class, grammar included, because callers compare them.
[[noreturn]] inline void throwWrongKind(char const * text) { throw const_cast<char *>(text); }

}  // namespace tvk::detail
