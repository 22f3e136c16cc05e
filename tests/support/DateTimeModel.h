#pragma once

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <initializer_list>
#include <string>

#include "tvk/platform/TimeVal.h"
#include "tvk/text/DateTimeUtil.h"

namespace tvk::test {

/// What became of a text that was read as a time; the fields keep their values where it was refused.
struct ParsedTime {
    bool accepted = false;
    long long seconds = -77;
    long long microseconds = -88;

    bool operator==(ParsedTime const &) const = default;
};

/// A time whose fields are as wide as the system's.
inline timeval timeOf(long long seconds, long long microseconds) {
    timeval time{};
    time.tv_sec = static_cast<decltype(time.tv_sec)>(seconds);
    time.tv_usec = static_cast<decltype(time.tv_usec)>(microseconds);
    return time;
}

inline std::time_t secondsNow() {
    return std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
}

/// The local time that the C library gives, with every number -1 where it gives none.
inline std::tm referenceLocalTime(long long seconds) {
    std::time_t const time = seconds;
    std::tm local{};
    if (localtime_r(&time, &local) == nullptr) {
        local.tm_year = local.tm_mon = local.tm_mday = -1;
        local.tm_hour = local.tm_min = local.tm_sec = -1;
        local.tm_wday = local.tm_yday = local.tm_isdst = -1;
    }
    return local;
}

/// The slow model of DateTimeUtil::parseDateTime: sscanf and mktime.
class ReferenceDateTimeParser {
public:
    /// `today` is the date of the texts that have none.
    explicit ReferenceDateTimeParser(std::tm const & today) : today_(today) {}

    ParsedTime parse(char const * text, unsigned int length) const {
        // The characters that a shape is chosen by, where the text has them; where it is shorter,
        // every format for its length stops at the end of it.
        std::size_t const size =
            hasShape(length) ? strnlen(text, SEPARATOR_PLACE + 1) : std::size_t{0};
        char const separator = size > SEPARATOR_PLACE ? text[SEPARATOR_PLACE] : '\0';
        bool const hasColon = size > COLON_PLACE && text[COLON_PLACE] == ':';
        switch (length) {
            case 26:
                return dated(text,
                             chosen(separator, {"%04d/%02d/%02d %02d:%02d:%02d.%06d",
                                                "%04d-%02d-%02d %02d:%02d:%02d.%06d",
                                                "%04d.%02d.%02d %02d:%02d:%02d.%06d"}),
                             7, 1);
            case 23:
                return dated(text,
                             chosen(separator, {"%04d/%02d/%02d %02d:%02d:%02d.%03d",
                                                "%04d-%02d-%02d %02d:%02d:%02d.%03d",
                                                "%04d.%02d.%02d %02d:%02d:%02d.%03d"}),
                             7, 1000);
            case 20:
                return dated(text, "%04d%02d%02d%02d%02d%02d%06d", 7, 1);
            case 17:
                return dated(text, "%04d%02d%02d%02d%02d%02d%03d", 7, 1000);
            case 15:
                return undated(text, "%02d:%02d:%02d.%06d", 4, 1);
            case 14:
                return dated(text, "%04d%02d%02d%02d%02d%02d", 6, 0);
            case 12:
                return hasColon ? undated(text, "%02d:%02d:%02d.%03d", 4, 1000)
                                : undated(text, "%02d%02d%02d%06d", 4, 1);
            case 10:
                return dated(
                    text, chosen(separator, {"%04d/%02d/%02d", "%04d-%02d-%02d", "%04d.%02d.%02d"}),
                    3, 0);
            case 9:
                return undated(text, "%02d%02d%02d%03d", 4, 1000);
            case 8:
                return hasColon ? undated(text, "%02d:%02d:%02d", 3, 0)
                                : dated(text, "%04d%02d%02d", 3, 0);
            case 6:
                return undated(text, "%02d%02d%02d", 3, 0);
            default:
                return {};
        }
    }

private:
    static constexpr std::size_t SEPARATOR_PLACE = 4;
    static constexpr std::size_t COLON_PLACE = 2;

    static bool hasShape(unsigned int length) {
        for (unsigned int const known : {26U, 23U, 20U, 17U, 15U, 14U, 12U, 10U, 9U, 8U, 6U}) {
            if (length == known) {
                return true;
            }
        }
        return false;
    }

    /// The format with that separator, null where there is none.
    static char const * chosen(char separator, std::initializer_list<char const *> formats) {
        for (char const * format : formats) {
            if (separator == format[SEPARATOR_PLACE]) {
                return format;
            }
        }
        return nullptr;
    }

    static ParsedTime dated(char const * text, char const * format, int count, int scale) {
        int year = 0;
        int month = 0;
        std::tm local{};
        int fraction = 0;
        if (format == nullptr ||
            std::sscanf(text, format, &year, &month, &local.tm_mday, &local.tm_hour, &local.tm_min,
                        &local.tm_sec, &fraction) != count) {
            return {};
        }
        local.tm_year = year - 1900;
        local.tm_mon = month - 1;
        return made(&local, fraction * scale);
    }

    ParsedTime undated(char const * text, char const * format, int count, int scale) const {
        std::tm local{};
        int fraction = 0;
        if (std::sscanf(text, format, &local.tm_hour, &local.tm_min, &local.tm_sec, &fraction) !=
            count) {
            return {};
        }
        local.tm_year = today_.tm_year;
        local.tm_mon = today_.tm_mon;
        local.tm_mday = today_.tm_mday;
        return made(&local, fraction * scale);
    }

    static ParsedTime made(std::tm * local, int microseconds) {
        local->tm_isdst = -1;
        auto const seconds = static_cast<unsigned long long>(std::mktime(local));
        return {true, static_cast<int>(static_cast<unsigned int>(seconds)), microseconds};
    }

    std::tm today_;
};

inline ParsedTime parsedWithLibrary(char const * text, unsigned int length) {
    ParsedTime result;
    timeval time = timeOf(result.seconds, result.microseconds);
    result.accepted = DateTimeUtil::parseDateTime(text, length, &time);
    result.seconds = time.tv_sec;
    result.microseconds = time.tv_usec;
    return result;
}

/// The result of the library and that of the model, on one and the same day.
struct ParsedTwice {
    ParsedTime library;
    ParsedTime model;
};

inline ParsedTwice parsedTwice(char const * text, unsigned int length) {
    for (;;) {
        std::tm const before = referenceLocalTime(secondsNow());
        // In this order: in an hour that the clock repeats, mktime goes on as it began.
        ParsedTime const library = parsedWithLibrary(text, length);
        ParsedTime const model = ReferenceDateTimeParser(before).parse(text, length);
        if (referenceLocalTime(secondsNow()).tm_mday == before.tm_mday) {
            return {library, model};
        }
    }
}

/// A format function, and what tells its model how to write the same with snprintf.
struct DateTimeForm {
    char const * name;
    CString (*function)(timeval const & time, char separator);
    char const * format;
    bool hasDate;
    bool hasSeparator;
    bool hasTime;
    int fractionDivisor;  ///< of the microseconds; 0 for no fraction
};

/// The slow model of the format functions: localtime_r and snprintf into 32 characters.
inline std::string referenceDateTimeText(DateTimeForm const & form, timeval const & time,
                                         char separator) {
    std::tm const local = referenceLocalTime(time.tv_sec);
    int arguments[9] = {};
    int * next = arguments;
    if (form.hasDate) {
        *next++ = static_cast<int>(static_cast<unsigned int>(local.tm_year) + 1900U);
        if (form.hasSeparator) {
            *next++ = separator;
        }
        *next++ = local.tm_mon + 1;
        if (form.hasSeparator) {
            *next++ = separator;
        }
        *next++ = local.tm_mday;
    }
    if (form.hasTime) {
        *next++ = local.tm_hour;
        *next++ = local.tm_min;
        *next++ = local.tm_sec;
    }
    if (form.fractionDivisor != 0) {
        auto const fraction = static_cast<unsigned long long>(time.tv_usec / form.fractionDivisor);
        *next++ = static_cast<int>(static_cast<unsigned int>(fraction));
    }
    char text[32];
    std::snprintf(text, sizeof text, form.format, arguments[0], arguments[1], arguments[2],
                  arguments[3], arguments[4], arguments[5], arguments[6], arguments[7],
                  arguments[8]);
    return text;
}

}  // namespace tvk::test
