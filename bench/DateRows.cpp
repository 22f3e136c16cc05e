#include <random>

#include "bench/Corpus.h"
#include "bench/ItemRows.h"
#include "tests/support/TimeZone.h"

namespace tvk::bench {

namespace {

constexpr std::size_t TIMES = 1000;
constexpr std::int64_t MONDAY_9_00 = 1388966400;  // 2014/01/06 09:00 in Tokyo
constexpr std::int64_t YEAR = 365 * 86400;

using Times = std::vector<timeval>;

timeval timeOf(std::int64_t milliseconds) {
    timeval time;
    time.tv_sec = static_cast<decltype(time.tv_sec)>(milliseconds / 1000);
    time.tv_usec = static_cast<decltype(time.tv_usec)>(milliseconds % 1000 * 1000);
    return time;
}

/// Those of a morning's feed, in its order.
Times timesOfOneDay() {
    std::mt19937 random(20140106);
    std::uniform_int_distribution<std::int64_t> gap(0, 18000);
    Times times;
    for (std::int64_t now = MONDAY_9_00 * 1000; times.size() < TIMES; now += gap(random)) {
        times.push_back(timeOf(now));
    }
    return times;
}

/// Anywhere within twenty years.
Times timesOfManyYears() {
    std::mt19937_64 random(20140106);
    std::uniform_int_distribution<std::int64_t> moment((MONDAY_9_00 - 10 * YEAR) * 1000,
                                                       (MONDAY_9_00 + 10 * YEAR) * 1000);
    Times times;
    while (times.size() < TIMES) {
        times.push_back(timeOf(moment(random)));
    }
    return times;
}

std::vector<std::string> textsOf(Times const & times, DateFormatter & formatter) {
    std::vector<std::string> texts;
    for (timeval const & time : times) {
        texts.push_back(formatter.resultOf(time));
    }
    return texts;
}

ItemList<std::string_view> textList(Times const & times, Peers const & peers) {
    auto const corpus = std::make_shared<Corpus const>(
        "dates", textsOf(times, *peers.dateFormatters.front().make()));
    return {corpus->documents(), corpus->bytes(), corpus};
}

ItemList<timeval> timeList(Times const & times) {
    constexpr std::size_t TEXT_BYTES = 23;
    return {times, times.size() * TEXT_BYTES};
}

}  // namespace

void addDateRows(Peers const & peers) {
    static test::TimeZone const TOKYO("Asia/Tokyo");  // for all rows: no other looks at the zone
    struct Sample {
        char const * name;
        Times (*times)();
    };
    for (Sample const sample : {Sample{"day", timesOfOneDay}, Sample{"years", timesOfManyYears}}) {
        addItemRows<std::string_view, std::int64_t>(
            std::string("parse_date/") + sample.name, peers.dateParsers,
            [sample, &peers] { return textList(sample.times(), peers); });
        addItemRows<timeval, std::string>(std::string("format_date/") + sample.name,
                                          peers.dateFormatters,
                                          [sample] { return timeList(sample.times()); });
    }
}

}  // namespace tvk::bench
