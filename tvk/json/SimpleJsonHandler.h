#pragma once

/// The scanner's only way out: a table of plain callbacks, all of which must be set. Each receives
/// the `userData` of the scan; its result is ignored.
///
/// Lifetimes: `name` and the `text` of stringValue are decoded bytes in the scanner's scratch
/// buffer,
///            NUL-terminated at `length`, and live only until the next string is read. The `text`
///            of numberValue, `fractionStart` (at the `.`, or null) and `exponentStart` (at the `e`
///            or `E`, or null) point into the input and are not terminated. None may be kept.
/// Threads:   called on the thread of the scan, inside the call.
/// Failure:   an exception passes through the scan, which then frees its scratch buffer.
struct SimpleJsonHandler {
    int (*startObject)(void * userData);
    int (*endObject)(void * userData);
    int (*startArray)(void * userData);
    int (*endArray)(void * userData);
    int (*fieldName)(void * userData, char const * name, unsigned int length);
    int (*stringValue)(void * userData, unsigned int hash, char const * text, unsigned int length);
    int (*booleanValue)(void * userData, int value);
    int (*nullValue)(void * userData);
    int (*numberValue)(void * userData, unsigned int hash, char const * text, unsigned int length,
                       char const * fractionStart, char const * exponentStart);
};
