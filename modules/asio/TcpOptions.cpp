#include "modules/asio/TcpOptions.h"

#include "tvk/errors/ErrorInfo.h"
#include "tvk/errors/KestrinConstants.h"

namespace tvk {

namespace {

/// The smallest frame, its length included.
constexpr unsigned int MINIMUM_FRAME_SIZE = 24;

char const * whatIsWrong(TcpOptions const & options) {
    if (options.host.IsEmpty() || options.port == 0) {
        return "host and port are needed";
    }
    if (options.connectMilliSec <= 0 || options.requestMilliSec <= 0 ||
        options.heartbeatMilliSec <= 0) {
        return "a time-out is not above 0";
    }
    if (options.backOffFirstMilliSec < 0 ||
        options.backOffMaximumMilliSec < options.backOffFirstMilliSec) {
        return "the waits before an attempt are not in order";
    }
    // Asked for this way, so that a NaN is wrong too.
    if (!(options.backOffFactor >= 1.0) || !(options.jitter >= 0.0 && options.jitter <= 1.0)) {
        return "the factor is below 1, or the jitter is not from 0 to 1";
    }
    if (options.maximumAttempts < 0) {
        return "the number of attempts is below 0";
    }
    if (options.maximumFrameSize < MINIMUM_FRAME_SIZE || options.maximumQueuedBytes == 0 ||
        options.maximumReadAhead == 0 || options.maximumOpenRequests == 0) {
        return "a bound leaves no room";
    }
    return nullptr;
}

}  // namespace

TcpOptions::TcpOptions() = default;
TcpOptions::TcpOptions(TcpOptions const &) = default;
TcpOptions & TcpOptions::operator=(TcpOptions const &) = default;
TcpOptions::~TcpOptions() = default;

bool TcpOptions::check(ErrorInfo * error) const {
    char const * const text = whatIsWrong(*this);
    if (text != nullptr && error != nullptr) {
        error->setDomain(KestrinConstants::ErrorDomain_Kestrin);
        error->setErrorCode(KestrinConstants::ERR_FailedToCreateConnection);
        error->setErrorMessage(text);
    }
    return text == nullptr;
}

}  // namespace tvk
