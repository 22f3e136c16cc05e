#pragma once

namespace tvk::detail {

/// Bytes that hold whole characters, and how many.
struct Utf8Run {
    unsigned int bytes;
    unsigned int characters;
};

/// Counts on from `position`, in large blocks, for as long as a walk from lead to lead would agree
/// beyond doubt. It may stop at any character, also at once; all forms may differ there.
/// Requires: a walk has come to `position`, which is inside the data and at least 3.
using CountRegularUtf8 = Utf8Run (*)(char const * data, unsigned int length, unsigned int position);

Utf8Run countRegularUtf8Plain(char const * data, unsigned int length, unsigned int position);

/// Null where this build or the processor does not have AVX2.
CountRegularUtf8 countRegularUtf8WithAvx2();

/// The one that suits this processor best.
CountRegularUtf8 bestCountRegularUtf8();

}  // namespace tvk::detail
