#include <boost/container_hash/hash.hpp>
#include <boost/unordered/unordered_flat_map.hpp>
#include <boost/version.hpp>

#include "bench/peers/MapInterner.h"
#include "bench/peers/Peers.h"

namespace tvk::bench {

namespace {

template <class Hash>
using FlatMap = MapInterner<boost::unordered_flat_map<TextKey, ValuePtr, Hash, SameText>>;

}  // namespace

void addBoostFlatMap(Peers & peers) {
    addPeer<FlatMap<GivenHash>>(peers.interners, "boost_flat_map");
    addPeer<FlatMap<OwnHash<boost::hash<std::string_view>>>>(peers.hashingInterners,
                                                             "boost_flat_map");
    peers.libraries.push_back(std::string("Boost.Unordered ") + BOOST_LIB_VERSION);
}

}  // namespace tvk::bench
