#pragma once

#include "tvk/values/ListDataImpl.h"
#include "tvk/values/MappedMessage.h"
#include "tvk/values/MappedRecordData.h"
#include "tvk/values/NumberData.h"

namespace tvk::test {

/// How deep the values are that must end, compare and copy well on an ordinary stack.
constexpr int DEEP_LEVELS = 1000000;

enum class DeepShape { LISTS, RECORDS, SUB_MESSAGES, HEADERS, MIXED };

constexpr DeepShape DEEP_SHAPES[] = {DeepShape::LISTS, DeepShape::RECORDS, DeepShape::SUB_MESSAGES,
                                     DeepShape::HEADERS, DeepShape::MIXED};

inline char const * nameOf(DeepShape shape) {
    switch (shape) {
        case DeepShape::LISTS:
            return "Lists";
        case DeepShape::RECORDS:
            return "Records";
        case DeepShape::SUB_MESSAGES:
            return "SubMessages";
        case DeepShape::HEADERS:
            return "Headers";
        case DeepShape::MIXED:
            return "Mixed";
    }
    return "";
}

inline RefCountedPtr<FieldValue> listAround(RefCountedPtr<FieldValue> const & inner) {
    RefCountedPtr<ListData> const list(new ListDataImpl(CString()));
    list->addElement(inner);
    return list;
}

inline RefCountedPtr<FieldValue> recordAround(RefCountedPtr<FieldValue> const & inner) {
    RefCountedPtr<RecordData> const record(new MappedRecordData);
    record->setFieldValue(CString(), inner);
    return record;
}

inline RefCountedPtr<FieldValue> messageAround(RefCountedPtr<FieldValue> const & inner) {
    RefCountedPtr<KestrinMessage> const message(new MappedMessage);
    message->setFieldValue(CString(), inner);
    return message;
}

inline RefCountedPtr<FieldValue> headerAround(RefCountedPtr<FieldValue> const & inner) {
    RefCountedPtr<KestrinMessage> const message(new MappedMessage);
    message->header().setFieldValue(CString(), inner);
    return message;
}

/// The inner value as a sub-message; any but a message is put into the body of one first.
inline RefCountedPtr<FieldValue> subMessageAround(RefCountedPtr<FieldValue> const & inner) {
    RefCountedPtr<KestrinMessage> subMessage(dynamic_cast<KestrinMessage *>(inner.get()));
    if (subMessage.isNull()) {
        subMessage = new MappedMessage;
        subMessage->setFieldValue(CString(), inner);
    }
    RefCountedPtr<KestrinMessage> const message(new MappedMessage);
    message->addSubMessage(subMessage);
    return message;
}

/// The number 1 inside that many containers.
inline RefCountedPtr<FieldValue> deepValue(DeepShape shape, int levels) {
    RefCountedPtr<FieldValue> value(new NumberData(1));
    for (int i = 0; i < levels; ++i) {
        switch (shape) {
            case DeepShape::LISTS:
                value = listAround(value);
                break;
            case DeepShape::RECORDS:
                value = recordAround(value);
                break;
            case DeepShape::SUB_MESSAGES:
                value = subMessageAround(value);
                break;
            case DeepShape::HEADERS:
                value = headerAround(value);
                break;
            case DeepShape::MIXED:
                value = i % 4 == 0   ? listAround(value)
                        : i % 4 == 1 ? recordAround(value)
                        : i % 4 == 2 ? messageAround(value)
                                     : headerAround(value);
                break;
        }
    }
    return value;
}

}  // namespace tvk::test
