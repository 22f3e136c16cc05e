#include <openssl/crypto.h>
#include <openssl/evp.h>

#include "bench/peers/Peers.h"
#include "bench/peers/RoomEncoder.h"

namespace tvk::bench {

namespace {

struct OpenSslBase64 : Base64Form {
    static void write(std::string_view bytes, char * room) {
        EVP_EncodeBlock(reinterpret_cast<unsigned char *>(room), unsignedBytes(bytes),
                        static_cast<int>(bytes.size()));
    }
};

struct OpenSslHex : HexForm {
    static void write(std::string_view bytes, char * room) {
        OPENSSL_buf2hexstr_ex(room, length(bytes.size()) + 1, nullptr, unsignedBytes(bytes),
                              bytes.size(), '\0');
    }
};

}  // namespace

void addOpenSsl(Peers & peers) {
    addRoomEncoder<OpenSslBase64>(peers.base64Encoders, "openssl");
    addRoomEncoder<OpenSslHex>(peers.hexEncoders, "openssl");
    peers.libraries.push_back(OpenSSL_version(OPENSSL_VERSION));
}

}  // namespace tvk::bench
