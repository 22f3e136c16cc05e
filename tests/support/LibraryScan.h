#pragma once

#include <string_view>

#include "tests/support/EventRecorder.h"
#include "tests/support/ExactBuffer.h"
#include "tests/support/ReferenceScanner.h"
#include "tvk/json/JsonUtil.h"

namespace tvk::test {

/// The entry of the library for a mode.
inline auto entryOf(ScanMode mode) {
    switch (mode) {
        case ScanMode::OBJECT:
            return JsonUtil::parseOneJsonObject;
        case ScanMode::ARRAY:
            return JsonUtil::parseOneJsonArray;
        case ScanMode::VALUE:
            return JsonUtil::parseOneJsonValue;
        default:
            return JsonUtil::parseObjectFields;
    }
}

/// What `scan`, called as scan(data, length, handler, userData), comes to on a block of the exact
/// size.
template <class Scan>
ScanOutcome outcomeOf(Scan scan, std::string_view input) {
    ExactBuffer const data(input);
    EventRecorder recorder(data);
    ScanOutcome outcome;
    try {
        outcome.position = scan(data.data(), data.length(), &EventRecorder::handler(), &recorder);
    } catch (JsonUtil::XParsingError const & error) {
        outcome.failure = error.getErrorMessage();
    }
    outcome.events = recorder.takeEvents();
    return outcome;
}

inline ScanOutcome scanWithLibrary(ScanMode mode, std::string_view input, int options) {
    return outcomeOf(
        [&](char const * data, unsigned int length, SimpleJsonHandler * handler, void * userData) {
            return entryOf(mode)(data, length, handler, userData, options);
        },
        input);
}

}  // namespace tvk::test
