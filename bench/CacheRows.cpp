#include <algorithm>
#include <random>
#include <unordered_map>

#include "bench/Corpus.h"
#include "bench/Rows.h"
#include "tvk/json/SimpleObjectCache.h"
#include "tvk/values/StringData.h"

namespace tvk::bench {

namespace {

constexpr std::size_t KEYS = 1500;

/// The string values of a corpus in their order, each with its hash. Equal texts share one piece of
/// memory, which is not that of the keys in the tables.
class StringValues {
public:
    explicit StringValues(Corpus const & corpus) {
        forEachString(corpus, [this](std::uint32_t hash, std::string_view text) {
            auto const place = uses_.try_emplace(std::string(text)).first;
            place->second.hash = hash;
            ++place->second.count;
            all_.push_back({place->first, hash});
        });
    }

    std::vector<TextKey> const & all() const { return all_; }

    /// The most frequent ones.
    std::vector<TextKey> frequent() const {
        std::vector<std::pair<std::size_t, TextKey>> counted;
        for (auto const & [text, use] : uses_) {
            counted.push_back({use.count, {text, use.hash}});
        }
        std::sort(counted.begin(), counted.end(), [](auto const & left, auto const & right) {
            return left.first != right.first ? left.first > right.first
                                             : left.second.text < right.second.text;
        });
        std::vector<TextKey> keys;
        for (std::size_t i = 0; i < std::min(KEYS, counted.size()); ++i) {
            keys.push_back(counted[i].second);
        }
        return keys;
    }

private:
    struct Use {
        std::size_t count = 0;
        std::uint32_t hash = 0;
    };

    std::unordered_map<std::string, Use> uses_;
    std::vector<TextKey> all_;
};

/// Those that a fresh cache keeps when they come in this order: a few of them meet taken places
/// alone, and a row of hits has no use for them.
std::vector<TextKey> kept(std::vector<TextKey> keys) {
    for (std::size_t before = 0; before != keys.size();) {
        before = keys.size();
        SimpleObjectCache cache(SimpleObjectCache::defaultRawDataConverter());
        auto const hits = [&cache](TextKey const & key) {
            unsigned long const hitsBefore = cache.fastHitCount();
            cache.cachedString(key.hash, key.text.data(),
                               static_cast<unsigned int>(key.text.size()));
            return cache.fastHitCount() != hitsBefore;
        };
        std::for_each(keys.begin(), keys.end(), hits);
        std::erase_if(keys, [&hits](TextKey const & key) { return !hits(key); });
    }
    return keys;
}

using Values = std::shared_ptr<StringValues const>;

struct LookUps {
    Values values;               ///< holds the texts
    std::vector<TextKey> keys;   ///< what the table holds
    std::vector<TextKey> order;  ///< what is looked up; all hits
};

LookUps inOrderOf(Values const & values) {
    LookUps lookUps{values, kept(values->frequent()), {}};
    std::unordered_map<std::string_view, bool> known;
    for (TextKey const & key : lookUps.keys) {
        known[key.text] = true;
    }
    for (TextKey const & key : values->all()) {
        if (known.contains(key.text)) {
            lookUps.order.push_back(key);
        }
    }
    return lookUps;
}

LookUps evenlySpread(Values const & values) {
    LookUps lookUps{values, kept(values->frequent()), {}};
    for (int round = 0; round < 16; ++round) {
        lookUps.order.insert(lookUps.order.end(), lookUps.keys.begin(), lookUps.keys.end());
    }
    std::shuffle(lookUps.order.begin(), lookUps.order.end(), std::mt19937(20140102));
    return lookUps;
}

void fill(Interner & table, std::vector<TextKey> const & keys) {
    for (TextKey const & key : keys) {
        table.insert(key,
                     new StringData(CString(key.text.data(), static_cast<int>(key.text.size()))));
    }
}

void addRows(std::string const & group, std::vector<Peer<Interner>> const & interners,
             std::shared_ptr<Lazy<LookUps>> const & lookUps) {
    for (Peer<Interner> const & peer : interners) {
        addRow(group, peer.name, [&, lookUps]() -> TimedWork {
            std::vector<TextKey> const & order = lookUps->get().order;
            std::shared_ptr<Interner> const table = peer.make();
            fill(*table, lookUps->get().keys);
            table->findAll(order);
            requireAgreement(table->findAll(order) == order.size());
            std::size_t bytes = 0;
            for (TextKey const & key : order) {
                bytes += key.text.size();
            }
            return {{bytes, order.size()},
                    [lookUps, table, &order] { keep(table->findAll(order)); }};
        });
    }
}

}  // namespace

void addCacheRows(Peers const & peers) {
    auto const values = std::make_shared<Lazy<Values>>(
        [] { return std::make_shared<StringValues const>(tradingCorpus()); });
    struct Order {
        char const * name;
        LookUps (*make)(Values const & values);
    };
    for (Order const order : {Order{"feed_order", inOrderOf}, Order{"spread", evenlySpread}}) {
        auto const lookUps =
            std::make_shared<Lazy<LookUps>>([values, order] { return order.make(values->get()); });
        addRows(std::string("cache_hit/") + order.name, peers.interners, lookUps);
        addRows(std::string("cache_hit_own_hash/") + order.name, peers.hashingInterners, lookUps);
    }
}

}  // namespace tvk::bench
