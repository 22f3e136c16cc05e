#pragma once

#include <chrono>
#include <string>
#include <string_view>

#include "tvk/json/JsonMessageParser.h"
#include "tvk/json/JsonMessageSerializer.h"
#include "tvk/json/SimpleObjectCache.h"

/// Lines of JSON to messages and back, through one parser, one cache and one serializer. Keeps the
/// account of what was done.
class RoundTrip {
public:
    /// What one way cost.
    struct Way {
        unsigned long long messages = 0;
        unsigned long long bytes = 0;  ///< of JSON
        std::chrono::nanoseconds time{0};
    };

    /// `options` are the scanner's bits, for the lines; what the serializer wrote is strict JSON.
    explicit RoundTrip(int options) : options_(options) {}

    /// Takes one line there and back. Empty if all went well, else what was wrong with it.
    std::string take(std::string_view line);

    Way const & fromJson() const { return fromJson_; }
    Way const & toJson() const { return toJson_; }
    tvk::SimpleObjectCache const & cache() const { return cache_; }
    /// The first message that was read, for people to look at; empty until then.
    std::string const & firstMessage() const { return firstMessage_; }

private:
    /// Reads the first `size` bytes that the serializer holds and compares.
    bool comesBack(tvk::KestrinMessage const & message, unsigned int size);

    int options_;
    tvk::SimpleObjectCache cache_{tvk::SimpleObjectCache::defaultRawDataConverter()};
    tvk::JsonMessageParser parser_{&cache_};
    tvk::JsonMessageSerializer serializer_;
    Way fromJson_;
    Way toJson_;
    std::string firstMessage_;
};
