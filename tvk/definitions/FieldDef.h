#pragma once

#include "tvk/platform/CString.h"
#include "tvk/platform/Export.h"
#include "tvk/values/RefCounted.h"

namespace tvk {

class DataTypeDef;
class RecordTypeDef;

/// Read view of one field of a record or message type.
///
/// Ownership and threads: as DataTypeDef.
class TVK_API FieldDef : public RefCounted {
public:
    FieldDef(FieldDef const &) = delete;
    FieldDef & operator=(FieldDef const &) = delete;

    virtual RecordTypeDef const * getEnclosingRecordType() const = 0;  ///< not counted, or null
    virtual CString const & getName() const = 0;
    virtual CString const & getNameJa() const = 0;  ///< Japanese display name
    virtual CString getQualifiedName() const = 0;   ///< with the name of the enclosing record
    virtual CString const & getDescription() const = 0;
    virtual DataTypeDef const * getType() const = 0;  ///< null while a loader resolves names
    virtual CString const & getTypeName()
        const = 0;                       ///< kept apart from getType(); they may disagree
    virtual int getMaxSize() const = 0;  ///< for loaders and users of definitions

protected:
    FieldDef() = default;
    ~FieldDef() override = 0;
};

}  // namespace tvk
