#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tests/support/ValueDouble.h"
#include "tvk/values/KestrinMessage.h"
#include "tvk/values/KestrinMessageHeader.h"
#include "tvk/values/RecordData.h"

namespace tvk::test {

/// A record that is not the library's: fields in the order in which they were set, and a list of the
/// operations that were called on it.
template <class Interface>
class RecordDouble : public ValueDouble<Interface, FLDTYPE_RECORD> {
public:
    using Interface::getFieldValue;
    using Interface::hasField;
    using Interface::removeField;
    using Interface::setFieldValue;

    ~RecordDouble() override = default;

    std::vector<std::pair<CString, RefCountedPtr<FieldValue>>> fields;
    mutable std::vector<std::string> calls;

    RecordData & asRecord() override { return *this; }
    RecordData const & asRecord() const override { return *this; }

    bool hasField(CString const & name) const override {
        calls.push_back("hasField");
        return place(name) < fields.size();
    }
    unsigned int getFieldCount() const override {
        calls.push_back("getFieldCount");
        return static_cast<unsigned int>(fields.size());
    }
    std::vector<CString> getFieldNames() const override {
        calls.push_back("getFieldNames");
        std::vector<CString> names;
        for (auto const & field : fields) {
            names.push_back(field.first);
        }
        return names;
    }
    std::vector<RecordData::Field> getAllFields() const override {
        calls.push_back("getAllFields");
        std::vector<RecordData::Field> views;
        for (auto const & field : fields) {
            views.push_back({this, &field.first, field.second.get()});
        }
        return views;
    }
    RefCountedPtr<FieldValue> getFieldValue(CString const & name) const override {
        calls.push_back("getFieldValue");
        std::size_t const found = place(name);
        return found < fields.size() ? fields[found].second : nullptr;
    }
    void setFieldValue(CString const & name, RefCountedPtr<FieldValue> const & value) override {
        calls.push_back("setFieldValue");
        std::size_t const found = place(name);
        if (found < fields.size()) {
            fields[found].second = value;
        } else {
            fields.emplace_back(name, value);
        }
    }
    void removeField(CString const & name) override {
        calls.push_back("removeField");
        std::size_t const found = place(name);
        if (found < fields.size()) {
            fields.erase(fields.begin() + static_cast<std::ptrdiff_t>(found));
        }
    }
    void removeAllFields() override {
        calls.push_back("removeAllFields");
        fields.clear();
    }

private:
    std::size_t place(CString const & name) const {
        std::size_t found = 0;
        while (found < fields.size() && fields[found].first != name) {
            ++found;
        }
        return found;
    }
};

using RecordDataDouble = RecordDouble<RecordData>;

class MessageHeaderDouble : public RecordDouble<KestrinMessageHeader> {
public:
    MessageKindEnum kind = MessageKindEnum{};
    CString requestId;
    CString messageTypeId;

    MessageKindEnum getMessageKind() const override { return kind; }
    void setMessageKind(MessageKindEnum newKind) override { kind = newKind; }
    CString getRequestId() const override { return requestId; }
    void setRequestId(CString const & id) override { requestId = id; }
    CString const & getMessageTypeId() const override { return messageTypeId; }
    void setMessageTypeId(CString const & id) override { messageTypeId = id; }
};

/// A message that is not the library's; it may claim any number of sub-messages.
class MessageDouble : public RecordDouble<KestrinMessage> {
public:
    RefCountedPtr<MessageHeaderDouble> const ownHeader = new MessageHeaderDouble;
    std::vector<RefCountedPtr<KestrinMessage>> subMessages;
    unsigned int extraSubMessages = 0;

    KestrinMessageHeader & header() override { return *ownHeader; }
    KestrinMessageHeader const & header() const override { return *ownHeader; }
    unsigned int getSubMessageCount() const override {
        return static_cast<unsigned int>(subMessages.size()) + extraSubMessages;
    }
    RefCountedPtr<KestrinMessage> getSubMessage(unsigned int index) const override {
        return subMessages[index];
    }
    void addSubMessage(RefCountedPtr<KestrinMessage> const & message) override {
        subMessages.push_back(message);
    }
    void insertSubMessageAt(unsigned int index,
                            RefCountedPtr<KestrinMessage> const & message) override {
        subMessages.insert(subMessages.begin() + index, message);
    }
    void removeSubMessage(KestrinMessage const *) override {}
    void removeSubmessageAt(unsigned int index) override {
        subMessages.erase(subMessages.begin() + index);
    }
    void removeSubMessages(unsigned int first, unsigned int count) override {
        subMessages.erase(subMessages.begin() + first, subMessages.begin() + first + count);
    }
    void removeAllSubMessages() override { subMessages.clear(); }
};

}  // namespace tvk::test
