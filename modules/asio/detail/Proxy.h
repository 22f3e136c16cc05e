#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "modules/asio/TcpOptions.h"
#include "tvk/errors/ErrorInfo.h"

namespace tvk {

/// Where a proxy listens: "host:port", an IPv6 address in brackets.
struct ProxyAddress {
    CString host;  // without brackets
    CString port;  // decimal digits, 1 to 65535

    /// False where the text is none.
    static bool parse(CString const & text, ProxyAddress * address);
};

/// What is said to an HTTP proxy before it passes bytes on to the host and port of the options. It carries
/// nothing itself.
class ProxyTunnel {
public:
    /// A proxy that says more than this before the tunnel stands is not waited for.
    static constexpr std::size_t MAXIMUM_ANSWER = 16384;

    enum class Result { NEEDS_INPUT, OPEN, FAILED };

    explicit ProxyTunnel(TcpOptions const & options);

    /// What to send first; empty where host or user agent hold what no request can carry.
    std::string const & request() const { return request_; }

    /// Takes what the proxy says. Not behind OPEN or FAILED.
    Result add(std::string_view bytes);

    /// Behind OPEN: bytes that came behind the answer, and belong to the tunnel.
    std::string const & rest() const { return answer_; }
    /// Behind FAILED: ERR_HTTPStatusError with the status line, or ERR_FailedToCreateConnection.
    ErrorInfo const & error() const { return error_; }

private:
    Result judge(std::string_view header);
    Result fail(int code, CString const & text);

    std::string request_;
    std::string answer_;
    std::size_t taken_ = 0;  // bytes of the answer so far
    ErrorInfo error_;
};

}  // namespace tvk
