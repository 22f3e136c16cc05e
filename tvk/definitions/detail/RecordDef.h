#pragma once

#include "tvk/definitions/detail/NamedDef.h"
#include "tvk/definitions/detail/NamedDefinitions.h"

namespace tvk::detail {

/// What a record type and a message type that a loader fills have in common. Adds no virtual operation to
/// those of RecordTypeDef.
class TVK_API RecordDef : public NamedDef<RecordTypeDef> {
public:
    bool isSimpleType() const override;
    bool isRecordType() const override;
    bool isListType() const override;
    std::vector<FieldDef const *> const & getFieldDefList() const override;
    FieldDef const * getFieldDef(CString const & name) const override;
    unsigned int getFieldCount() const override;
    CString const & getKind() const override;

    void setKind(CString const & kind);

    /// Appends a field and takes one count on it. A name that is taken throws an ErrorInfo by value
    /// (ErrorDomain_Kestrin, ERR_UnexpectedError, "duplicated field definition: " and the qualified
    /// name of `field` up to its first NUL); nothing has changed then, nor when memory is out.
    /// Requires: not null.
    void addFieldDef(FieldDef const * field);

protected:
    using NamedDef::NamedDef;
    ~RecordDef() override;

private:
    CString kind_;
    NamedDefinitions<FieldDef> fields_;
};

}  // namespace tvk::detail
