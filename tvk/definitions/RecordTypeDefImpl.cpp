#include "tvk/definitions/RecordTypeDefImpl.h"

namespace tvk {

RecordTypeDefImpl::RecordTypeDefImpl() = default;

RecordTypeDefImpl::RecordTypeDefImpl(char const * name, char const * nameJa,
                                     char const * description)
    : name_(name), nameJa_(nameJa), description_(description) {}

RecordTypeDefImpl::~RecordTypeDefImpl() = default;

CString const & RecordTypeDefImpl::getName() const { return name_; }

CString const & RecordTypeDefImpl::getNameJa() const { return nameJa_; }

CString const & RecordTypeDefImpl::getDescription() const { return description_; }

bool RecordTypeDefImpl::isSimpleType() const { return false; }

bool RecordTypeDefImpl::isRecordType() const { return true; }

bool RecordTypeDefImpl::isListType() const { return false; }

std::vector<FieldDef const *> const & RecordTypeDefImpl::getFieldDefList() const {
    return fields_.inOrder();
}

FieldDef const * RecordTypeDefImpl::getFieldDef(CString const & name) const {
    return fields_.find(name);
}

unsigned int RecordTypeDefImpl::getFieldCount() const {
    return static_cast<unsigned int>(fields_.inOrder().size());
}

CString const & RecordTypeDefImpl::getKind() const { return kind_; }

void RecordTypeDefImpl::setName(CString const & name) { name_ = name; }

void RecordTypeDefImpl::setNameJa(CString const & nameJa) { nameJa_ = nameJa; }

void RecordTypeDefImpl::setDescription(CString const & description) { description_ = description; }

void RecordTypeDefImpl::setKind(CString const & kind) { kind_ = kind; }

void RecordTypeDefImpl::addFieldDef(FieldDef const * field) { fields_.add(field); }

}  // namespace tvk
