#pragma once

#include "tvk/platform/CString.h"
#include "tvk/platform/Export.h"
#include "tvk/values/RefCounted.h"

namespace tvk {

/// Read view of a data type of the back end: a simple type, a record or a list.
///
/// Definitions describe messages and do not drive them: no value class consults one. A loader fills
/// the `Impl` classes and registers them (MessageDefManagerImpl); everybody else reads.
///
/// Ownership: counted; ordinarily a registry holds a definition as long as it lives.
/// Threads:   no lock. A finished definition may be read by several threads that count no
///            references on it meanwhile.
/// Failure:   what is unknown is a null pointer.
class TVK_API DataTypeDef : public RefCounted {
public:
    DataTypeDef(DataTypeDef const &) = delete;
    DataTypeDef & operator=(DataTypeDef const &) = delete;

    virtual CString const & getName() const = 0;         ///< the key in a registry
    virtual CString const & getNameJa() const = 0;       ///< Japanese display name
    virtual CString const & getDescription() const = 0;  ///< free text
    virtual bool isSimpleType() const = 0;               ///< a SimpleTypeDef
    virtual bool isRecordType() const = 0;               ///< a RecordTypeDef or MessageTypeDef
    virtual bool isListType() const = 0;                 ///< a ListTypeDef

protected:
    DataTypeDef() = default;
    ~DataTypeDef() override = 0;
};

}  // namespace tvk
