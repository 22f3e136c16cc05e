// Linked into the library's objects as the first of them, so that its static initialiser runs before
// those of every other file that has no earlier place of its own.

#include "tests/errors/loadorder/Probe.h"

#include "tests/errors/ConstantsTable.h"
#include "tvk/agent/KestrinContainer.h"
#include "tvk/text/StringUtil.h"
#include "tvk/values/MappedMessage.h"
#include "tvk/values/NumberData.h"
#include "tvk/values/StringData.h"

namespace tvk::test {

namespace {

struct Sight {
    std::vector<std::string> faults;
    int seen = 0;

    Sight() {
        for (TextConstant const & row : TEXT_CONSTANTS) {
            // A text that is not built yet is all zero.
            expect(row.constant->GetString() != nullptr && *row.constant == row.text, row.name);
        }
        for (ValueConstant const & row : NUMBER_CONSTANTS) {
            FieldValue const * const value = *row.constant;
            expect(value != nullptr && value->getRefCount() == 0x7fffffff &&
                       value->intValue() == row.number,
                   row.name);
        }
        FieldValue const * const text = FieldValue::EMPTY_STRING_VALUE;
        expect(text != nullptr && text->getRefCount() == 0x7fffffff && text->asString().IsEmpty(),
               "EMPTY_STRING_VALUE");
        for (bool const value : {false, true}) {
            CString const & word = StringUtil::toString(value);
            expect(word.GetString() != nullptr && word == (value ? "true" : "false"), "toString");
        }
        KestrinContainer const * const container = KestrinContainer::instance();
        expect(container != nullptr && container->getKestrin() == nullptr, "container");
        if (faults.empty()) {
            useThem();
        }
    }

private:
    void expect(bool holds, char const * name) {
        ++seen;
        if (!holds) {
            faults.emplace_back(name);
        }
    }

    /// As a table of prepared messages would.
    void useThem() {
        RefCountedPtr<KestrinMessage> const message = MappedMessage::createListMessage(1);
        message->setFieldValue(KestrinConstants::FLDNAME_RAW_BODY, FieldValue::TRUE_VALUE);
        ErrorInfo error;
        error.setUserInfo(ErrorInfo::OrvKey_GlobalErrorHint, FieldValue::TRUE_VALUE);
        expect(message->getFieldValue("__raw__body__") == FieldValue::ONE_NUMBER_VALUE, "message");
        expect(message->header().getMessageTypeId() == "[]", "header");
        expect(error.toString() == "0@System()", "error");
        expect(FieldValue::TRUE_VALUE->getRefCount() == 0x7fffffff, "count");
    }
};

Sight const SIGHT;

}  // namespace

std::vector<std::string> const & faultsAtLoad() { return SIGHT.faults; }

int constantsSeenAtLoad() { return SIGHT.seen; }

}  // namespace tvk::test
