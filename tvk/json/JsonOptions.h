#pragma once

namespace tvk {

// Option bits of the scanner and the parser. Bit 1 is not used.

/// `//` starts a comment that runs to the next line feed: `{"a":1} // all`.
constexpr int JSON_ALLOW_SLASH_COMMENT = 2;
/// `#` starts a comment that runs to the next line feed: `# quotes`.
constexpr int JSON_ALLOW_HASH_COMMENT = 4;
/// A field name may stand without quotes: `{a:1}`.
constexpr int JSON_ALLOW_UNQUOTED_NAME = 8;
/// A comma may stand before the closing bracket: `[1,]`.
constexpr int JSON_ALLOW_TRAILING_COMMA = 16;

// Option bits of the writer. Deliberate: 4 means something else here than to the scanner; stored
// option sets of both kinds exist.

/// `/` is written as `\/`.
constexpr int JSON_ESCAPE_SLASH = 4;
/// Field names are written without quotes.
constexpr int JSON_UNQUOTED_NAMES = 8;

}  // namespace tvk
