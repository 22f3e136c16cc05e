#pragma once

#include "tvk/platform/CString.h"
#include "tvk/platform/Export.h"

namespace tvk {

/// The codes of the agent's error domain, and shared texts. The gaps between the codes are
/// intended.
///
/// The texts are valid from the library's load until its unload, for any thread.
class TVK_API KestrinConstants {
public:
    static CString const ErrorDomain_Kestrin;
    static constexpr int ErrorDomainCode_Kestrin = 101;

    static constexpr int ERR_FailedToCreateConnection = 1;
    static constexpr int ERR_InvalidMessageSize = 2;
    static constexpr int ERR_HTTPStatusError = 3;
    static constexpr int ERR_XmlParsingError = 4;
    static constexpr int ERR_AuthenticationFailed = 5;
    static constexpr int ERR_UnknownMessage = 6;
    static constexpr int ERR_InvalidMessageData = 7;
    static constexpr int ERR_RequestCanceled = 8;
    static constexpr int ERR_RequestTimeOut = 9;
    static constexpr int ERR_ConnectionClosedByRemotePeer = 10;
    static constexpr int ERR_DuplicatedUserId = 11;
    static constexpr int ERR_HeartbeatFailed = 12;
    static constexpr int ERR_UnexpectedReplyMessage = 13;
    static constexpr int ERR_EncryptionKeyFailed = 14;
    static constexpr int ERR_VersionProcessingTimeout = 15;
    static constexpr int ERR_UnexpectedError = 16;
    static constexpr int ERR_VersionUpRequired = 17;
    static constexpr int ERR_SystemMaintenance = 18;
    static constexpr int ERR_InvalidDataOfEncoding = 19;
    static constexpr int ERR_AuthenticationExpired = 20;
    static constexpr int ERR_RealServiceRetryOut = 21;
    static constexpr int ERR_DecompressionFailed = 22;
    static constexpr int ERR_IgnoredRequestDuringAwakingFromSleep = 23;
    static constexpr int ERR_UnsupportedFunction = 24;
    static constexpr int ERR_ProtocolFailure = 25;
    static constexpr int ERR_SessionError = 26;
    static constexpr int ERR_NetworkIOError = 1000;
    static constexpr int ERR_IdleTooLong = 1001;
    /// Bounds of the range for codes of the customer library; no errors of their own.
    static constexpr int ERR_CustomerLibFirst = 7000;
    static constexpr int ERR_CustomerLibLast = 9999;

    static CString const WILDCARD;
    static CString const EMPTY_STRING;
    static CString const FIELD_PATH_DELIMITER;
    static CString const XML_ELEMENT_PATH_DELIMITER;
    static CString const OPENING_SQUARE_BRACKET;
    static CString const CLOSING_SQUARE_BRACKET;
    // Reserved names of ordinary body fields that hold a message's raw body and extra raw data.
    static CString const FLDNAME_RAW_BODY;
    static CString const FLDNAME_EXTRA_DATA;
};

}  // namespace tvk
