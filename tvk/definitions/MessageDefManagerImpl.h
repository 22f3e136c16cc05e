#pragma once

#include "tvk/definitions/MessageDefManager.h"
#include "tvk/definitions/detail/NamedDefinitions.h"

namespace tvk {

/// The registry that a loader fills. It knows the four built-in simple types from the start, holds
/// one count on each definition, and only grows.
///
/// Threads: none may read while it is being filled.
class TVK_API MessageDefManagerImpl : public MessageDefManager {
public:
    MessageDefManagerImpl();

    DataTypeDef const * getDataTypeDefByName(CString const & name) const override;
    std::vector<DataTypeDef const *> getDataTypeDefList() const override;
    std::vector<MessageTypeDef const *> getMessageDefList() const override;
    MessageTypeDef const * getMessageDefByName(CString const & name) const override;
    /// Deliberate: checks nothing. Loaders call it while names are still to be resolved.
    void validate() const override;

    /// Registers a definition under its name. False, with nothing changed, when the name is taken.
    /// Requires: not null.
    bool addDataType(DataTypeDef const * type);
    bool addMessageType(MessageTypeDef const * type);

private:
    ~MessageDefManagerImpl() override;
    void init();

    detail::NamedDefinitions<DataTypeDef> dataTypes_;
    detail::NamedDefinitions<MessageTypeDef> messageTypes_;  // released first
};

}  // namespace tvk
