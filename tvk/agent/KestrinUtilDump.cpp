#include <algorithm>
#include <limits>
#include <new>
#include <utility>
#include <vector>

#include "tvk/agent/KestrinUtil.h"
#include "tvk/values/KestrinMessage.h"
#include "tvk/values/ListData.h"
#include "tvk/values/RawData.h"

namespace tvk {

namespace {

constexpr char const * LINE_END = "\r\n";
constexpr char const * ONE_LEVEL = "    ";
constexpr long long BLANKS_OF_LEVEL = 4;

/// One dump. It does not recurse: values may be nested as deep as whoever sent them liked, so the
/// records and lists that the dump is inside of are kept on a stack of its own.
class Dump {
public:
    void message(long long level, KestrinMessage const & message) {
        KestrinMessageHeader const & header = message.header();
        indent(level);
        text_ += kindOf(header);
        text_ += header.getMessageTypeId();
        if (KestrinUtil::isListMessage(message)) {
            subMessages(level, message);
        } else {
            headerAndBody(level, message);
        }
        text_ += LINE_END;
    }

    void value(long long level, FieldValue const & value) {
        begin(level, value, nullptr);
        finish();
    }

    void record(long long level, RecordData const & record) {
        beginRecord(level, record, nullptr);
        finish();
    }

    CString const & text() const { return text_; }

private:
    using Reference = RefCountedPtr<FieldValue>;

    /// A record or list whose closing bracket is still to come.
    struct Container {
        Reference held;             // null for the outermost one, which the caller keeps alive
        RecordData const * record;  // null for a list
        ListData const * list;      // null for a record
        std::vector<CString> names;
        unsigned int count;
        unsigned int next;
        long long level;
    };

    static char const * kindOf(KestrinMessageHeader const & header) {
        switch (header.getMessageKind()) {
            case MSGKIND_NOTICE:
                return "[notice]";
            case MSGKIND_REPLY:
                return "[reply]";
            default:
                return "[request]";
        }
    }

    void subMessages(long long level, KestrinMessage const & message) {
        text_.AppendFormat("(%d)=[\r\n", static_cast<int>(message.getSubMessageCount()));
        for (unsigned int i = 0; i < message.getSubMessageCount(); ++i) {
            indent(level);
            text_.AppendFormat("    [%u]", i);
            RefCountedPtr<KestrinMessage> const subMessage = message.getSubMessage(i);
            if (subMessage.isNull()) {
                text_ += "=null";
            } else {
                text_ += subMessage->header().getMessageTypeId();
                text_ += '=';
                record(level + 1, *subMessage);
            }
            text_ += LINE_END;
        }
        indent(level);
        text_ += ']';
    }

    void headerAndBody(long long level, KestrinMessage const & message) {
        text_ += "=<\r\n";
        indent(level);
        text_ += "header=";
        record(level, message.header());
        text_ += LINE_END;
        indent(level);
        text_ += "body=";
        record(level, message);
        text_ += LINE_END;
        indent(level);
        text_ += '>';
    }

    /// Writes a value, of a record or list only the opening; `held` keeps the value alive.
    void begin(long long level, FieldValue const & value, Reference held) {
        switch (value.getFieldType()) {
            case FLDTYPE_STRING:
                text_ += '<';
                text_ += value.asString();
                text_ += '>';
                break;
            case FLDTYPE_RECORD:
                return beginRecord(level, value.asRecord(), std::move(held));
            case FLDTYPE_LIST:
                return beginList(level, value.asList(), std::move(held));
            case FLDTYPE_RAW:
                rawData(value.asRawData());
                break;
            default:
                text_ += "<unknown>";
        }
        endItem();
    }

    void rawData(RawData const & data) {
        text_.AppendFormat("<%d bytes of raw data@%p>", static_cast<int>(data.getSize()),
                           data.getBuffer());
    }

    void beginRecord(long long level, RecordData const & record, Reference held) {
        text_ += "{\r\n";
        std::vector<CString> names = record.getFieldNames();
        auto const count =
            static_cast<unsigned int>(std::min<std::size_t>(record.getFieldCount(), names.size()));
        open_.push_back({std::move(held), &record, nullptr, std::move(names), count, 0, level});
    }

    void beginList(long long level, ListData const & list, Reference held) {
        unsigned int const count = list.getCount();
        // A label, printed as the terminated text that it is: a NUL in it ends it here.
        text_.AppendFormat("List(%d)<%s>=[\r\n", static_cast<int>(count),
                           list.getElementTypeName().GetString());
        open_.push_back({std::move(held), nullptr, &list, {}, count, 0, level});
    }

    /// Writes what is missing of the open containers.
    void finish() {
        while (!open_.empty()) {
            Container & container = open_.back();
            if (container.next < container.count) {
                item(container);
            } else {
                end(container);
            }
        }
    }

    /// The next field or element. It may open another container, which moves this one.
    void item(Container & container) {
        unsigned int const index = container.next++;
        long long const level = container.level;
        indent(level);
        text_ += ONE_LEVEL;
        Reference value;
        if (container.record != nullptr) {
            text_ += container.names[index];
            text_ += '=';
            value = container.record->getFieldValue(container.names[index]);
        } else {
            text_.AppendFormat("[%d]=", static_cast<int>(index));
            value = container.list->getElement(index);
        }
        if (value.isNull()) {
            text_ += "null";
            endItem();
        } else {
            begin(level + 1, *value, value);
        }
    }

    void end(Container const & container) {
        indent(container.level);
        text_ += container.record != nullptr ? '}' : ']';
        open_.pop_back();
        endItem();
    }

    /// Whatever stands in a record or list ends its line; the outermost value does not.
    void endItem() {
        if (!open_.empty()) {
            text_ += LINE_END;
        }
    }

    void indent(long long level) {
        long long const before = text_.GetLength();
        long long const after = before + std::max(level, 0LL) * BLANKS_OF_LEVEL;
        if (after > std::numeric_limits<int>::max()) {
            throw std::bad_alloc();
        }
        char * const buffer = text_.GetBuffer(static_cast<int>(after));
        std::fill(buffer + before, buffer + after, ' ');
        text_.ReleaseBuffer(static_cast<int>(after));
    }

    CString text_;
    std::vector<Container> open_;
};

}  // namespace

CString KestrinUtil::dumpMessage(int level, KestrinMessage const & message) {
    Dump dump;
    dump.message(level, message);
    return dump.text();
}

CString KestrinUtil::dumpOneField(int level, FieldValue const & value) {
    Dump dump;
    dump.value(level, value);
    return dump.text();
}

CString KestrinUtil::dumpRecordField(int level, RecordData const & record) {
    Dump dump;
    dump.record(level, record);
    return dump.text();
}

}  // namespace tvk
