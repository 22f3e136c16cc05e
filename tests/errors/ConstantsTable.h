#pragma once

#include <iterator>

#include "tvk/errors/ErrorInfo.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/values/KestrinMessage.h"

namespace tvk::test {

/// A text constant of the library, by its address: reading it is left to whoever uses the table.
struct TextConstant {
    char const * name;
    CString const * constant;
    char const * text;
};

inline constexpr TextConstant TEXT_CONSTANTS[] = {
    {"MSGTYPE_LIST_MESSAGE", &KestrinMessage::MSGTYPE_LIST_MESSAGE, "[]"},
    {"ComponentName_Unkown", &ErrorInfo::ComponentName_Unkown, "0"},
    {"ComponentName_Global", &ErrorInfo::ComponentName_Global, "31"},
    {"ErrorType_NetworkFailure", &ErrorInfo::ErrorType_NetworkFailure, "0"},
    {"ErrorType_SystemError", &ErrorInfo::ErrorType_SystemError, "1"},
    {"ErrorDomain_System", &ErrorInfo::ErrorDomain_System, "System"},
    {"ErrorDomain_POSIX", &ErrorInfo::ErrorDomain_POSIX, "posix"},
    {"ErrorDomain_UrlLoading", &ErrorInfo::ErrorDomain_UrlLoading, "http"},
    {"ErrorDomain_CURL", &ErrorInfo::ErrorDomain_CURL, "curl"},
    {"ErrorDomain_SSL", &ErrorInfo::ErrorDomain_SSL, "ssl"},
    {"OrvKey_ErrorTypeHint", &ErrorInfo::OrvKey_ErrorTypeHint, "orvane.ErrorTypeHint"},
    {"OrvKey_GlobalErrorHint", &ErrorInfo::OrvKey_GlobalErrorHint, "orvane.GlobalErrorHint"},
    {"OrvKey_CanRetryHint", &ErrorInfo::OrvKey_CanRetryHint, "orvane.Kestrin.CanRetryHint"},
    {"OrvKey_ErrorReply", &ErrorInfo::OrvKey_ErrorReply, "orvane.Kestrin.ErrorReply"},
    {"ErrorDomain_Kestrin", &KestrinConstants::ErrorDomain_Kestrin, "orvane.ErrorDomain.Kestrin"},
    {"WILDCARD", &KestrinConstants::WILDCARD, "*"},
    {"EMPTY_STRING", &KestrinConstants::EMPTY_STRING, ""},
    {"FIELD_PATH_DELIMITER", &KestrinConstants::FIELD_PATH_DELIMITER, "/"},
    {"XML_ELEMENT_PATH_DELIMITER", &KestrinConstants::XML_ELEMENT_PATH_DELIMITER, "/"},
    {"OPENING_SQUARE_BRACKET", &KestrinConstants::OPENING_SQUARE_BRACKET, "["},
    {"CLOSING_SQUARE_BRACKET", &KestrinConstants::CLOSING_SQUARE_BRACKET, "]"},
    {"FLDNAME_RAW_BODY", &KestrinConstants::FLDNAME_RAW_BODY, "__raw__body__"},
    {"FLDNAME_EXTRA_DATA", &KestrinConstants::FLDNAME_EXTRA_DATA, "__extra_raw__body__"},
};

/// A number constant, by the address of the pointer that names it.
struct ValueConstant {
    char const * name;
    FieldValue * const * constant;
    int number;
};

inline constexpr ValueConstant NUMBER_CONSTANTS[] = {
    {"ZERO_NUMBER_VALUE", &FieldValue::ZERO_NUMBER_VALUE, 0},
    {"ONE_NUMBER_VALUE", &FieldValue::ONE_NUMBER_VALUE, 1},
    {"TWO_NUMBER_VALUE", &FieldValue::TWO_NUMBER_VALUE, 2},
    {"THREE_NUMBER_VALUE", &FieldValue::THREE_NUMBER_VALUE, 3},
    {"FOUR_NUMBER_VALUE", &FieldValue::FOUR_NUMBER_VALUE, 4},
    {"FIVE_NUMBER_VALUE", &FieldValue::FIVE_NUMBER_VALUE, 5},
    {"SIX_NUMBER_VALUE", &FieldValue::SIX_NUMBER_VALUE, 6},
    {"SEVEN_NUMBER_VALUE", &FieldValue::SEVEN_NUMBER_VALUE, 7},
    {"EIGHT_NUMBER_VALUE", &FieldValue::EIGHT_NUMBER_VALUE, 8},
    {"NINE_NUMBER_VALUE", &FieldValue::NINE_NUMBER_VALUE, 9},
    {"NEGATIVE_ONE_NUMBER_VALUE", &FieldValue::NEGATIVE_ONE_NUMBER_VALUE, -1},
    {"TRUE_VALUE", &FieldValue::TRUE_VALUE, 1},
    {"FALSE_VALUE", &FieldValue::FALSE_VALUE, 0},
};

}  // namespace tvk::test
