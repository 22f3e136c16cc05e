#pragma once

#include "tvk/errors/ErrorInfo.h"
#include "tvk/inet/CookieInfo.h"
#include "tvk/platform/CString.h"
#include "tvk/platform/Export.h"

namespace tvk {

/// Takes apart what an HTTP client meets: Set-Cookie headers and URLs.
///
/// Threads: no state; any thread may call any of these.
/// Failure: each operation says its own. std::bad_alloc where memory is out or a part has more than
///          0x7fffffff bytes.
class TVK_API InetUtil {
public:
    InetUtil() = delete;

    /// Reads one cookie of a Set-Cookie header into `cookie` and returns the position in `text` where
    /// the next call can go on. What the text does not mention keeps its value in `cookie`.
    ///
    ///     "Set-Cookie: id=7; Path=/; Secure"   name id, value 7, path /, secure; returns the length
    ///     "a=1; b=2"                           name a, value 1; returns 5, where b stands
    ///
    /// "Set-Cookie:" and leading white space, ";" and "," are stepped over. A name is letters, digits
    /// and "_". A value in quotation marks goes up to and including the second mark, any other one up
    /// to the next ";" with commas and blanks; either ends with the text at the latest. Nothing is
    /// decoded or checked. An attribute that occurs twice keeps the later value. White space is that of
    /// the "C" locale; the names of attributes and "Set-Cookie:" have no case.
    ///
    /// On failure, which `*error` alone tells, it gets the domain ErrorDomain_Kestrin, the code -1 and
    /// a text; `cookie` keeps what was read before, and the result is the position of the failure.
    /// Without a failure `*error` is unchanged.
    ///
    /// Deliberate: attributes match by their first letters, so "Secured" is "Secure" and stops at the
    /// "d", and "Pathname=x" fails at the "n". At anything it does not know reading stops without a
    /// failure: that is how it finds the next cookie.
    /// Deliberate: a "," behind the cookie's name or its "=" is stepped over, one behind the name of
    /// an attribute is not. Neither stores a value.
    /// Deliberate: white space behind "=" is skipped before the cookie's value, and belongs to the
    /// value of an attribute.
    /// Deliberate: those names are looked for behind `length` as well, at most up to a NUL, so a text
    /// cut inside of one is read as if it had been whole, and the result may pass `length`.
    ///
    /// Requires: a NUL stands at `text + length` or behind it; `cookie` and `error` are not null.
    static int parseSetCookie(char const * text, unsigned int length, CookieInfo * cookie,
                              ErrorInfo * error);

    /// Cuts a URL into its parts. Each part may be null: not wanted. A part that the URL does not have
    /// keeps its value, so defaults can be set beforehand. Never fails, and checks nothing.
    ///
    ///     "https://host:8443/a?b"   https, host, 8443, a?b
    ///     "host/"                   host and the empty path; scheme and port unchanged
    ///
    /// The scheme is "http", "https" or "ftp", in small letters and with "://" behind it; what starts
    /// otherwise has none. The port is read as by atoi. The path is all that follows its "/".
    /// The parts may be one object with each other, where the last of scheme, host and path stays, or
    /// with `url`.
    ///
    /// Deliberate: the first ":" behind the scheme ends the host, also one in the path, and what
    /// follows it up to a "/" is the port, 0 if it is no number. So "http://h/a:b" has the host h/a,
    /// the port 0 and no path, and "ssh://h" the host ssh, the port 0 and the path /h.
    static void parseUrl(CString const & url, CString * scheme, CString * host, int * port,
                         CString * path);
};

}  // namespace tvk
