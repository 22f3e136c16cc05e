#pragma once

#include "tvk/errors/ErrorInfo.h"
#include "tvk/json/JsonOptions.h"
#include "tvk/json/SimpleObjectCache.h"
#include "tvk/platform/Export.h"
#include "tvk/values/KestrinMessage.h"

namespace tvk {

/// Turns JSON text in UTF-8 into messages and values, strings and numbers through a cache.
///
/// Format:    one object is one message, every member a field. A nested object is a
/// MappedRecordData;
///            an array is a ListDataImpl whose element type name is the name of its field; true and
///            false are FieldValue::TRUE_VALUE and FALSE_VALUE; null sets no field and adds no
///            element. A repeated name overwrites. Field names keep their bytes; string values come
///            in the application's code page. Header and sub-messages are not part of the text.
/// Ownership: the cache is borrowed and must outlive the parser. The parser refers to its last
/// result
///            until the next call, and keeps the parts of a failed one until then.
/// Threads:   one parser, with its cache, serves one thread at a time.
/// Failure:   a null result, and where `error` is not null ErrorDomain_Kestrin, the code
///            ERR_InvalidMessageData and the scanner's text in it. Success leaves `error` alone.
class TVK_API JsonMessageParser {
public:
    explicit JsonMessageParser(SimpleObjectCache * cache);
    JsonMessageParser(JsonMessageParser const &) = delete;
    JsonMessageParser & operator=(JsonMessageParser const &) = delete;
    ~JsonMessageParser();

    SimpleObjectCache * cache() const;

    /// A message from one object. `options` are JSON_ALLOW_ bits. Text behind it is ignored, and
    /// `data` needs no NUL behind it and is not kept.
    RefCountedPtr<KestrinMessage> parseJsonMessage(void const * data, unsigned int size,
                                                   int options, ErrorInfo * error);
    /// The value of one object or array. No value at all gives null and no error; a bare scalar is
    /// an error.
    RefCountedPtr<FieldValue> parseOneJsonValue(void const * data, unsigned int size, int options,
                                                ErrorInfo * error);

private:
    struct Impl;

    Impl * impl_;
};

}  // namespace tvk
