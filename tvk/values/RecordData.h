#pragma once

#include <vector>

#include "tvk/values/FieldValue.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk {

/// Names to values: a nested structure of a message, and the base of messages and headers.
///
/// A value may be a null reference; such a field exists, counts and is enumerated. A miss is a null
/// reference, a removal of nothing is silent.
class TVK_API RecordData : public FieldValue {
public:
    /// A view of one field: no count is taken. It holds until the field is changed or removed, or
    /// the record ends.
    struct Field {
        RecordData const * record;
        CString const * name;
        FieldValue * value;  ///< may be null
    };

    ~RecordData() override = 0;

    virtual bool hasField(CString const & name) const = 0;
    virtual unsigned int getFieldCount() const = 0;
    virtual std::vector<CString> getFieldNames() const = 0;
    virtual std::vector<Field> getAllFields() const = 0;
    virtual RefCountedPtr<FieldValue> getFieldValue(CString const & name) const = 0;
    virtual void setFieldValue(CString const & name, RefCountedPtr<FieldValue> const & value) = 0;
    virtual void removeField(CString const & name) = 0;
    virtual void removeAllFields() = 0;

    // Conveniences over the operations above. Texts become a new StringData.
    bool hasField(char const * name) const { return hasField(CString(name)); }
    RefCountedPtr<FieldValue> getFieldValue(char const * name) const {
        return getFieldValue(CString(name));
    }
    void removeField(char const * name) { removeField(CString(name)); }
    void setFieldValue(char const * name, RefCountedPtr<FieldValue> const & value) {
        setFieldValue(CString(name), value);
    }
    void setFieldValue(CString const & name, CString const & text);
    void setFieldValue(char const * name, CString const & text) {
        setFieldValue(CString(name), text);
    }
    void setFieldValue(CString const & name, char const * text, unsigned int length);
    void setFieldValue(char const * name, char const * text, unsigned int length) {
        setFieldValue(CString(name), text, length);
    }
};

}  // namespace tvk
