#include "tvk/definitions/FieldDefImpl.h"

#include "tvk/definitions/RecordTypeDef.h"

namespace tvk {

FieldDefImpl::FieldDefImpl(char const * name, char const * nameJa, char const * description)
    : NamedDef(name, nameJa, description) {}

FieldDefImpl::FieldDefImpl(RecordTypeDef const * enclosingRecordType, CString const & name,
                           DataTypeDef const * type)
    : NamedDef(name, CString(), CString()), type_(type), enclosingRecordType_(enclosingRecordType) {
    if (type != nullptr) {
        typeName_ = type->getName();
    }
}

FieldDefImpl::~FieldDefImpl() = default;

RecordTypeDef const * FieldDefImpl::getEnclosingRecordType() const { return enclosingRecordType_; }

CString FieldDefImpl::getQualifiedName() const {
    if (enclosingRecordType_ == nullptr) {
        return getName();
    }
    return enclosingRecordType_->getName() + "." + getName();
}

DataTypeDef const * FieldDefImpl::getType() const { return type_.get(); }

CString const & FieldDefImpl::getTypeName() const { return typeName_; }

int FieldDefImpl::getMaxSize() const { return maxSize_; }

void FieldDefImpl::setType(DataTypeDef const * type) { type_ = type; }

void FieldDefImpl::setTypeName(CString const & typeName) { typeName_ = typeName; }

void FieldDefImpl::setEnclosingRecordType(RecordTypeDef const * enclosingRecordType) {
    enclosingRecordType_ = enclosingRecordType;
}

void FieldDefImpl::setMaxSize(int maxSize) { maxSize_ = maxSize; }

}  // namespace tvk
