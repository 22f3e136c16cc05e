#include "tvk/values/MappedMessageHeader.h"

#include "tvk/values/detail/FieldMap.h"
#include "tvk/values/detail/ValueEquality.h"

namespace tvk {

struct MappedMessageHeader::Impl : detail::FieldMap {
    MessageKindEnum kind = MessageKindEnum{};
    CString messageTypeId;
    CString requestId;
};

KestrinMessageHeader::~KestrinMessageHeader() = default;

MappedMessageHeader::MappedMessageHeader() : MappedFields(new Impl) {}

MappedMessageHeader::MappedMessageHeader(MappedMessageHeader const & other)
    : MappedFields(new Impl(other.impl())) {}

MappedMessageHeader::MappedMessageHeader(KestrinMessageHeader const & other)
    : MappedMessageHeader() {
    impl().requestId = other.getRequestId();
    impl().messageTypeId = other.getMessageTypeId();
    impl().kind = other.getMessageKind();
    addFields(other);
}

MappedMessageHeader::~MappedMessageHeader() {
    detail::ContainerEnd end;
    fields().endAll(end);
    detail::FieldMap::end<Impl>(*this);
}

MappedMessageHeader & MappedMessageHeader::operator=(MappedMessageHeader const & other) {
    if (&other != this) {
        // The old fields go last: one of them may be all that keeps the source alive.
        detail::FieldMap fieldsOfOther(other.fields());
        fields().swap(fieldsOfOther);
        impl().kind = other.impl().kind;
    }
    return *this;
}

MappedMessageHeader & MappedMessageHeader::operator=(KestrinMessageHeader const & other) {
    if (&other != this) {
        impl().kind = other.getMessageKind();
        impl().messageTypeId = other.getMessageTypeId();
        impl().requestId = other.getRequestId();
        detail::FieldMap old;  // goes last: a field may be all that keeps the source alive
        fields().swap(old);
        addFields(other);
    }
    return *this;
}

bool MappedMessageHeader::operator==(MappedMessageHeader const & other) const {
    if (!hasSameEnvelope(other) || fields().count() != other.fields().count()) {
        return false;
    }
    for (auto const & [name, value] : fields().map()) {
        auto const found = other.fields().map().find(name);
        if (found == other.fields().map().end() ||
            !detail::fieldReferencesEqual(value.get(), found->second.get())) {
            return false;
        }
    }
    return true;
}

bool MappedMessageHeader::operator==(KestrinMessageHeader const & other) const {
    return hasSameEnvelope(other) && detail::recordDataEqual(*this, other);
}

MessageKindEnum MappedMessageHeader::getMessageKind() const { return impl().kind; }

void MappedMessageHeader::setMessageKind(MessageKindEnum kind) { impl().kind = kind; }

CString MappedMessageHeader::getRequestId() const { return impl().requestId; }

void MappedMessageHeader::setRequestId(CString const & id) { impl().requestId = id; }

CString const & MappedMessageHeader::getMessageTypeId() const { return impl().messageTypeId; }

void MappedMessageHeader::setMessageTypeId(CString const & id) { impl().messageTypeId = id; }

MappedMessageHeader & MappedMessageHeader::addFields(RecordData const & source) {
    fields().addMissing(source);
    return *this;
}

bool MappedMessageHeader::hasSameEnvelope(KestrinMessageHeader const & other) const {
    return impl().kind == other.getMessageKind() &&
           impl().messageTypeId == other.getMessageTypeId() &&
           impl().requestId == other.getRequestId();
}

MappedMessageHeader::Impl & MappedMessageHeader::impl() { return static_cast<Impl &>(fields()); }

MappedMessageHeader::Impl const & MappedMessageHeader::impl() const {
    return static_cast<Impl const &>(fields());
}

}  // namespace tvk
