#include "tvk/errors/KestrinConstants.h"

#include <gtest/gtest.h>

#include "tests/errors/ConstantsTable.h"
#include "tests/support/PrintCString.h"
#include "tvk/errors/ErrorInfo.h"

namespace tvk {
namespace {

struct Code {
    char const * name;
    int code;
    int value;
};

#define CODE(name, value) \
    { #name, KestrinConstants::name, value }

// The order of the values; the gaps are intended.
constexpr Code CODES[] = {
    CODE(ERR_FailedToCreateConnection, 1),
    CODE(ERR_InvalidMessageSize, 2),
    CODE(ERR_HTTPStatusError, 3),
    CODE(ERR_XmlParsingError, 4),
    CODE(ERR_AuthenticationFailed, 5),
    CODE(ERR_UnknownMessage, 6),
    CODE(ERR_InvalidMessageData, 7),
    CODE(ERR_RequestCanceled, 8),
    CODE(ERR_RequestTimeOut, 9),
    CODE(ERR_ConnectionClosedByRemotePeer, 10),
    CODE(ERR_DuplicatedUserId, 11),
    CODE(ERR_HeartbeatFailed, 12),
    CODE(ERR_UnexpectedReplyMessage, 13),
    CODE(ERR_EncryptionKeyFailed, 14),
    CODE(ERR_VersionProcessingTimeout, 15),
    CODE(ERR_UnexpectedError, 16),
    CODE(ERR_VersionUpRequired, 17),
    CODE(ERR_SystemMaintenance, 18),
    CODE(ERR_InvalidDataOfEncoding, 19),
    CODE(ERR_AuthenticationExpired, 20),
    CODE(ERR_RealServiceRetryOut, 21),
    CODE(ERR_DecompressionFailed, 22),
    CODE(ERR_IgnoredRequestDuringAwakingFromSleep, 23),
    CODE(ERR_UnsupportedFunction, 24),
    CODE(ERR_ProtocolFailure, 25),
    CODE(ERR_SessionError, 26),
    CODE(ERR_NetworkIOError, 1000),
    CODE(ERR_IdleTooLong, 1001),
    CODE(ERR_CustomerLibFirst, 7000),
    CODE(ERR_CustomerLibLast, 9999),
    CODE(ErrorDomainCode_Kestrin, 101),
};

#undef CODE

TEST(KestrinConstants, CodesHaveTheirValues) {
    for (Code const & row : CODES) {
        EXPECT_EQ(row.code, row.value) << row.name;
    }
}

TEST(KestrinConstants, CodesOfRecordsHaveTheirValues) {
    EXPECT_EQ(ErrorInfo::ERR_OK, 0);
    EXPECT_EQ(ErrorInfo::ERR_UNKNOWN, -1);
    EXPECT_EQ(ErrorInfo::ComponentCode_Unknown, 0);
    EXPECT_EQ(ErrorInfo::ComponentCode_Global, 31);
    EXPECT_EQ(ErrorInfo::ErrorDomainCode_System, 1);
    EXPECT_EQ(ErrorInfo::ErrorDomainCode_POSIX, 2);
    EXPECT_EQ(ErrorInfo::ErrorDomainCode_UrlLoading, 3);
    EXPECT_EQ(ErrorInfo::ErrorDomainCode_CURL, 4);
    EXPECT_EQ(ErrorInfo::ErrorDomainCode_SSL, 5);
}

TEST(KestrinConstants, DeliberateTwoCodesTellAnUnsupportedFunction) {
    EXPECT_EQ(ErrorInfo::ERR_UNSOPPORTED_FUNCTION, -2);
    EXPECT_EQ(KestrinConstants::ERR_UnsupportedFunction, 24);
}

TEST(KestrinConstants, TextsReadAsTheyShould) {
    for (test::TextConstant const & row : test::TEXT_CONSTANTS) {
        EXPECT_EQ(*row.constant, row.text) << row.name;
    }
}

TEST(KestrinConstants, CodesMayBeTakenByReference) {
    int const & code = KestrinConstants::ERR_SessionError;
    int const & unknown = ErrorInfo::ERR_UNKNOWN;
    EXPECT_EQ(code, 26);
    EXPECT_EQ(unknown, -1);
}

}  // namespace
}  // namespace tvk
