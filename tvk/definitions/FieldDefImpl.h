#pragma once

#include "tvk/definitions/DataTypeDef.h"
#include "tvk/definitions/FieldDef.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk {

/// A field that a loader fills. It holds one count on its type and none on its record.
class TVK_API FieldDefImpl : public FieldDef {
public:
    FieldDefImpl(char const * name, char const * nameJa, char const * description);
    /// The type name becomes that of `type`, or stays empty for null.
    FieldDefImpl(RecordTypeDef const * enclosingRecordType, CString const & name,
                 DataTypeDef const * type);

    RecordTypeDef const * getEnclosingRecordType() const override;
    CString const & getName() const override;
    CString const & getNameJa() const override;
    /// The name, behind the enclosing record's name and "." where there is one. One level only.
    CString getQualifiedName() const override;
    CString const & getDescription() const override;
    DataTypeDef const * getType() const override;
    CString const & getTypeName() const override;
    int getMaxSize() const override;  ///< 0 until set

    void setName(CString const & name);  ///< The record keeps the old name as the key.
    void setNameJa(CString const & nameJa);
    void setDescription(CString const & description);
    /// Counted; null is allowed. The type name stays as it is.
    void setType(DataTypeDef const * type);
    void setTypeName(CString const & typeName);
    /// Not counted: the record owns the field, not the other way.
    void setEnclosingRecordType(RecordTypeDef const * enclosingRecordType);
    void setMaxSize(int maxSize);

private:
    ~FieldDefImpl() override;

    CString name_;
    CString nameJa_;
    CString description_;
    CString typeName_;
    RefCountedPtr<DataTypeDef const> type_;
    RecordTypeDef const * enclosingRecordType_ = nullptr;
    int maxSize_ = 0;
};

}  // namespace tvk
