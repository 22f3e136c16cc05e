#pragma once

#include "bench/Work.h"

namespace tvk::bench {

struct GivenHash {
    std::size_t operator()(TextKey const & key) const { return key.hash; }
};

template <class TextHash>
struct OwnHash {
    std::size_t operator()(TextKey const & key) const { return TextHash()(key.text); }
};

struct SameText {
    bool operator()(TextKey const & left, TextKey const & right) const {
        return left.text == right.text;
    }
};

/// Interning with an ordinary map from texts to counted pointers.
template <class Map>
class MapInterner : public Interner {
public:
    void insert(TextKey const & key, ValuePtr const & value) override { map_.emplace(key, value); }
    std::size_t findAll(std::span<TextKey const> keys) override {
        std::size_t found = 0;
        for (TextKey const & key : keys) {
            found += find(key) ? 1 : 0;
        }
        return found;
    }

private:
    /// A counted result, as the cache gives it.
    ValuePtr find(TextKey const & key) const {
        auto const place = map_.find(key);
        return place == map_.end() ? ValuePtr() : place->second;
    }

    Map map_;
};

}  // namespace tvk::bench
