#include "tvk/definitions/detail/FieldDefTable.h"

#include "tvk/errors/ErrorInfo.h"
#include "tvk/errors/KestrinConstants.h"

namespace tvk::detail {

void FieldDefTable::add(FieldDef const * field) {
    if (NamedDefinitions::add(field)) {
        return;
    }
    CString message;
    message.Format("duplicated field definition: %s", field->getQualifiedName().GetString());
    throw ErrorInfo(ErrorInfo::ComponentCode_Unknown, KestrinConstants::ErrorDomain_Kestrin,
                    KestrinConstants::ERR_UnexpectedError, message, nullptr);
}

}  // namespace tvk::detail
