#pragma once

#include "tvk/definitions/DataTypeDef.h"
#include "tvk/definitions/detail/NamedDef.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk {

/// A field that a loader fills. It holds one count on its type and none on its record.
class TVK_API FieldDefImpl : public detail::NamedDef<FieldDef> {
public:
    FieldDefImpl(char const * name, char const * nameJa, char const * description);
    /// The type name becomes that of `type`, or stays empty for null.
    FieldDefImpl(RecordTypeDef const * enclosingRecordType, CString const & name,
                 DataTypeDef const * type);

    RecordTypeDef const * getEnclosingRecordType() const override;
    /// The name, behind the enclosing record's name and "." where there is one. Deliberate: one level
    /// only, since a record type may stand in many others and in itself.
    CString getQualifiedName() const override;
    DataTypeDef const * getType() const override;
    CString const & getTypeName() const override;
    int getMaxSize() const override;  ///< 0 until set

    /// Counted; null is allowed. Deliberate: the type name stays as it is, even where the two then
    /// disagree. Loaders read names first and resolve them to types later.
    void setType(DataTypeDef const * type);
    void setTypeName(CString const & typeName);
    /// Not counted: the record owns the field, not the other way.
    void setEnclosingRecordType(RecordTypeDef const * enclosingRecordType);
    void setMaxSize(int maxSize);

private:
    ~FieldDefImpl() override;

    CString typeName_;
    RefCountedPtr<DataTypeDef const> type_;
    RecordTypeDef const * enclosingRecordType_ = nullptr;
    int maxSize_ = 0;
};

}  // namespace tvk
