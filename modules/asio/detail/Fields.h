#pragma once

#include "tvk/platform/CString.h"
#include "tvk/values/RecordData.h"

namespace tvk::detail {

// What the back end wrote into a field, where it has the wanted kind: what came from outside may hold
// anything, and the accessors of a value throw where its kind does not fit.

inline FieldValue const * fieldOfKind(RecordData const & record, char const * name,
                                      FieldTypeEnum kind) {
    // The record keeps the value: the counted reference may go at once.
    FieldValue const * const value = record.getFieldValue(name).get();
    return value != nullptr && value->getFieldType() == kind ? value : nullptr;
}

inline CString textField(RecordData const & record, char const * name) {
    if (FieldValue const * const text = fieldOfKind(record, name, FLDTYPE_STRING)) {
        return text->asString();
    }
    FieldValue const * const number = fieldOfKind(record, name, FLDTYPE_NUMBER);
    return number != nullptr ? number->asString() : CString();
}

inline long long numberField(RecordData const & record, char const * name) {
    FieldValue const * const number = fieldOfKind(record, name, FLDTYPE_NUMBER);
    return number != nullptr ? number->longlongValue() : 0;
}

/// Null where there is none.
inline RecordData const * recordField(RecordData const & record, char const * name) {
    FieldValue const * const value = fieldOfKind(record, name, FLDTYPE_RECORD);
    return value != nullptr ? &value->asRecord() : nullptr;
}

}  // namespace tvk::detail
