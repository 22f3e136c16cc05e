#include <algorithm>
#include <random>

#include "bench/Rows.h"

namespace tvk::bench {

namespace {

constexpr std::size_t LEAST_NOTICES = 1000;
constexpr std::size_t EVENTS = 1000;

constexpr char const * TYPES[] = {"quote", "board",     "trade",    "news",
                                  "order", "execution", "position", "alert"};
constexpr char const * MARKETS[] = {".T", ".OS", ".N"};
constexpr std::size_t FIRST_CODE = 1301;
constexpr std::size_t CODES = 8700;

/// "7203.T", and the like.
std::string subjectOf(std::size_t number) {
    return std::to_string(FIRST_CODE + number % CODES) + MARKETS[number / CODES];
}

Topic topicOf(std::string const & type, std::string const & subject) {
    return {type, subject, type.c_str(), subject.c_str()};
}

/// One key of everything; one of each type, but no more of these than a tenth of all; one of a subject
/// with any type in twenty keys; all others are exact.
std::vector<Topic> keysOf(std::size_t count) {
    std::vector<Topic> keys{topicOf(ANY, ANY)};
    for (std::size_t type = 0; type < std::min(std::size(TYPES), count / 10); ++type) {
        keys.push_back(topicOf(TYPES[type], ANY));
    }
    for (std::size_t subject = 0; subject < std::max<std::size_t>(1, count / 20); ++subject) {
        keys.push_back(topicOf(ANY, subjectOf(subject)));
    }
    for (std::size_t i = 0; keys.size() < count; ++i) {
        keys.push_back(topicOf(TYPES[i % std::size(TYPES)], subjectOf(i / std::size(TYPES))));
    }
    return keys;
}

struct Notices {
    std::vector<Topic> registrations;  ///< the number of a handler is its place here
    std::vector<Topic> topics;
    std::vector<CallSum> calls;  ///< of each topic
};

std::unique_ptr<NoticeRouter> routerOf(Peer<NoticeRouter> const & peer,
                                       std::vector<Topic> const & registrations) {
    auto router = peer.make();
    for (std::size_t i = 0; i < registrations.size(); ++i) {
        router->addHandler(registrations[i], static_cast<std::uint32_t>(i));
    }
    return router;
}

std::vector<CallSum> callsOf(NoticeRouter & router, std::vector<Topic> const & topics) {
    std::vector<CallSum> calls;
    for (Topic const & topic : topics) {
        calls.push_back(router.deliverAll({&topic, 1}));
    }
    return calls;
}

/// Every fourth key has two handlers. The notices are spread evenly over the exact keys, but one in
/// ten is of a type that no key has.
Notices noticesOf(std::size_t keyCount, Peer<NoticeRouter> const & reference) {
    Notices notices;
    std::vector<Topic> const keys = keysOf(keyCount);
    std::vector<Topic> exact;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        notices.registrations.insert(notices.registrations.end(), i % 4 == 3 ? 2 : 1, keys[i]);
        if (keys[i].type != ANY && keys[i].subject != ANY) {
            exact.push_back(keys[i]);
        }
    }
    std::mt19937 random(20140102);
    std::shuffle(notices.registrations.begin(), notices.registrations.end(), random);
    std::uniform_int_distribution<std::size_t> place(0, exact.size() - 1);
    for (std::size_t i = 0; i < std::max(keyCount, LEAST_NOTICES); ++i) {
        Topic const & topic = exact[place(random)];
        notices.topics.push_back(topicOf(i % 10 == 9 ? "rating" : topic.type, topic.subject));
    }
    notices.calls = callsOf(*routerOf(reference, notices.registrations), notices.topics);
    return notices;
}

void addNoticeRows(Peers const & peers, std::string const & corpus, std::size_t keyCount) {
    auto const notices = std::make_shared<Lazy<Notices>>(
        [&peers, keyCount] { return noticesOf(keyCount, peers.noticeRouters.front()); });
    for (Peer<NoticeRouter> const & peer : peers.noticeRouters) {
        addRow("notice/" + corpus, peer.name, [&, notices]() -> TimedWork {
            std::shared_ptr<NoticeRouter> const router =
                routerOf(peer, notices->get().registrations);
            std::vector<Topic> const & topics = notices->get().topics;
            requireAgreement(callsOf(*router, topics) == notices->get().calls);
            return {{0, topics.size()},
                    [notices, router, &topics] { keep(router->deliverAll(topics)); }};
        });
    }
}

std::unique_ptr<EventSource> sourceOf(Peer<EventSource> const & peer, std::uint32_t listeners) {
    auto source = peer.make();
    for (std::uint32_t i = 0; i < listeners; ++i) {
        source->addListener(i);
    }
    return source;
}

void addFireRows(Peers const & peers, std::string const & corpus, std::uint32_t listeners) {
    for (Peer<EventSource> const & peer : peers.eventSources) {
        addRow("fire/" + corpus, peer.name, [&, listeners]() -> TimedWork {
            std::shared_ptr<EventSource> const source = sourceOf(peer, listeners);
            auto const reference = sourceOf(peers.eventSources.front(), listeners);
            requireAgreement(source->fire(1) == reference->fire(1));
            return {{0, EVENTS}, [source] { keep(source->fire(EVENTS)); }};
        });
    }
}

}  // namespace

void addAgentRows(Peers const & peers) {
    addNoticeRows(peers, "10_keys", 10);
    addNoticeRows(peers, "1k_keys", 1000);
    addNoticeRows(peers, "100k_keys", 100000);
    addFireRows(peers, "1_listener", 1);
    addFireRows(peers, "10_listeners", 10);
    addFireRows(peers, "100_listeners", 100);
}

}  // namespace tvk::bench
