#pragma once

#include "tvk/definitions/detail/NamedDef.h"

namespace tvk {

/// A simple type that a loader fills.
class TVK_API SimpleTypeDefImpl : public detail::NamedDef<SimpleTypeDef> {
public:
    SimpleTypeDefImpl();
    SimpleTypeDefImpl(CString const & name, CString const & nameJa, CString const & description);

    bool isSimpleType() const override;
    bool isRecordType() const override;
    bool isListType() const override;
    bool isDerivedType() const override;

private:
    ~SimpleTypeDefImpl() override;
};

}  // namespace tvk
