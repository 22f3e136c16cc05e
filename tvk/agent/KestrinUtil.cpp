#include "tvk/agent/KestrinUtil.h"

#include <new>
#include <vector>

#include "tvk/errors/KestrinConstants.h"
#include "tvk/platform/Numbers.h"
#include "tvk/text/StringUtil.h"
#include "tvk/values/ListData.h"
#include "tvk/values/MappedMessage.h"
#include "tvk/values/RawDataImpl.h"
#include "tvk/values/StringData.h"

namespace tvk {

namespace {

/// Sub-messages that a new list message has room for: it is made to be added to.
constexpr unsigned int LIST_MESSAGE_ROOM = 50;

template <class Value, class... Arguments>
RefCountedPtr<FieldValue> newOrNull(Arguments const &... arguments) {
    try {
        return new Value(arguments...);
    } catch (std::bad_alloc const &) {
        return nullptr;
    }
}

bool isOfType(RefCountedPtr<FieldValue> const & value, FieldTypeEnum type) {
    return !value.isNull() && value->getFieldType() == type;
}

/// What a segment with its first "[" at `bracket` leads to.
RefCountedPtr<FieldValue> elementOf(RecordData const & record, CString const & segment,
                                    int bracket) {
    if (segment[segment.GetLength() - 1] != ']') {
        return nullptr;
    }
    RefCountedPtr<FieldValue> const field = record.getFieldValue(segment.Left(bracket));
    if (!isOfType(field, FLDTYPE_LIST)) {
        return nullptr;
    }
    ListData const & list = field->asList();
    // The "]" ends the number. A negative one is beyond any count.
    auto const index =
        static_cast<unsigned int>(platform::parseInt32(segment.GetString() + bracket + 1));
    return index < list.getCount() ? list.getElement(index) : nullptr;
}

RefCountedPtr<FieldValue> valueOf(RecordData const & record, CString const & segment) {
    int const bracket = segment.Find(KestrinConstants::OPENING_SQUARE_BRACKET);
    return bracket < 0 ? record.getFieldValue(segment) : elementOf(record, segment, bracket);
}

}  // namespace

RefCountedPtr<FieldValue> KestrinUtil::stringFieldValue(char const * text) {
    return newOrNull<StringData>(text);
}

RefCountedPtr<FieldValue> KestrinUtil::stringFieldValue(char const * text, unsigned int length) {
    return newOrNull<StringData>(text, length);
}

RefCountedPtr<FieldValue> KestrinUtil::stringFieldValue(CString const & text) {
    return newOrNull<StringData>(text);
}

RefCountedPtr<FieldValue> KestrinUtil::rawFieldValue(unsigned int capacity) {
    return newOrNull<RawDataImpl>(capacity);
}

RefCountedPtr<FieldValue> KestrinUtil::rawFieldValue(void const * bytes, unsigned int size) {
    return newOrNull<RawDataImpl>(bytes, size);
}

bool KestrinUtil::isListMessage(KestrinMessage const & message) {
    return message.header().getMessageTypeId() == KestrinMessage::MSGTYPE_LIST_MESSAGE;
}

RefCountedPtr<KestrinMessage> KestrinUtil::toListMessage(
    RefCountedPtr<KestrinMessage> const & message) {
    if (isListMessage(*message)) {
        return message;
    }
    RefCountedPtr<KestrinMessage> list = MappedMessage::createListMessage(LIST_MESSAGE_ROOM);
    list->header().setMessageKind(message->header().getMessageKind());
    list->addSubMessage(message);
    return list;
}

RefCountedPtr<FieldValue> KestrinUtil::getFieldValueWithPath(RecordData const & record,
                                                             CString const & path) {
    std::vector<CString> const segments =
        StringUtil::split(path, KestrinConstants::FIELD_PATH_DELIMITER);
    return getFieldValueWithPath(record, static_cast<unsigned int>(segments.size()),
                                 segments.data());
}

RefCountedPtr<FieldValue> KestrinUtil::getFieldValueWithPath(RecordData const & record,
                                                             unsigned int count,
                                                             CString const * const segments) {
    if (count == 0) {
        return nullptr;
    }
    RefCountedPtr<FieldValue> value = valueOf(record, segments[0]);
    for (unsigned int i = 1; i < count; ++i) {
        if (!isOfType(value, FLDTYPE_RECORD)) {
            return nullptr;
        }
        value = valueOf(value->asRecord(), segments[i]);
    }
    return value;
}

}  // namespace tvk
