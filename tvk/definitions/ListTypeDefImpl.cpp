#include "tvk/definitions/ListTypeDefImpl.h"

namespace tvk {

ListTypeDefImpl::ListTypeDefImpl() = default;

ListTypeDefImpl::ListTypeDefImpl(char const * name, char const * nameJa, char const * description)
    : name_(name), nameJa_(nameJa), description_(description) {}

ListTypeDefImpl::~ListTypeDefImpl() = default;

CString const & ListTypeDefImpl::getName() const { return name_; }

CString const & ListTypeDefImpl::getNameJa() const { return nameJa_; }

CString const & ListTypeDefImpl::getDescription() const { return description_; }

bool ListTypeDefImpl::isSimpleType() const { return false; }

bool ListTypeDefImpl::isRecordType() const { return false; }

bool ListTypeDefImpl::isListType() const { return true; }

DataTypeDef const * ListTypeDefImpl::getElementTypeDef() const { return elementType_.get(); }

CString const & ListTypeDefImpl::getElementTypeName() const { return elementTypeName_; }

unsigned int ListTypeDefImpl::getLengthOfCount() const { return lengthOfCount_; }

CString const & ListTypeDefImpl::getElementFieldName() const { return elementFieldName_; }

void ListTypeDefImpl::setName(CString const & name) { name_ = name; }

void ListTypeDefImpl::setNameJa(CString const & nameJa) { nameJa_ = nameJa; }

void ListTypeDefImpl::setDescription(CString const & description) { description_ = description; }

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
