#include "bench/Rows.h"

namespace tvk::bench {

namespace {

std::vector<Row> & rows() {
    static std::vector<Row> all;
    return all;
}

}  // namespace

std::vector<Row> const & allRows() { return rows(); }

void addRow(std::string const & group, std::string const & peer, std::function<TimedWork()> make) {
    rows().push_back({group, peer, std::move(make), nullptr});
}

void addMeasuredRow(std::string const & group, std::string const & peer,
                    std::function<Figures()> measure) {
    rows().push_back({group, peer, nullptr, std::move(measure)});
}

}  // namespace tvk::bench
