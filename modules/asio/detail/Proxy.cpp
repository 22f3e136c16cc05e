#include "modules/asio/detail/Proxy.h"

#include <algorithm>

#include "modules/asio/detail/Errors.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/platform/CodePage.h"
#include "tvk/platform/Numbers.h"
#include "tvk/text/StringUtil.h"

namespace tvk {

namespace {

/// In an error's text; a proxy may send lines of any length.
constexpr std::size_t LONGEST_LINE_SHOWN = 200;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool isPrintable(char c) { return c >= ' ' && c <= '~'; }

std::string utf8(CString const & text) {
    CString const converted =
        platform::ansiToUtf8(text.GetString(), static_cast<unsigned int>(text.GetLength()));
    return {converted.GetString(), static_cast<std::size_t>(converted.GetLength())};
}

/// A host or a user agent must not end its line.
bool fitsInLine(std::string const & text) {
    return std::none_of(text.begin(), text.end(), [](char c) {
        auto const byte = static_cast<unsigned char>(c);
        return byte < 0x20 || byte == 0x7f;
    });
}

std::string authority(TcpOptions const & options) {
    std::string const host = utf8(options.host);
    bool const bare = host.find(':') != std::string::npos && host.front() != '[';
    return (bare ? "[" + host + "]" : host) + ":" + std::to_string(options.port);
}

std::string credentials(InetClientInfo const & inet) {
    std::string const pair = utf8(inet.getProxyUser()) + ":" + utf8(inet.getProxyPassword());
    return StringUtil::base64Encode(pair.data(), static_cast<unsigned int>(pair.size()), false)
        .GetString();
}

std::string requestTo(TcpOptions const & options) {
    std::string const target = authority(options);
    std::string const agent = utf8(options.inet.getUserAgent());
    if (!fitsInLine(target) || target.find(' ') != std::string::npos || !fitsInLine(agent)) {
        return {};
    }
    std::string text = "CONNECT " + target + " HTTP/1.1\r\nHost: " + target + "\r\n";
    if (!agent.empty()) {
        text += "User-Agent: " + agent + "\r\n";
    }
    if (!options.inet.getProxyUser().IsEmpty()) {
        text += "Proxy-Authorization: Basic " + credentials(options.inet) + "\r\n";
    }
    return text + "\r\n";
}

/// The bytes up to and with the empty line, 0 where there is none yet.
std::size_t headerSize(std::string const & text) {
    std::size_t const strict = text.find("\r\n\r\n");
    std::size_t const loose = text.find("\n\n");
    if (strict == std::string::npos && loose == std::string::npos) {
        return 0;
    }
    return strict < loose ? strict + 4 : loose + 2;
}

/// The first line as an error shows it.
CString shown(std::string_view header) {
    std::string line(header.substr(0, std::min(header.find_first_of("\r\n"), LONGEST_LINE_SHOWN)));
    std::replace_if(
        line.begin(), line.end(), [](char c) { return !isPrintable(c); }, '?');
    return line.c_str();
}

/// The three digits behind "HTTP/1.x ", or 0 where there is no such line.
int statusOf(std::string_view header) {
    constexpr std::string_view START = "HTTP/1.";
    constexpr std::size_t DIGITS = START.size() + 2;
    if (header.substr(0, START.size()) != START || header.size() < DIGITS + 4 ||
        !isDigit(header[START.size()]) || header[DIGITS - 1] != ' ' ||
        !std::all_of(header.begin() + DIGITS, header.begin() + DIGITS + 3, isDigit) ||
        isDigit(header[DIGITS + 3])) {
        return 0;
    }
    return platform::parseInt32(std::string(header.substr(DIGITS, 3)).c_str());
}

}  // namespace

bool ProxyAddress::parse(CString const & text, ProxyAddress * address) {
    int const colon = text.ReverseFind(':');
    if (colon < 1) {
        return false;
    }
    CString host = text.Left(colon);
    if (host.GetAt(0) == '[' && host.GetAt(host.GetLength() - 1) == ']') {
        host = host.Mid(1, host.GetLength() - 2);
    } else if (host.Find(':') >= 0) {
        return false;
    }
    std::string const port = text.Mid(colon + 1, text.GetLength()).GetString();
    bool const digits = std::all_of(port.begin(), port.end(), isDigit);
    int const number = platform::parseInt32(port.c_str());
    if (host.IsEmpty() || !digits || number < 1 || number > 65535) {
        return false;
    }
    address->host = host;
    address->port = port.c_str();
    return true;
}

ProxyTunnel::ProxyTunnel(TcpOptions const & options) : request_(requestTo(options)) {}

ProxyTunnel::Result ProxyTunnel::add(std::string_view bytes) {
    answer_ += bytes;
    for (;;) {
        std::size_t const size = headerSize(answer_);
        if (taken_ + (size > 0 ? size : answer_.size()) > MAXIMUM_ANSWER) {
            return fail(KestrinConstants::ERR_FailedToCreateConnection,
                        "the proxy's answer does not come to an end");
        }
        if (size == 0) {
            return Result::NEEDS_INPUT;
        }
        std::string const header = answer_.substr(0, size);
        answer_.erase(0, size);
        taken_ += size;
        Result const result = judge(header);
        if (result != Result::NEEDS_INPUT) {
            return result;
        }
    }
}

ProxyTunnel::Result ProxyTunnel::judge(std::string_view header) {
    int const status = statusOf(header);
    if (status < 100) {
        return fail(KestrinConstants::ERR_FailedToCreateConnection,
                    "the proxy's answer is not HTTP: " + shown(header));
    }
    if (status < 200) {
        return Result::NEEDS_INPUT;  // the answer proper follows
    }
    return status < 300 ? Result::OPEN : fail(KestrinConstants::ERR_HTTPStatusError, shown(header));
}

ProxyTunnel::Result ProxyTunnel::fail(int code, CString const & text) {
    error_ = networkFailure(code, text);
    return Result::FAILED;
}

}  // namespace tvk
