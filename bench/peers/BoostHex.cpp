#include <boost/algorithm/hex.hpp>
#include <boost/version.hpp>

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

void addBoostHex(Peers & peers) {
    addRoomEncoder<BoostHex>(peers.hexEncoders, "boost");
    peers.libraries.push_back(std::string("Boost.Algorithm ") + BOOST_LIB_VERSION);
}

}  // namespace tvk::bench
