#include "tvk/definitions/RecordTypeDefImpl.h"

namespace tvk {

RecordTypeDefImpl::RecordTypeDefImpl() = default;

RecordTypeDefImpl::RecordTypeDefImpl(char const * name, char const * nameJa,
                                     char const * description)
    : RecordDef(name, nameJa, description) {}

RecordTypeDefImpl::~RecordTypeDefImpl() = default;

}  // namespace tvk
