#pragma once

#include "tvk/platform/CString.h"
#include "tvk/values/ListData.h"
#include "tvk/values/RecordData.h"

/// The field if it holds a text or a number, else null. What came from outside may hold anything,
/// and the accessors of a value throw where its kind does not fit.
inline tvk::RefCountedPtr<tvk::FieldValue> scalarIn(tvk::RecordData const & record,
                                                    char const * name) {
    tvk::RefCountedPtr<tvk::FieldValue> const value = record.getFieldValue(name);
    bool const isScalar = value && (value->getFieldType() == FLDTYPE_STRING ||
                                    value->getFieldType() == FLDTYPE_NUMBER);
    return isScalar ? value : nullptr;
}

/// Empty where there is no such text or number.
inline CString textIn(tvk::RecordData const & record, char const * name) {
    auto const value = scalarIn(record, name);
    return value ? value->asString() : CString();
}

/// 0 where there is no such number or text.
inline long long numberIn(tvk::RecordData const & record, char const * name) {
    auto const value = scalarIn(record, name);
    return value ? value->longlongValue() : 0;
}

/// The same with its fraction.
inline double doubleIn(tvk::RecordData const & record, char const * name) {
    auto const value = scalarIn(record, name);
    return value ? value->doubleValue() : 0.0;
}

/// Null where there is no such record.
inline tvk::RecordData const * recordIn(tvk::RecordData const & record, char const * name) {
    // The record keeps the value: the counted reference may go at once.
    tvk::FieldValue const * const value = record.getFieldValue(name).get();
    return value != nullptr && value->getFieldType() == FLDTYPE_RECORD ? &value->asRecord()
                                                                       : nullptr;
}

/// Null where there is no such list.
inline tvk::ListData const * listIn(tvk::RecordData const & record, char const * name) {
    tvk::FieldValue const * const value = record.getFieldValue(name).get();
    return value != nullptr && value->getFieldType() == FLDTYPE_LIST ? &value->asList() : nullptr;
}
