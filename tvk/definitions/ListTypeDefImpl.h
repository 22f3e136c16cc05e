#pragma once

#include "tvk/definitions/ListTypeDef.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk {

/// A list type that a loader fills.
class TVK_API ListTypeDefImpl : public ListTypeDef {
public:
    ListTypeDefImpl();
    ListTypeDefImpl(char const * name, char const * nameJa, char const * description);

    CString const & getName() const override;
    CString const & getNameJa() const override;
    CString const & getDescription() const override;
    bool isSimpleType() const override;
    bool isRecordType() const override;
    bool isListType() const override;
    DataTypeDef const * getElementTypeDef() const override;
    CString const & getElementTypeName() const override;
    unsigned int getLengthOfCount() const override;  ///< 0 until set
    CString const & getElementFieldName() const override;

    void setName(CString const & name);  ///< A registry keeps the old name as the key.
    void setNameJa(CString const & nameJa);
    void setDescription(CString const & description);
    /// Counted; null is allowed. The element type name stays as it is.
    void setElementTypeDef(DataTypeDef const * elementType);
    void setElementTypeName(CString const & elementTypeName);
    void setElementFieldName(CString const & elementFieldName);
    void setLengthOfCount(unsigned int lengthOfCount);

private:
    ~ListTypeDefImpl() override;

    CString name_;
    CString nameJa_;
    CString description_;
    RefCountedPtr<DataTypeDef const> elementType_;
    CString elementTypeName_;
    unsigned int lengthOfCount_ = 0;
    CString elementFieldName_;
};

}  // namespace tvk
