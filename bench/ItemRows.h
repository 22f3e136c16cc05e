#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "bench/Rows.h"

namespace tvk::bench {

/// What a row works on.
template <class Item>
struct ItemList {
    std::vector<Item> items;
    std::size_t bytes;                       ///< of all texts
    std::shared_ptr<void const> owner = {};  ///< of what the items refer to
};

/// Registers the rows of a group, one a peer. A peer agrees with tvk when each result of an item does,
/// seen through `comparable`.
template <class Item, class Result>
void addItemRows(
    std::string const & group, std::vector<Peer<ItemWork<Item, Result>>> const & peers,
    std::function<ItemList<Item>()> makeList,
    std::function<Result(Result)> comparable = [](Result result) { return result; }) {
    auto const list = std::make_shared<Lazy<ItemList<Item>>>(std::move(makeList));
    for (Peer<ItemWork<Item, Result>> const & peer : peers) {
        addRow(group, peer.name, [&, list, comparable]() -> TimedWork {
            std::vector<Item> const & items = list->get().items;
            std::shared_ptr<ItemWork<Item, Result>> const work = peer.make();
            auto const reference = peers.front().make();
            for (Item const & item : items) {
                requireAgreement(comparable(work->resultOf(item)) ==
                                 comparable(reference->resultOf(item)));
            }
            return {{list->get().bytes, items.size()},
                    [list, work, &items] { work->runAll(items); }};
        });
    }
}

}  // namespace tvk::bench
