#pragma once

#include "tvk/platform/CString.h"
#include "tvk/platform/Export.h"
#include "tvk/values/FieldValue.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk {

class KestrinMessage;
class RecordData;

/// Short forms for daily work with messages: making values, list messages, fields deep inside a
/// record, and text for logs.
///
///     KestrinUtil::getFieldValueWithPath(*reply, "positions[2]/instrument/code")
///
/// Threads: no state; the arguments must not change during a call.
/// Failure: a path that leads nowhere and a value that cannot be had for lack of memory are null
///          references. Everything else throws std::bad_alloc where memory is out or a text would
///          pass 0x7fffffff bytes.
class TVK_API KestrinUtil {
public:
    KestrinUtil() = delete;

    // A new value with each call, or null.
    static RefCountedPtr<FieldValue> stringFieldValue(char const * text);
    static RefCountedPtr<FieldValue> stringFieldValue(char const * text, unsigned int length);
    static RefCountedPtr<FieldValue> stringFieldValue(CString const & text);
    /// A buffer of that capacity; the size is 0.
    static RefCountedPtr<FieldValue> rawFieldValue(unsigned int capacity);
    /// As RawDataImpl(bytes, size): the bytes stand in the buffer, and getSize() is still 0.
    static RefCountedPtr<FieldValue> rawFieldValue(void const * bytes, unsigned int size);

    /// Whether the message type identifier is KestrinMessage::MSGTYPE_LIST_MESSAGE.
    static bool isListMessage(KestrinMessage const & message);
    /// The message itself if it is a list message, else a new list message of the same kind with
    /// it as the only sub-message. Nothing else of the header is taken over. Requires: not null.
    static RefCountedPtr<KestrinMessage> toListMessage(
        RefCountedPtr<KestrinMessage> const & message);

    /// The value at a path, or null where it leads nowhere: an unknown field, a value of another
    /// type, an index out of range, a bracket that is not closed.
    ///
    /// A path is names with "/" between them; "name[2]" is the third element of the list in that
    /// field. An index is read as by atoi, so one that is no number is 0. There is one index a name
    /// at most: what follows the number is ignored up to a final "]". A "/" in front does not
    /// count; one at the end asks for the field with the empty name.
    static RefCountedPtr<FieldValue> getFieldValueWithPath(RecordData const & record,
                                                           CString const & path);
    /// The same with the path in `count` pieces, in which a "/" has no meaning. No piece gives null.
    static RefCountedPtr<FieldValue> getFieldValueWithPath(RecordData const & record,
                                                           unsigned int count,
                                                           CString const * const segments);

    // Text for logs, in lines that end in CR LF; only that of a message ends with one. A level is
    // four blanks of indentation; one below 0 indents as 0 does. Nothing is escaped. Values may be
    // nested to any depth, but the text grows with its square.

    /// Header and body, or the bodies of a list message's sub-messages.
    static CString dumpMessage(int level, KestrinMessage const & message);
    /// Deliberate: a number prints as "<unknown>". Tools that compare logs rely on prices and
    /// volumes not showing in them.
    static CString dumpOneField(int level, FieldValue const & value);
    static CString dumpRecordField(int level, RecordData const & record);
};

}  // namespace tvk
