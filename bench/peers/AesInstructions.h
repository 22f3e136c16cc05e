#pragma once

#include <cstdlib>
#include <string>

/// The AES instructions of the processor. OpenSSL and nettle find them by themselves, unless variables of the
/// environment switch them off; these are read when the program starts.
namespace tvk::bench {

/// Whether this is a run without them, which is for the rows of ciphers alone.
inline bool isWithoutAesInstructions() {
    return std::getenv("OPENSSL_ia32cap") != nullptr &&
           std::getenv("NETTLE_FAT_OVERRIDE") != nullptr;
}

/// The name of a library that uses them where the processor has them.
inline std::string hardwareName(std::string const & name) {
    return isWithoutAesInstructions() ? name : name + "_hardware";
}

}  // namespace tvk::bench
