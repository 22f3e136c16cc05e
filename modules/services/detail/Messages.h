#pragma once

#include "tvk/errors/ErrorInfo.h"
#include "tvk/platform/CString.h"
#include "tvk/values/KestrinMessage.h"
#include "tvk/values/RecordData.h"
#include "tvk/values/RefCountedPtr.h"

/// Making requests and errors, and looking at the fields of what came from outside: those may hold
/// anything, and the accessors of a value throw where its kind does not fit.
namespace tvk::services {

/// An error of the agent's domain.
ErrorInfo errorOf(int componentCode, int code, CString const & text);

/// A new request without fields.
RefCountedPtr<KestrinMessage> requestOfType(char const * messageTypeId);

/// Reads `message`, and says in an error what is wrong with it.
class MessageReader {
public:
    /// The reader fills `*error` with this component and code, and what the message is called.
    MessageReader(KestrinMessage const & message, int componentCode, int code, ErrorInfo * error);

    KestrinMessage const & message() const { return message_; }

    /// Fills the error: `chartHistory: the field "bars" is missing`. Always false.
    bool refuse(CString const & field, char const * complaint) const;
    /// The same with another code.
    bool refuse(int code, CString const & field, char const * complaint) const;

    bool readText(char const * field, CString * text) const;
    bool readNumber(char const * field, double * number) const;
    /// True too, and null, where the message has no such field.
    bool readOptionalNumber(char const * field, double * number) const;
    bool readList(char const * field, ListData const ** list) const;

private:
    bool readOfType(char const * field, FieldTypeEnum type, char const * complaint,
                    FieldValue const ** value) const;

    KestrinMessage const & message_;
    int const componentCode_;
    int const code_;
    ErrorInfo * const error_;
};

/// Whether the value is a text or a number, which all have a text form.
bool isScalar(FieldValue const * value);

}  // namespace tvk::services
