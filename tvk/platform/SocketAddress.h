#pragma once

/// The system's own `sockaddr_in`, `AF_INET`, `htons` and `ntohs`, at global scope.

#if defined(_WIN32)
#include <winsock2.h>
#else
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#endif
