#pragma once

#include <cstdint>

/// The name service of the operating system, for IPv4.
namespace tvk::platform {

/// Stores the address of `host`, in network byte order, and returns 0. A dotted number is taken as it
/// is, with all the short, octal and hexadecimal forms of inet_addr; everything else asks the name
/// service, which may block, and gives the first address of its answer.
///
/// Failure: a socket error number, never 0, and `*address` unchanged: 11001 no such host, 11002 try
///          again, 11003 cannot be resolved, 11004 a host without an IPv4 address. Other numbers are
///          the system's own.
/// Threads: any thread may call it. On Windows the application has started the socket layer.
int resolveHost(char const * host, std::uint32_t * address);

}  // namespace tvk::platform
