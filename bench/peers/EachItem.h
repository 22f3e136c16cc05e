#pragma once

#include <type_traits>

#include "bench/Work.h"

namespace tvk::bench {

/// A work whose results `Function` makes, one a call. A result may be a view of what the function
/// keeps; it holds until the next call.
template <class Function, class Item, class Result>
class EachItem : public ItemWork<Item, Result> {
public:
    Result resultOf(Item const & item) override {
        auto const & result = function_(item);
        if constexpr (std::is_constructible_v<Result, decltype(result)>) {
            return Result(result);
        } else {
            return Result(result.begin(), result.end());
        }
    }
    void runAll(std::span<Item const> items) override {
        for (Item const & item : items) {
            keep(function_(item));
        }
    }

private:
    Function function_;
};

template <class Function, class Item, class Result>
void addFunction(std::vector<Peer<ItemWork<Item, Result>>> & peers, std::string name) {
    addPeer<EachItem<Function, Item, Result>>(peers, std::move(name));
}

}  // namespace tvk::bench
