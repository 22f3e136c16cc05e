#pragma once

#include "tvk/values/detail/MappedFields.h"

namespace tvk {

/// A message in an ordered map, with a MappedMessageHeader of its own.
///
/// Ownership: one count on each field value and each sub-message; copies share both. At its end it
///            releases the sub-messages, then the header, then the body.
/// Failure:   std::length_error "vector too long" beyond 0x3fffffff sub-messages. The accessors of
///            other kinds throw their texts, see FieldValue.
class TVK_API MappedMessage : public detail::MappedFields<KestrinMessage> {
public:
    MappedMessage();
    /// The full copy: body, header and sub-messages.
    MappedMessage(MappedMessage const & other);
    /// Deliberate: body and sub-messages; the header stays fresh. A message that is wrapped anew
    /// gets its header from whoever sends it on.
    MappedMessage(KestrinMessage const & other);

    /// Replaces body and sub-messages; the header keeps kind, identifiers and fields.
    MappedMessage & operator=(MappedMessage const & other);
    /// Deliberate: adds the body fields whose names are not here yet and replaces the sub-messages;
    /// the header keeps kind, identifiers and fields.
    MappedMessage & operator=(KestrinMessage const & other);

    /// An empty message of the type MSGTYPE_LIST_MESSAGE with room for `count` sub-messages.
    static RefCountedPtr<KestrinMessage> createListMessage(unsigned int count);

    KestrinMessageHeader & header() override;
    KestrinMessageHeader const & header() const override;
    unsigned int getSubMessageCount() const override;
    RefCountedPtr<KestrinMessage> getSubMessage(unsigned int index) const override;
    void addSubMessage(RefCountedPtr<KestrinMessage> const & message) override;
    void insertSubMessageAt(unsigned int index,
                            RefCountedPtr<KestrinMessage> const & message) override;
    void removeSubMessage(KestrinMessage const * message) override;
    void removeSubmessageAt(unsigned int index) override;
    void removeSubMessages(unsigned int first, unsigned int count) override;
    void removeAllSubMessages() override;

protected:
    ~MappedMessage() override;

private:
    friend class detail::ReadyMade;
    struct Impl;

    /// With fields in one block with this object.
    explicit MappedMessage(Impl * fields);

    void assignHeaderOf(KestrinMessage const & other);
    Impl & impl();
    Impl const & impl() const;
};

}  // namespace tvk
