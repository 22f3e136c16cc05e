#include <nettle/base16.h>
#include <nettle/base64.h>
#include <nettle/version.h>

#include "bench/peers/Peers.h"
#include "bench/peers/RoomEncoder.h"

namespace tvk::bench {

namespace {

struct NettleBase64 : Base64Form {
    static void write(std::string_view bytes, char * room) {
        base64_encode_raw(room, bytes.size(), unsignedBytes(bytes));
    }
};

struct NettleHex : HexForm {
    static void write(std::string_view bytes, char * room) {
        base16_encode_update(room, bytes.size(), unsignedBytes(bytes));
    }
};

}  // namespace

void addNettle(Peers & peers) {
    addRoomEncoder<NettleBase64>(peers.base64Encoders, "nettle");
    addRoomEncoder<NettleHex>(peers.hexEncoders, "nettle");
    peers.libraries.push_back("nettle " + std::to_string(NETTLE_VERSION_MAJOR) + '.' +
                              std::to_string(NETTLE_VERSION_MINOR));
}

}  // namespace tvk::bench
