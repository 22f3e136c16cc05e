#pragma once

namespace tvk::detail {

/// Where in which input a scan has failed. The functions below throw JsonUtil::XParsingError with
/// the text that belongs to the failure.
struct ScanPlace {
    char const * data;
    unsigned int length;
    unsigned int position;
};

/// The byte `tag` was wanted at the place.
[[noreturn]] void failTag(ScanPlace place, char tag);
/// The words `true`, `false` and `null`, by the first letter at the place.
[[noreturn]] void failTrue(ScanPlace place);
[[noreturn]] void failFalse(ScanPlace place);
[[noreturn]] void failNull(ScanPlace place);
/// A minus sign at the end of the data.
[[noreturn]] void failNumberEnd(ScanPlace place);
[[noreturn]] void failLeadingZero(ScanPlace place);
[[noreturn]] void failNumber(ScanPlace place);
/// Too little data for four digits from the place on.
[[noreturn]] void failHexEnd(ScanPlace place);
/// The digit `index` (0 to 3) of the four from the place on is none.
[[noreturn]] void failHexDigit(ScanPlace place, unsigned int index);
/// A backslash at the place with too little data behind it.
[[noreturn]] void failEscapeEnd(ScanPlace place);
/// A backslash at the place with the wrong character `escape`, behind which `rest` starts.
[[noreturn]] void failEscape(ScanPlace place, char escape, unsigned int rest);
/// Two escapes from the backslash at the place on that are no pair of surrogates.
[[noreturn]] void failSurrogates(ScanPlace place, int high, int low);
/// The lead byte at the place announces `bytes` bytes, more than are left.
[[noreturn]] void failCutSequence(ScanPlace place, unsigned int bytes);
/// The byte at the place leads no UTF-8 sequence.
[[noreturn]] void failLeadByte(ScanPlace place);

}  // namespace tvk::detail
