#pragma once

#include "tvk/json/JsonOptions.h"
#include "tvk/platform/Export.h"
#include "tvk/values/KestrinMessage.h"
#include "tvk/values/ListData.h"
#include "tvk/values/RecordData.h"

namespace tvk {

/// Writes messages, records and lists as compact JSON into one growing buffer, kept from call to
/// call, behind a prefix of the caller's.
///
/// Format:    the one that JsonMessageParser reads. Fields come in the order of getAllFields. Text
/// is
///            brought from the application's code page to UTF-8; a NUL ends it. Numbers are written
///            in their text form; only the objects TRUE_VALUE and FALSE_VALUE as `true` and
///            `false`.
/// Ownership: the results are bytes of the serializer's buffer, not NUL-terminated, until the next
///            call.
/// Threads:   one at a time; and a number is written on two threads at once only when its text form
///            has been built before.
/// Failure:   std::bad_alloc; raw data throws the text of RawDataImpl::asString, as a `char *`. The
///            buffer stays valid, its content then is partial.
class TVK_API JsonMessageSerializer {
public:
    JsonMessageSerializer();
    JsonMessageSerializer(JsonMessageSerializer const &) = delete;
    /// Deliberate: shallow. Both objects then hold one buffer, which only one may grow or end with.
    JsonMessageSerializer & operator=(JsonMessageSerializer const & other);
    ~JsonMessageSerializer();

    /// Each returns the bytes of the result, prefix included. `options` are JSON_ESCAPE_SLASH and
    /// JSON_UNQUOTED_NAMES.
    unsigned int messageToJson(void const * prefix, unsigned int prefixSize,
                               KestrinMessage const & message, int options);
    unsigned int recordDataToJson(void const * prefix, unsigned int prefixSize,
                                  RecordData const & record, int options);
    unsigned int listDataToJson(void const * prefix, unsigned int prefixSize, ListData const & list,
                                int options);

    void * getResultsBuffer() const { return buffer_; }
    /// Never shrinks.
    unsigned int capacity() const { return capacity_; }

private:
    /// Reallocates to exactly `size` when that exceeds the capacity.
    void ensureBufferSize(unsigned int size);
    void writePrefix(void const * prefix, unsigned int prefixSize);
    // Each writes at `position`, lets the buffer grow through the two pointers, and returns the
    // bytes written.
    static unsigned int internalWriteRecordData(char ** buffer, unsigned int position,
                                                unsigned int * capacity, RecordData const & record,
                                                int options);
    static unsigned int internalWriteListData(char ** buffer, unsigned int position,
                                              unsigned int * capacity, ListData const & list,
                                              int options);

    char * buffer_;
    unsigned int capacity_;
};

}  // namespace tvk
