#include "tvk/definitions/FieldDefImpl.h"

#include "tvk/definitions/RecordTypeDef.h"

namespace tvk {

FieldDefImpl::FieldDefImpl(char const * name, char const * nameJa, char const * description)
    : name_(name), nameJa_(nameJa), description_(description) {}

FieldDefImpl::FieldDefImpl(RecordTypeDef const * enclosingRecordType, CString const & name,
                           DataTypeDef const * type)
    : name_(name), type_(type), enclosingRecordType_(enclosingRecordType) {
    if (type != nullptr) {
        typeName_ = type->getName();
    }
}

FieldDefImpl::~FieldDefImpl() = default;

RecordTypeDef const * FieldDefImpl::getEnclosingRecordType() const { return enclosingRecordType_; }

CString const & FieldDefImpl::getName() const { return name_; }

CString const & FieldDefImpl::getNameJa() const { return nameJa_; }

CString FieldDefImpl::getQualifiedName() const {
    if (enclosingRecordType_ == nullptr) {
        return name_;
    }
    return enclosingRecordType_->getName() + "." + name_;
}

CString const & FieldDefImpl::getDescription() const { return description_; }

DataTypeDef const * FieldDefImpl::getType() const { return type_.get(); }

CString const & FieldDefImpl::getTypeName() const { return typeName_; }

int FieldDefImpl::getMaxSize() const { return maxSize_; }

void FieldDefImpl::setName(CString const & name) { name_ = name; }

void FieldDefImpl::setNameJa(CString const & nameJa) { nameJa_ = nameJa; }

void FieldDefImpl::setDescription(CString const & description) { description_ = description; }

void FieldDefImpl::setType(DataTypeDef const * type) { type_ = type; }

void FieldDefImpl::setTypeName(CString const & typeName) { typeName_ = typeName; }

void FieldDefImpl::setEnclosingRecordType(RecordTypeDef const * enclosingRecordType) {
    enclosingRecordType_ = enclosingRecordType;
}

void FieldDefImpl::setMaxSize(int maxSize) { maxSize_ = maxSize; }

}  // namespace tvk
