#include "modules/asio/TcpOptions.h"

#include <gtest/gtest.h>

#include <limits>

#include "tvk/errors/ErrorInfo.h"
#include "tvk/errors/KestrinConstants.h"

namespace {

using tvk::ErrorInfo;
using tvk::KestrinConstants;
using tvk::TcpOptions;

TcpOptions goodOptions() {
    TcpOptions options;
    options.host = "localhost";
    options.port = 1;
    return options;
}

struct Wrong {
    char const * text;
    void (*spoil)(TcpOptions &);
};

TEST(TcpOptionsTest, NeedNoMoreThanHostAndPort) {
    ErrorInfo error;
    EXPECT_TRUE(goodOptions().check(&error));
    EXPECT_FALSE(error.hasError());
    EXPECT_TRUE(goodOptions().check(nullptr));
    EXPECT_FALSE(goodOptions().plain);
}

TEST(TcpOptionsTest, SayWhatIsWrong) {
    constexpr char TIME[] = "a time-out is not above 0";
    constexpr char WAITS[] = "the waits before an attempt are not in order";
    constexpr char FACTOR[] = "the factor is below 1, or the jitter is not from 0 to 1";
    constexpr char ROOM[] = "a bound leaves no room";
    Wrong const table[] = {
        {"host and port are needed", [](TcpOptions & options) { options.host.Empty(); }},
        {"host and port are needed", [](TcpOptions & options) { options.port = 0; }},
        {TIME, [](TcpOptions & options) { options.connectMilliSec = 0; }},
        {TIME, [](TcpOptions & options) { options.requestMilliSec = -1; }},
        {TIME, [](TcpOptions & options) { options.heartbeatMilliSec = 0; }},
        {WAITS, [](TcpOptions & options) { options.backOffFirstMilliSec = -1; }},
        {WAITS, [](TcpOptions & options) { options.backOffMaximumMilliSec = 249; }},
        {FACTOR, [](TcpOptions & options) { options.backOffFactor = 0.9; }},
        {FACTOR,
         [](TcpOptions & options) {
             options.backOffFactor = std::numeric_limits<double>::quiet_NaN();
         }},
        {FACTOR, [](TcpOptions & options) { options.jitter = -0.1; }},
        {FACTOR, [](TcpOptions & options) { options.jitter = 1.1; }},
        {"the number of attempts is below 0",
         [](TcpOptions & options) { options.maximumAttempts = -1; }},
        {ROOM, [](TcpOptions & options) { options.maximumFrameSize = 23; }},
        {ROOM, [](TcpOptions & options) { options.maximumQueuedBytes = 0; }},
        {ROOM, [](TcpOptions & options) { options.maximumReadAhead = 0; }},
        {ROOM, [](TcpOptions & options) { options.maximumOpenRequests = 0; }},
    };
    for (Wrong const & wrong : table) {
        TcpOptions options = goodOptions();
        wrong.spoil(options);
        ErrorInfo error;
        EXPECT_FALSE(options.check(&error));
        EXPECT_STREQ(error.getErrorMessage(), wrong.text);
        EXPECT_EQ(error.getErrorCode(), KestrinConstants::ERR_FailedToCreateConnection);
        EXPECT_STREQ(error.getDomain(), KestrinConstants::ErrorDomain_Kestrin);
        EXPECT_FALSE(options.check(nullptr));
    }
}

TEST(TcpOptionsTest, TakeTheEdges) {
    TcpOptions options = goodOptions();
    options.backOffFirstMilliSec = 0;
    options.backOffMaximumMilliSec = 0;
    options.backOffFactor = 1.0;
    options.jitter = 1.0;
    options.maximumFrameSize = 24;
    options.maximumQueuedBytes = 1;
    options.maximumReadAhead = 1;
    options.maximumOpenRequests = 1;
    EXPECT_TRUE(options.check(nullptr));
}

}  // namespace
