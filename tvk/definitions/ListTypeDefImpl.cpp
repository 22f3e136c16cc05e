#include "tvk/definitions/ListTypeDefImpl.h"

namespace tvk {

ListTypeDefImpl::ListTypeDefImpl() = default;

ListTypeDefImpl::ListTypeDefImpl(char const * name, char const * nameJa, char const * description)
    : NamedDef(name, nameJa, description) {}

ListTypeDefImpl::~ListTypeDefImpl() = default;

bool ListTypeDefImpl::isSimpleType() const { return false; }

bool ListTypeDefImpl::isRecordType() const { return false; }

bool ListTypeDefImpl::isListType() const { return true; }

DataTypeDef const * ListTypeDefImpl::getElementTypeDef() const { return elementType_.get(); }

CString const & ListTypeDefImpl::getElementTypeName() const { return elementTypeName_; }

unsigned int ListTypeDefImpl::getLengthOfCount() const { return lengthOfCount_; }

CString const & ListTypeDefImpl::getElementFieldName() const { return elementFieldName_; }

void ListTypeDefImpl::setElementTypeDef(DataTypeDef const * elementType) {
    elementType_ = elementType;
}

void ListTypeDefImpl::setElementTypeName(CString const & elementTypeName) {
    elementTypeName_ = elementTypeName;
}

void ListTypeDefImpl::setElementFieldName(CString const & elementFieldName) {
    elementFieldName_ = elementFieldName;
}

void ListTypeDefImpl::setLengthOfCount(unsigned int lengthOfCount) {
    lengthOfCount_ = lengthOfCount;
}

}  // namespace tvk
