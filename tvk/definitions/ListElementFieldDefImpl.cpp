#include "tvk/definitions/ListElementFieldDefImpl.h"

#include "tvk/definitions/ListTypeDef.h"

namespace tvk {

namespace {

CString inBrackets(unsigned int index) {
    CString text;
    text.Format("[%u]", index);
    return text;
}

}  // namespace

ListElementFieldDefImpl::ListElementFieldDefImpl(FieldDef const * field,
                                                 ListTypeDef const * listType)
    : field_(field), listType_(listType) {}

ListElementFieldDefImpl::~ListElementFieldDefImpl() = default;

RecordTypeDef const * ListElementFieldDefImpl::getEnclosingRecordType() const {
    return field_->getEnclosingRecordType();
}

CString const & ListElementFieldDefImpl::getName() const { return name_; }

CString const & ListElementFieldDefImpl::getNameJa() const { return name_; }

CString ListElementFieldDefImpl::getQualifiedName() const {
    return field_->getQualifiedName() + inBrackets(index_);
}

CString const & ListElementFieldDefImpl::getDescription() const { return field_->getDescription(); }

DataTypeDef const * ListElementFieldDefImpl::getType() const {
    return listType_->getElementTypeDef();
}

CString const & ListElementFieldDefImpl::getTypeName() const { return field_->getTypeName(); }

int ListElementFieldDefImpl::getMaxSize() const { return maxSize_; }

unsigned int ListElementFieldDefImpl::getIndex() const { return index_; }

void ListElementFieldDefImpl::setIndex(unsigned int index) {
    name_ = inBrackets(index);
    index_ = index;
}

void ListElementFieldDefImpl::setMaxSize(int maxSize) { maxSize_ = maxSize; }

}  // namespace tvk
