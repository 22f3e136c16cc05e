#pragma once

#include <strings.h>

#include <algorithm>
#include <cstddef>
#include <map>
#include <string>
#include <string_view>

#include "tests/support/TextBytes.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/inet/InetUtil.h"

namespace tvk::test {

/// The fields of a cookie, under the names of their attributes; "" is the name, "=" the value. The flag
/// is "" or "true".
using CookieFields = std::map<std::string, std::string>;

/// The error record where reading does not fail: as it was before.
inline constexpr char const * NO_FAILURE = "0@domain of the caller()";

/// What reading a Set-Cookie text gave.
struct ReadCookie {
    CookieFields fields;
    long long position = 0;
    std::string error = NO_FAILURE;  ///< as ErrorInfo::toString shows it

    bool operator==(ReadCookie const &) const = default;
};

/// A failure, as ErrorInfo::toString shows it.
inline std::string setCookieError(std::string const & message) {
    return "-1@" + bytesOf(KestrinConstants::ErrorDomain_Kestrin) +
           "(invalid Set-Cookie: " + message + ")";
}

/// The fields of a cookie that nothing was read into, and no two alike.
inline CookieFields freshCookieFields() {
    return {{"", "name"},         {"=", "value"},         {"Comment", "comment"},
            {"Domain", "domain"}, {"Max-Age", "max age"}, {"expires", "expires"},
            {"Path", "path"},     {"Secure", ""},         {"Version", "version"}};
}

/// Reads into a cookie that has the fields of `before`.
inline ReadCookie readWithLibrary(char const * text, unsigned int length,
                                  CookieFields const & before) {
    CookieInfo cookie;
    cookie.setName(textOf(before.at("")));
    cookie.setValue(textOf(before.at("=")));
    cookie.setComment(textOf(before.at("Comment")));
    cookie.setDomain(textOf(before.at("Domain")));
    cookie.setMaxAge(textOf(before.at("Max-Age")));
    cookie.setExpires(textOf(before.at("expires")));
    cookie.setPath(textOf(before.at("Path")));
    cookie.setSecure(!before.at("Secure").empty());
    cookie.setVersion(textOf(before.at("Version")));

    ErrorInfo error;
    error.setDomain("domain of the caller");
    ReadCookie result;
    result.position = InetUtil::parseSetCookie(text, length, &cookie, &error);
    result.error = bytesOf(error.toString());
    result.fields = {
        {"", bytesOf(cookie.getName())},           {"=", bytesOf(cookie.getValue())},
        {"Comment", bytesOf(cookie.getComment())}, {"Domain", bytesOf(cookie.getDomain())},
        {"Max-Age", bytesOf(cookie.getMaxAge())},  {"expires", bytesOf(cookie.getExpires())},
        {"Path", bytesOf(cookie.getPath())},       {"Secure", cookie.isSecure() ? "true" : ""},
        {"Version", bytesOf(cookie.getVersion())}};
    return result;
}

/// The slow model of InetUtil::parseSetCookie: searches in strings. `text` is all up to the NUL that
/// ends it.
class ReferenceCookieReader {
public:
    ReferenceCookieReader(std::string_view text, std::size_t length, CookieFields const & before)
        : text_(text), input_(text.substr(0, length)), result_{before} {}

    ReadCookie read() {
        readAll();
        result_.position = static_cast<long long>(at_);
        return result_;
    }

private:
    static constexpr char const * SPACE = " \t\n\v\f\r";
    static constexpr char const * SPACE_AND_SEMICOLON = " \t\n\v\f\r;";
    static constexpr char const * SPACE_SEMICOLON_AND_COMMA = " \t\n\v\f\r;,";
    static constexpr char const * LETTERS =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_";

    bool isAtEnd() const { return at_ >= input_.size(); }
    bool isAt(char character) const { return !isAtEnd() && input_[at_] == character; }

    /// All that stands here and consists of these characters.
    std::string take(char const * characters) {
        std::size_t const start = at_;
        at_ = std::max(at_, std::min(input_.find_first_not_of(characters, at_), input_.size()));
        return text_.substr(start, at_ - start);
    }

    bool takeWord(std::string const & word) {
        if (strncasecmp(text_.c_str() + at_, word.c_str(), word.size()) != 0) {
            return false;
        }
        at_ += word.size();
        return true;
    }

    std::string takeValue() {
        if (isAtEnd()) {
            return "";
        }
        bool const isQuoted = isAt('"');
        std::size_t const mark = isQuoted ? input_.find('"', at_ + 1) : input_.find(';', at_);
        std::size_t const end =
            mark == std::string::npos ? input_.size() : mark + (isQuoted ? 1 : 0);
        std::string const value = input_.substr(at_, end - at_);
        at_ = end;
        return value;
    }

    void fail(std::string const & message) { result_.error = setCookieError(message); }

    void readAll() {
        take(SPACE_SEMICOLON_AND_COMMA);
        if (takeWord("set-cookie:")) {
            take(SPACE);
        }
        std::string const name = take(LETTERS);
        if (name.empty()) {
            return fail("no cookie name");
        }
        result_.fields[""] = name;
        take(SPACE);
        if (isAt(',')) {
            ++at_;
            return;
        }
        if (isAt('=')) {
            ++at_;
            take(SPACE);
            if (isAt(',')) {
                ++at_;
                return;
            }
            result_.fields["="] = takeValue();
        }
        readAttributes();
    }

    void readAttributes() {
        while (!isAtEnd()) {
            take(SPACE_AND_SEMICOLON);
            if (takeWord("secure")) {
                result_.fields["Secure"] = "true";
                continue;
            }
            std::string const name = takeAttributeName();
            if (name.empty()) {
                return;
            }
            take(SPACE);
            if (isAtEnd()) {
                result_.fields[name] = "";
                return;
            }
            if (isAt(',')) {
                return;
            }
            if (!isAt('=')) {
                return fail("'=' expected after '" + name + "'...");
            }
            ++at_;
            result_.fields[name] = takeValue();
        }
    }

    std::string takeAttributeName() {
        for (char const * name : {"Comment", "Domain", "Max-Age", "expires", "Path", "Version"}) {
            if (takeWord(name)) {
                return name;
            }
        }
        return "";
    }

    std::string text_;
    std::string input_;
    ReadCookie result_;
    std::size_t at_ = 0;
};

inline ReadCookie readWithModel(std::string_view text, std::size_t length,
                                CookieFields const & before) {
    return ReferenceCookieReader(text, length, before).read();
}

}  // namespace tvk::test
