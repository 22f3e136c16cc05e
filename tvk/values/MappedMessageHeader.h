#pragma once

#include "tvk/values/detail/MappedFields.h"

namespace tvk {

/// A message header in an ordered map. A fresh one has no fields, empty identifiers and kind 0.
///
/// Ownership: one count on each field value. Copies share the value objects.
class TVK_API MappedMessageHeader : public detail::MappedFields<KestrinMessageHeader> {
public:
    MappedMessageHeader();
    MappedMessageHeader(MappedMessageHeader const & other);
    MappedMessageHeader(KestrinMessageHeader const & other);

    /// Deliberate: takes fields and kind, and keeps both own identifiers. A reply made from a
    /// template header relies on keeping its request identifier.
    MappedMessageHeader & operator=(MappedMessageHeader const & other);
    /// Takes kind, both identifiers and the fields.
    MappedMessageHeader & operator=(KestrinMessageHeader const & other);

    /// Kind, identifiers and fields, values by deep comparison with the own value on the left.
    bool operator==(MappedMessageHeader const & other) const;
    bool operator==(KestrinMessageHeader const & other) const;

    MessageKindEnum getMessageKind() const override;
    void setMessageKind(MessageKindEnum kind) override;
    CString getRequestId() const override;
    void setRequestId(CString const & id) override;
    CString const & getMessageTypeId() const override;
    void setMessageTypeId(CString const & id) override;

private:
    struct Impl;

    ~MappedMessageHeader() override;

    MappedMessageHeader & addFields(RecordData const & source);
    bool hasSameEnvelope(KestrinMessageHeader const & other) const;
    Impl & impl();
    Impl const & impl() const;
};

}  // namespace tvk
