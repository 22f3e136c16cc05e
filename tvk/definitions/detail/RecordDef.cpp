#include "tvk/definitions/detail/RecordDef.h"

#include "tvk/errors/ErrorInfo.h"
#include "tvk/errors/KestrinConstants.h"

namespace tvk::detail {

RecordDef::~RecordDef() = default;

bool RecordDef::isSimpleType() const { return false; }

bool RecordDef::isRecordType() const { return true; }

bool RecordDef::isListType() const { return false; }

std::vector<FieldDef const *> const & RecordDef::getFieldDefList() const {
    return fields_.inOrder();
}

FieldDef const * RecordDef::getFieldDef(CString const & name) const { return fields_.find(name); }

unsigned int RecordDef::getFieldCount() const {
    return static_cast<unsigned int>(fields_.inOrder().size());
}

CString const & RecordDef::getKind() const { return kind_; }

void RecordDef::setKind(CString const & kind) { kind_ = kind; }

void RecordDef::addFieldDef(FieldDef const * field) {
    if (fields_.add(field)) {
        return;
    }
    CString message;
    message.Format("duplicated field definition: %s", field->getQualifiedName().GetString());
    throw ErrorInfo(ErrorInfo::ComponentCode_Unknown, KestrinConstants::ErrorDomain_Kestrin,
                    KestrinConstants::ERR_UnexpectedError, message, nullptr);
}

}  // namespace tvk::detail
