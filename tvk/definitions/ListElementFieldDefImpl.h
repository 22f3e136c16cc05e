#pragma once

#include "tvk/definitions/ListElementFieldDef.h"

namespace tvk {

class ListTypeDef;

/// One element of a list field. Points to the field and to its list type without a count: both must
/// outlive it.
class TVK_API ListElementFieldDefImpl : public ListElementFieldDef {
public:
    /// Index 0 and no name yet. Requires: neither is null.
    ListElementFieldDefImpl(FieldDef const * field, ListTypeDef const * listType);

    RecordTypeDef const * getEnclosingRecordType() const override;  ///< the field's
    CString const & getName() const override;    ///< "[index]", empty until setIndex
    CString const & getNameJa() const override;  ///< the same
    /// The field's qualified name and the index in square brackets. Right before setIndex too, when
    /// there is no name yet.
    CString getQualifiedName() const override;
    CString const & getDescription() const override;  ///< the field's
    DataTypeDef const * getType() const override;     ///< the list's element type
    /// Deliberate: the field's, so the list's type name, though getType is the element's. Users show
    /// how the field is declared.
    CString const & getTypeName() const override;
    int getMaxSize() const override;  ///< 0 until set
    unsigned int getIndex() const override;

    void setIndex(unsigned int index);
    void setMaxSize(int maxSize);

private:
    ~ListElementFieldDefImpl() override;

    FieldDef const * field_;
    ListTypeDef const * listType_;
    unsigned int index_ = 0;
    CString name_;
    int maxSize_ = 0;
};

}  // namespace tvk
