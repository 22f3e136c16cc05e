#include <boost/algorithm/hex.hpp>

#include "bench/peers/Peers.h"
#include "bench/peers/RoomEncoder.h"

namespace tvk::bench {

namespace {

struct BoostHex : HexForm {
    static void write(std::string_view bytes, char * room) {
        boost::algorithm::hex(bytes.begin(), bytes.end(), room);
    }
};

}  // namespace

void addBoostHex(Peers & peers) { addRoomEncoder<BoostHex>(peers.hexEncoders, "boost"); }

}  // namespace tvk::bench
