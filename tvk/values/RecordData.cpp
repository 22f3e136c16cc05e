#include "tvk/values/RecordData.h"

#include "tvk/values/StringData.h"

namespace tvk {

RecordData::~RecordData() = default;

void RecordData::setFieldValue(CString const & name, CString const & text) {
    setFieldValue(name, RefCountedPtr<FieldValue>(new StringData(text)));
}

void RecordData::setFieldValue(CString const & name, char const * text, unsigned int length) {
    setFieldValue(name, RefCountedPtr<FieldValue>(new StringData(text, length)));
}

}  // namespace tvk
