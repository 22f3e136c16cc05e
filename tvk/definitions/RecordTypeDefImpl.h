#pragma once

#include "tvk/definitions/RecordTypeDef.h"
#include "tvk/definitions/detail/FieldDefTable.h"

namespace tvk {

/// A record type that a loader fills.
class TVK_API RecordTypeDefImpl : public RecordTypeDef {
public:
    RecordTypeDefImpl();
    RecordTypeDefImpl(char const * name, char const * nameJa, char const * description);

    CString const & getName() const override;
    CString const & getNameJa() const override;
    CString const & getDescription() const override;
    bool isSimpleType() const override;
    bool isRecordType() const override;
    bool isListType() const override;
    std::vector<FieldDef const *> const & getFieldDefList() const override;
    FieldDef const * getFieldDef(CString const & name) const override;
    unsigned int getFieldCount() const override;
    CString const & getKind() const override;

    void setName(CString const & name);  ///< A registry keeps the old name as the key.
    void setNameJa(CString const & nameJa);
    void setDescription(CString const & description);
    void setKind(CString const & kind);

    /// Appends a field and takes one count on it. A name that is taken throws an ErrorInfo by value
    /// (ErrorDomain_Kestrin, ERR_UnexpectedError, "duplicated field definition: " and the qualified
    /// name of `field`); nothing has changed then. Requires: not null.
    void addFieldDef(FieldDef const * field);

private:
    ~RecordTypeDefImpl() override;

    CString name_;
    CString nameJa_;
    CString description_;
    CString kind_;
    detail::FieldDefTable fields_;
};

}  // namespace tvk
