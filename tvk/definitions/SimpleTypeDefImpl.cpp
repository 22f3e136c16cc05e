#include "tvk/definitions/SimpleTypeDefImpl.h"

namespace tvk {

SimpleTypeDefImpl::SimpleTypeDefImpl() = default;

SimpleTypeDefImpl::SimpleTypeDefImpl(CString const & name, CString const & nameJa,
                                     CString const & description)
    : name_(name), nameJa_(nameJa), description_(description) {}

SimpleTypeDefImpl::~SimpleTypeDefImpl() = default;

CString const & SimpleTypeDefImpl::getName() const { return name_; }

CString const & SimpleTypeDefImpl::getNameJa() const { return nameJa_; }

CString const & SimpleTypeDefImpl::getDescription() const { return description_; }

bool SimpleTypeDefImpl::isSimpleType() const { return true; }

bool SimpleTypeDefImpl::isRecordType() const { return false; }

bool SimpleTypeDefImpl::isListType() const { return false; }

bool SimpleTypeDefImpl::isDerivedType() const { return false; }

void SimpleTypeDefImpl::setName(CString const & name) { name_ = name; }

void SimpleTypeDefImpl::setNameJa(CString const & nameJa) { nameJa_ = nameJa; }

void SimpleTypeDefImpl::setDescription(CString const & description) { description_ = description; }

}  // namespace tvk
