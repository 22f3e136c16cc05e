// Every constant of the library that is built at load time, and the container, in the order in which
// they are built. They come before all other static initialisers of the library, so that those may use
// them.

#include <new>

#include "tvk/agent/KestrinContainer.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/platform/LoadOrder.h"
#include "tvk/text/StringUtil.h"
#include "tvk/values/KestrinMessage.h"
#include "tvk/values/NumberData.h"
#include "tvk/values/StringData.h"

TVK_LOAD_FIRST

namespace tvk {

constinit FieldValue * FieldValue::ZERO_NUMBER_VALUE = nullptr;
constinit FieldValue * FieldValue::ONE_NUMBER_VALUE = nullptr;
constinit FieldValue * FieldValue::TWO_NUMBER_VALUE = nullptr;
constinit FieldValue * FieldValue::THREE_NUMBER_VALUE = nullptr;
constinit FieldValue * FieldValue::FOUR_NUMBER_VALUE = nullptr;
constinit FieldValue * FieldValue::FIVE_NUMBER_VALUE = nullptr;
constinit FieldValue * FieldValue::SIX_NUMBER_VALUE = nullptr;
constinit FieldValue * FieldValue::SEVEN_NUMBER_VALUE = nullptr;
constinit FieldValue * FieldValue::EIGHT_NUMBER_VALUE = nullptr;
constinit FieldValue * FieldValue::NINE_NUMBER_VALUE = nullptr;
constinit FieldValue * FieldValue::NEGATIVE_ONE_NUMBER_VALUE = nullptr;
constinit FieldValue * FieldValue::EMPTY_STRING_VALUE = nullptr;
constinit FieldValue * FieldValue::TRUE_VALUE = nullptr;
constinit FieldValue * FieldValue::FALSE_VALUE = nullptr;

namespace {

/// Makes the value objects; they stay until the process ends.
struct ValueConstants {
    ValueConstants() {
        FieldValue::ZERO_NUMBER_VALUE = new NumberData(0);
        FieldValue::ONE_NUMBER_VALUE = new NumberData(1);
        FieldValue::TWO_NUMBER_VALUE = new NumberData(2);
        FieldValue::THREE_NUMBER_VALUE = new NumberData(3);
        FieldValue::FOUR_NUMBER_VALUE = new NumberData(4);
        FieldValue::FIVE_NUMBER_VALUE = new NumberData(5);
        FieldValue::SIX_NUMBER_VALUE = new NumberData(6);
        FieldValue::SEVEN_NUMBER_VALUE = new NumberData(7);
        FieldValue::EIGHT_NUMBER_VALUE = new NumberData(8);
        FieldValue::NINE_NUMBER_VALUE = new NumberData(9);
        FieldValue::NEGATIVE_ONE_NUMBER_VALUE = new NumberData(-1);
        FieldValue::EMPTY_STRING_VALUE = new StringData;
        FieldValue::TRUE_VALUE = FieldValue::ONE_NUMBER_VALUE;
        FieldValue::FALSE_VALUE = FieldValue::ZERO_NUMBER_VALUE;
    }
};

TVK_LOADED_FIRST ValueConstants const VALUE_CONSTANTS;

/// Holds a constant for good: pinned, its count no longer moves, and the end of the holder at the
/// process's exit leaves it in place.
class ConstantHolder {
public:
    explicit ConstantHolder(FieldValue * value) : value_(value) {
        if (value != nullptr) {
            value->setConstantRefCount();
        }
    }

private:
    RefCountedPtr<FieldValue> value_;
};

struct ConstantHolders {
    ConstantHolder held[12] = {
        ConstantHolder(FieldValue::ZERO_NUMBER_VALUE),
        ConstantHolder(FieldValue::ONE_NUMBER_VALUE),
        ConstantHolder(FieldValue::TWO_NUMBER_VALUE),
        ConstantHolder(FieldValue::THREE_NUMBER_VALUE),
        ConstantHolder(FieldValue::FOUR_NUMBER_VALUE),
        ConstantHolder(FieldValue::FIVE_NUMBER_VALUE),
        ConstantHolder(FieldValue::SIX_NUMBER_VALUE),
        ConstantHolder(FieldValue::SEVEN_NUMBER_VALUE),
        ConstantHolder(FieldValue::EIGHT_NUMBER_VALUE),
        ConstantHolder(FieldValue::NINE_NUMBER_VALUE),
        ConstantHolder(FieldValue::NEGATIVE_ONE_NUMBER_VALUE),
        ConstantHolder(FieldValue::EMPTY_STRING_VALUE),
    };
};

TVK_LOADED_FIRST ConstantHolders const CONSTANT_HOLDERS;

}  // namespace

TVK_LOADED_FIRST CString const KestrinMessage::MSGTYPE_LIST_MESSAGE = "[]";

TVK_LOADED_FIRST CString const ErrorInfo::ComponentName_Unkown = "0";
TVK_LOADED_FIRST CString const ErrorInfo::ComponentName_Global = "31";
TVK_LOADED_FIRST CString const ErrorInfo::ErrorType_NetworkFailure = "0";
TVK_LOADED_FIRST CString const ErrorInfo::ErrorType_SystemError = "1";
TVK_LOADED_FIRST CString const ErrorInfo::ErrorDomain_System = "System";
TVK_LOADED_FIRST CString const ErrorInfo::ErrorDomain_POSIX = "posix";
TVK_LOADED_FIRST CString const ErrorInfo::ErrorDomain_UrlLoading = "http";
TVK_LOADED_FIRST CString const ErrorInfo::ErrorDomain_CURL = "curl";
TVK_LOADED_FIRST CString const ErrorInfo::ErrorDomain_SSL = "ssl";
TVK_LOADED_FIRST CString const ErrorInfo::OrvKey_ErrorTypeHint = "orvane.ErrorTypeHint";
TVK_LOADED_FIRST CString const ErrorInfo::OrvKey_GlobalErrorHint = "orvane.GlobalErrorHint";
TVK_LOADED_FIRST CString const ErrorInfo::OrvKey_CanRetryHint = "orvane.Kestrin.CanRetryHint";
TVK_LOADED_FIRST CString const ErrorInfo::OrvKey_ErrorReply = "orvane.Kestrin.ErrorReply";

TVK_LOADED_FIRST CString const KestrinConstants::ErrorDomain_Kestrin = "orvane.ErrorDomain.Kestrin";
TVK_LOADED_FIRST CString const KestrinConstants::WILDCARD = "*";
TVK_LOADED_FIRST CString const KestrinConstants::EMPTY_STRING = "";
TVK_LOADED_FIRST CString const KestrinConstants::FIELD_PATH_DELIMITER = "/";
TVK_LOADED_FIRST CString const KestrinConstants::XML_ELEMENT_PATH_DELIMITER = "/";
TVK_LOADED_FIRST CString const KestrinConstants::OPENING_SQUARE_BRACKET = "[";
TVK_LOADED_FIRST CString const KestrinConstants::CLOSING_SQUARE_BRACKET = "]";
TVK_LOADED_FIRST CString const KestrinConstants::FLDNAME_RAW_BODY = "__raw__body__";
TVK_LOADED_FIRST CString const KestrinConstants::FLDNAME_EXTRA_DATA = "__extra_raw__body__";

TVK_LOADED_FIRST CString const StringUtil::TRUE_TEXT = "true";
TVK_LOADED_FIRST CString const StringUtil::FALSE_TEXT = "false";

constinit KestrinContainer * KestrinContainer::_instance = nullptr;

/// No holder: what the application does not clean up stays, since its modules may be unloaded before
/// the process ends.
struct KestrinContainer::AtLoad {
    AtLoad() { _instance = new (std::nothrow) KestrinContainer; }
};

TVK_LOADED_FIRST KestrinContainer::AtLoad const KestrinContainer::AT_LOAD;

}  // namespace tvk
