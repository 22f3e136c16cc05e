#pragma once

#include "tvk/platform/Export.h"
#include "tvk/platform/SocketAddress.h"

namespace tvk {

/// An IPv4 address and a port, in the structure that socket calls take. A plain value; nothing is
/// opened with it.
///
///     InternetAddress server;
///     int const error = server.resolveTo("quotes.example.com", 8443);
///
/// Content: the family is AF_INET, unless a structure brought another one, and `sin_zero` is zero.
///          A port is cut to its low 16 bits.
/// Threads: an object belongs to one thread at a time. Resolving a name may block.
/// Failure: a socket error number from resolveTo; the constructors report none.
class TVK_API InternetAddress {
public:
    /// Port 0 of any address.
    InternetAddress();
    /// As resolveTo; the address is 0 where that fails. Call resolveTo to know.
    InternetAddress(char const * host, int port);
    /// The port at any address: "*".
    InternetAddress(int port);
    /// Family, port and address as they are.
    InternetAddress(sockaddr_in const & address);

    /// Takes over the port, and the address of `host`: 0 for exactly "*"; else a number as inet_addr
    /// reads it, with its short, octal and hexadecimal forms; else the first address that the name
    /// service gives. Returns 0.
    ///
    /// On failure the result is a socket error number, where the system has none for host names 11001
    /// (no such host) to 11004; a null host is one that there is not. The address is unchanged then.
    ///
    /// Deliberate: family and port are set even so; a caller who tries another host relies on it.
    /// Deliberate: 255.255.255.255 goes to the name service, as inet_addr has the same number for a
    /// text that is none; callers see the failure of those systems that have no such host.
    int resolveTo(char const * host, int port);

    int getPort() const;  ///< 0 to 65535
    /// In network byte order, as stored.
    unsigned long getNumericAddress() const { return address_.sin_addr.s_addr; }
    sockaddr_in const & sockAddr() const { return address_; }

    /// Address and port alone decide, not the family.
    bool operator==(InternetAddress const & other) const;
    bool operator!=(InternetAddress const & other) const { return !(*this == other); }

private:
    sockaddr_in address_{};
};

}  // namespace tvk
