#pragma once

#include "tvk/definitions/detail/NamedDef.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk {

/// A list type that a loader fills.
class TVK_API ListTypeDefImpl : public detail::NamedDef<ListTypeDef> {
public:
    ListTypeDefImpl();
    ListTypeDefImpl(char const * name, char const * nameJa, char const * description);

    bool isSimpleType() const override;
    bool isRecordType() const override;
    bool isListType() const override;
    DataTypeDef const * getElementTypeDef() const override;
    CString const & getElementTypeName() const override;
    unsigned int getLengthOfCount() const override;  ///< 0 until set
    CString const & getElementFieldName() const override;

    /// Counted; null is allowed. Deliberate: the element type name stays as it is, as that of a field
    /// does.
    void setElementTypeDef(DataTypeDef const * elementType);
    void setElementTypeName(CString const & elementTypeName);
    void setElementFieldName(CString const & elementFieldName);
    void setLengthOfCount(unsigned int lengthOfCount);

private:
    ~ListTypeDefImpl() override;

    RefCountedPtr<DataTypeDef const> elementType_;
    CString elementTypeName_;
    unsigned int lengthOfCount_ = 0;
    CString elementFieldName_;
};

}  // namespace tvk
