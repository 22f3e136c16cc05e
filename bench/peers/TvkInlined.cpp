#include "bench/peers/TvkInlined.h"

#include "tvk/json/JsonUtil.h"
#include "tvk/json/SimpleJsonHandler.h"

namespace tvk::bench {

namespace {

/// JsonUtil is the one of this library, which sums the events up and calls no table.
class InlinedScanner : public Scanner {
public:
    void scan(std::string_view document, EventSum & sum) override {
        SimpleJsonHandler table{};
        JsonUtil::parseOneJsonValue(document.data(), static_cast<unsigned int>(document.size()),
                                    &table, &sum, 0);
    }
};

}  // namespace

std::unique_ptr<Scanner> makeInlinedScanner() { return std::make_unique<InlinedScanner>(); }

}  // namespace tvk::bench
