#pragma once

#include "tvk/definitions/detail/RecordDef.h"

namespace tvk {

class MessageTypeDef;

/// A message type that a loader fills.
///
/// Deliberate: stands beside MessageTypeDef and does not derive from it, though it has the same virtual
/// operations in the same order. Whoever wants a `MessageTypeDef const *` converts the pointer
/// explicitly, which that order makes work; asMessageTypeDef does it in one place.
class TVK_API MessageTypeDefImpl : public detail::RecordDef {
public:
    MessageTypeDefImpl();
    MessageTypeDefImpl(char const * name, char const * nameJa, char const * description);

    virtual CString const & getMessageTypeId() const;

    /// This object as what MessageDefManagerImpl takes. Not counted.
    MessageTypeDef const * asMessageTypeDef() const;

    void setMessageTypeId(CString const & messageTypeId);

private:
    ~MessageTypeDefImpl() override;

    CString messageTypeId_;
};

}  // namespace tvk
