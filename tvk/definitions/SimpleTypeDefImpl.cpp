#include "tvk/definitions/SimpleTypeDefImpl.h"

namespace tvk {

SimpleTypeDefImpl::SimpleTypeDefImpl() = default;

SimpleTypeDefImpl::SimpleTypeDefImpl(CString const & name, CString const & nameJa,
                                     CString const & description)
    : NamedDef(name, nameJa, description) {}

SimpleTypeDefImpl::~SimpleTypeDefImpl() = default;

bool SimpleTypeDefImpl::isSimpleType() const { return true; }

bool SimpleTypeDefImpl::isRecordType() const { return false; }

bool SimpleTypeDefImpl::isListType() const { return false; }

bool SimpleTypeDefImpl::isDerivedType() const { return false; }

}  // namespace tvk
