#pragma once

#include "tvk/definitions/SimpleTypeDef.h"

namespace tvk {

/// A simple type that a loader fills.
class TVK_API SimpleTypeDefImpl : public SimpleTypeDef {
public:
    SimpleTypeDefImpl();
    SimpleTypeDefImpl(CString const & name, CString const & nameJa, CString const & description);

    CString const & getName() const override;
    CString const & getNameJa() const override;
    CString const & getDescription() const override;
    bool isSimpleType() const override;
    bool isRecordType() const override;
    bool isListType() const override;
    bool isDerivedType() const override;

    void setName(CString const & name);  ///< A registry keeps the old name as the key.
    void setNameJa(CString const & nameJa);
    void setDescription(CString const & description);

private:
    ~SimpleTypeDefImpl() override;

    CString name_;
    CString nameJa_;
    CString description_;
};

}  // namespace tvk
