#include <unordered_map>

#include "bench/peers/MapInterner.h"
#include "bench/peers/Peers.h"

namespace tvk::bench {

namespace {

template <class Hash>
using StdMap = MapInterner<std::unordered_map<TextKey, ValuePtr, Hash, SameText>>;

}  // namespace

void addStdUnorderedMap(Peers & peers) {
    addPeer<StdMap<GivenHash>>(peers.interners, "unordered_map");
    addPeer<StdMap<OwnHash<std::hash<std::string_view>>>>(peers.hashingInterners, "unordered_map");
}

}  // namespace tvk::bench
