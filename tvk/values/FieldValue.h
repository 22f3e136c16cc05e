#pragma once

#include "tvk/platform/CString.h"
#include "tvk/platform/Export.h"
#include "tvk/values/FieldTypeEnum.h"
#include "tvk/values/RefCounted.h"

namespace tvk {

class ListData;
class RawData;
class RecordData;

/// Whatever can stand in a field: text, number, list, record or binary data. There is no boolean
/// kind and no null kind: a boolean is one of the two objects TRUE_VALUE and FALSE_VALUE, a null is
/// a null reference.
///
/// Accessors: one that fits the value converts; one that does not fit throws a plain pointer to a
///            static text, of type `char *`. The library never catches it.
/// Threads:   a value belongs to one thread at a time; the constants below may be referenced from
///            any. asString() of a number writes on first use, see NumberData.
class TVK_API FieldValue : public RefCounted {
public:
    ~FieldValue() override = 0;

    virtual FieldTypeEnum getFieldType() const = 0;
    virtual int intValue() const = 0;
    /// 32 bits on every platform.
    virtual long longValue() const = 0;
    virtual long long longlongValue() const = 0;
    virtual double doubleValue() const = 0;
    virtual CString const & asString() const = 0;
    virtual ListData & asList() = 0;
    virtual ListData const & asList() const = 0;
    virtual RecordData & asRecord() = 0;
    virtual RecordData const & asRecord() const = 0;
    virtual RawData & asRawData() = 0;
    virtual RawData const & asRawData() const = 0;
    /// A text for people; empty for lists and records.
    virtual CString toString() const = 0;

    // Constants, valid from the library's load until the process ends, and never to be assigned.
    // Wrapping one in a RefCountedPtr costs no counting.
    static FieldValue * ZERO_NUMBER_VALUE;
    static FieldValue * ONE_NUMBER_VALUE;
    static FieldValue * TWO_NUMBER_VALUE;
    static FieldValue * THREE_NUMBER_VALUE;
    static FieldValue * FOUR_NUMBER_VALUE;
    static FieldValue * FIVE_NUMBER_VALUE;
    static FieldValue * SIX_NUMBER_VALUE;
    static FieldValue * SEVEN_NUMBER_VALUE;
    static FieldValue * EIGHT_NUMBER_VALUE;
    static FieldValue * NINE_NUMBER_VALUE;
    static FieldValue * NEGATIVE_ONE_NUMBER_VALUE;
    /// Deliberate: the very objects ONE_NUMBER_VALUE and ZERO_NUMBER_VALUE. JSON booleans live on
    /// these two identities.
    static FieldValue * TRUE_VALUE;
    static FieldValue * FALSE_VALUE;
    static FieldValue * EMPTY_STRING_VALUE;
};

}  // namespace tvk
