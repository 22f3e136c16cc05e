// The example of README.md: a quote from JSON to a message, changed, and back to JSON.

#include <tvk/tvk.h>

#include <cstdio>
#include <string>

// Short enough for the first screen of README.md, which shows it as it stands.
// clang-format off
int main() {
    std::string const text = R"({"sym":"7203","last":1764.50,"open":true})";

    tvk::SimpleObjectCache cache(tvk::SimpleObjectCache::defaultRawDataConverter());
    tvk::JsonMessageParser parser(&cache);  // shares repeated values through the cache
    tvk::ErrorInfo error;
    auto const size = static_cast<unsigned int>(text.size());
    auto const quote = parser.parseJsonMessage(text.data(), size, 0, &error);
    if (quote.isNull()) { std::puts(error.getErrorMessage()); return 1; }

    quote->setFieldValue("last", new tvk::NumberData(1765));
    tvk::JsonMessageSerializer serializer;
    unsigned int const written = serializer.messageToJson(nullptr, 0, *quote, 0);
    std::fwrite(serializer.getResultsBuffer(), 1, written, stdout);
}
