#pragma once

#include <string>

#include "tests/support/Recorded.h"
#include "tvk/agent/AbstractKestrin.h"
#include "tvk/agent/KestrinContainer.h"
#include "tvk/definitions/MessageDefManager.h"
#include "tvk/definitions/RecordTypeDefImpl.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/json/SimpleObjectCache.h"
#include "tvk/values/FieldValue.h"
#include "tvk/values/RecordData.h"
#include "tvk/values/RefCountedPtr.h"

/// What the module offers to the test program.
#define TVK_MODULE_API __attribute__((visibility("default")))

namespace tvk::test {

/// What the module's static initialiser saw of the library's constants.
struct SeenAtLoad {
    FieldValue * trueValue;
    int trueCount;
    CString wildcard;
    CString systemDomain;
    KestrinContainer * container;
};

TVK_MODULE_API SeenAtLoad const & seenAtLoad();

TVK_MODULE_API void throwParsingError(char const * message);
/// An ErrorInfo of code 24 with that message, and a cause of code 9.
TVK_MODULE_API void throwErrorInfo(char const * message);

/// The text of what the library throws when the module scans `json`; empty if it throws nothing.
TVK_MODULE_API std::string messageOfScanning(std::string const & json);
/// The text that the library throws for the list of a value that has none.
TVK_MODULE_API std::string messageOfAskingForAList(FieldValue const & value);

/// The text of what the library throws when the module adds the field; empty if it throws nothing.
TVK_MODULE_API std::string messageOfAddingAField(RecordTypeDefImpl & record, char const * name);
/// A registry that the module has filled with the message type "Quote" of the identifier "N101", whose one
/// field "price" is of a type of a class of the module, "Price".
TVK_MODULE_API RefCountedPtr<MessageDefManager const> makeModuleRegistry();

/// A record of a class of the module. Counts itself in `*alive`.
TVK_MODULE_API RefCountedPtr<RecordData> makeModuleRecord(int * alive);
/// True if the record is one of the module's own class.
TVK_MODULE_API bool isModuleRecord(FieldValue const & value);

/// A concrete agent of the module: writes the calls that reach it into `log` and counts itself in
/// `*alive`. Both must outlive it.
TVK_MODULE_API RefCountedPtr<AbstractKestrin> makeModuleAgent(Log & log, int * alive);

/// A converter of the module: strings become upper case, and numbers are refused with a
/// JsonUtil::XParsingError "no numbers here".
TVK_MODULE_API SimpleObjectCache::RawDataToObjectConverter * moduleConverter();

}  // namespace tvk::test
