#include "tvk/values/MappedMessage.h"

#include <cstdint>
#include <memory>

#include "tvk/values/MappedMessageHeader.h"
#include "tvk/values/detail/FieldMap.h"
#include "tvk/values/detail/PlaceLimit.h"
#include "tvk/values/detail/ReadyMade.h"

namespace tvk {

namespace {

using SubMessages = std::vector<RefCountedPtr<KestrinMessage>>;

std::unique_ptr<SubMessages> copyOf(std::unique_ptr<SubMessages> const & messages) {
    return messages == nullptr ? nullptr : std::make_unique<SubMessages>(*messages);
}

std::unique_ptr<SubMessages> subMessagesOf(KestrinMessage const & message) {
    unsigned int const count = message.getSubMessageCount();
    if (count == 0) {
        return nullptr;
    }
    auto messages = std::make_unique<SubMessages>();
    detail::reservePlaces(*messages, count);
    for (unsigned int i = 0; i < count; ++i) {
        messages->push_back(message.getSubMessage(i));
    }
    return messages;
}

SubMessages::iterator placeOf(SubMessages & messages, std::size_t index) {
    return messages.begin() + static_cast<std::ptrdiff_t>(index);
}

}  // namespace

struct MappedMessage::Impl : detail::FieldMap {
    using FieldMap::FieldMap;
    Impl() = default;
    explicit Impl(MappedMessage const & other)
        : FieldMap(other.fields()),
          header(new MappedMessageHeader(other.header())),
          subMessages(copyOf(other.impl().subMessages)) {}

    MappedMessageHeader & madeHeader() {
        if (header.isNull()) {
            header = new MappedMessageHeader;
        }
        return *header;
    }

    SubMessages & madeSubMessages() {
        if (subMessages == nullptr) {
            subMessages = std::make_unique<SubMessages>();
        }
        return *subMessages;
    }

    RefCountedPtr<MappedMessageHeader> header;  // null until somebody asks for it
    std::unique_ptr<SubMessages> subMessages;   // null until a first one is stored
};

KestrinMessage::~KestrinMessage() = default;

MappedMessage::MappedMessage() : MappedFields(new Impl) {}

MappedMessage::MappedMessage(MappedMessage const & other) : MappedFields(new Impl(other)) {}

MappedMessage::MappedMessage(KestrinMessage const & other) : MappedMessage() {
    fields().addMissing(other);
    assignHeaderOf(other);
    impl().subMessages = subMessagesOf(other);
}

MappedMessage::MappedMessage(Impl * fields) : MappedFields(fields, true) {}

MappedMessage::~MappedMessage() {
    detail::ContainerEnd end;
    if (end.isDeep()) {
        // Last one first: they end in the order sub-messages, header, body.
        fields().endAll(end);
        end.defer(impl().header);
        if (impl().subMessages != nullptr) {
            end.releaseAll(*impl().subMessages);
        }
    } else {
        if (impl().subMessages != nullptr) {
            end.releaseAll(*impl().subMessages);
        }
        impl().header = nullptr;
        fields().endAll(end);
    }
    detail::FieldMap::end<Impl>(*this);
}

MappedMessage & MappedMessage::operator=(MappedMessage const & other) {
    if (&other != this) {
        // What was held goes last: it may be all that keeps the source alive.
        auto subMessages = copyOf(other.impl().subMessages);
        detail::FieldMap body(other.fields());
        assignHeaderOf(other);
        fields().swap(body);
        impl().subMessages.swap(subMessages);
    }
    return *this;
}

MappedMessage & MappedMessage::operator=(KestrinMessage const & other) {
    if (&other != this) {
        fields().addMissing(other);
        assignHeaderOf(other);
        impl().subMessages = subMessagesOf(other);
    }
    return *this;
}

RefCountedPtr<KestrinMessage> MappedMessage::createListMessage(unsigned int count) {
    RefCountedPtr<MappedMessage> const message(new MappedMessage);
    message->header().setMessageTypeId(MSGTYPE_LIST_MESSAGE);
    detail::reservePlaces(message->impl().madeSubMessages(), count);
    return message;
}

KestrinMessageHeader & MappedMessage::header() { return impl().madeHeader(); }

KestrinMessageHeader const & MappedMessage::header() const {
    return const_cast<MappedMessage *>(this)->impl().madeHeader();
}

unsigned int MappedMessage::getSubMessageCount() const {
    return impl().subMessages == nullptr ? 0
                                         : static_cast<unsigned int>(impl().subMessages->size());
}

RefCountedPtr<KestrinMessage> MappedMessage::getSubMessage(unsigned int index) const {
    return (*impl().subMessages)[index];
}

void MappedMessage::addSubMessage(RefCountedPtr<KestrinMessage> const & message) {
    SubMessages & messages = impl().madeSubMessages();
    detail::requirePlaces(messages.size() + 1);
    messages.push_back(message);
}

void MappedMessage::insertSubMessageAt(unsigned int index,
                                       RefCountedPtr<KestrinMessage> const & message) {
    SubMessages & messages = impl().madeSubMessages();
    detail::requirePlaces(messages.size() + 1);
    messages.insert(placeOf(messages, index), message);
}

void MappedMessage::removeSubMessage(KestrinMessage const * message) {
    if (impl().subMessages == nullptr) {
        return;
    }
    SubMessages & messages = *impl().subMessages;
    for (std::size_t i = 0; i < messages.size(); ++i) {
        // Deliberate: the one that moves up into the place just emptied is passed over, so callers
        // that added a message twice in a row remove it twice.
        if (messages[i] == message) {
            messages.erase(placeOf(messages, i));
        }
    }
}

void MappedMessage::removeSubmessageAt(unsigned int index) {
    impl().subMessages->erase(placeOf(*impl().subMessages, index));
}

void MappedMessage::removeSubMessages(unsigned int first, unsigned int count) {
    SubMessages & messages = *impl().subMessages;
    std::uint64_t const end = std::uint64_t{first} + count;
    messages.erase(placeOf(messages, first), end < messages.size()
                                                 ? placeOf(messages, static_cast<std::size_t>(end))
                                                 : messages.end());
}

void MappedMessage::removeAllSubMessages() {
    if (impl().subMessages != nullptr) {
        impl().subMessages->clear();
    }
}

/// Deliberate: assigned at the level of the abstract class, which takes over the reference count
/// and nothing else. So a message that is assigned keeps what its header says.
void MappedMessage::assignHeaderOf(KestrinMessage const & other) {
    impl().madeHeader().KestrinMessageHeader::operator=(other.header());
}

MappedMessage::Impl & MappedMessage::impl() { return static_cast<Impl &>(fields()); }

MappedMessage::Impl const & MappedMessage::impl() const {
    return static_cast<Impl const &>(fields());
}

detail::ReadyMade::Value detail::ReadyMade::message(ShapeReference shape,
                                                    FieldValue * const * arrival) {
    return inOneBlock<MappedMessage, MappedMessage::Impl>(std::move(shape), arrival);
}

}  // namespace tvk
