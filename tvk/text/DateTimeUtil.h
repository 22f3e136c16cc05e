#pragma once

#include <ctime>

#include "tvk/platform/CString.h"
#include "tvk/platform/Export.h"
#include "tvk/platform/SystemTime.h"
#include "tvk/platform/TimeVal.h"

namespace tvk {

/// Clock, calendar, sums on times, and times as text. Broken-down times are local times; one that
/// the clock skips or repeats is a time of the hour beside it or of either hour, as the system's
/// calendar has it. A time that is stored has 32-bit seconds, and its `tv_usec` is in microseconds
/// unless said otherwise.
///
/// Threads: no state; any thread may call any of these.
/// Failure: only parseDateTime reports one.
class TVK_API DateTimeUtil {
public:
    DateTimeUtil() = delete;

    /// Deliberate: `tv_usec` holds milliseconds, 0 to 999, here and in win32SystemTimeToTimeval.
    /// Callers show it with formatDisplayDateTime2; currentTimeMilliSec is the exact clock.
    static timeval currentTime();
    static long long currentTimeMilliSec();  ///< since the epoch
    static timeval win32SystemTimeToTimeval(_SYSTEMTIME const & time);
    static long long win32SystemTimeToMilliSec(_SYSTEMTIME const & time);  ///< since the epoch
    /// Today at a local time. The numbers may lie out of range: 25 hours are tomorrow. Counted in
    /// seconds from now, so a change of the clock between now and then is not seen.
    static timeval getTimeOfToday(int hour, int minute, int second);

    static long long timeToMilliSec(timeval const & time);
    static timeval milliSecToTime(long long milliSeconds);
    /// `second` less `first`.
    static long long milliSecTimeDiffFrom(timeval const & first, timeval const & second);
    /// `second` less `first`.
    ///
    /// Deliberate: where the microseconds borrow, the seconds go up by one instead of down; callers
    /// correct the two seconds themselves. milliSecTimeDiffFrom is exact.
    static timeval timeDiffFrom(timeval const & first, timeval const & second);
    static void toTM(timeval const & time, std::tm * brokenDown);
    static timeval relativeDate(timeval const & time, int days);  ///< days of 86400 seconds
    static timeval relativeTime(timeval const & time, long seconds);
    /// With negative `milliSeconds` the result's `tv_usec` may be negative.
    static timeval addMilliSeconds(timeval const & time, long milliSeconds);
    /// The time of a local date; numbers out of range roll over. -1 seconds where there is none.
    static void toEpochTime(int year, int month, int day, int hour, int minute, int second,
                            int usec, timeval * time);

    /// Reads a local time in one of the shapes that the format functions write. `length` picks the
    /// shape: 26, 23, 20, 17, 15, 14, 12, 10, 9, 8 or 6; the date's separator is '/', '-' or '.'.
    /// `text` must end in a NUL and is read like sscanf, up to it. A shape without a date means
    /// today, one without a time midnight. Numbers out of range roll over. False, with `*time` left
    /// alone, for anything else; for another length `text` is not looked at.
    ///
    /// Deliberate: the 19 characters of formatShortDisplayDateTime have no shape; callers count on the
    /// refusal.
    static bool parseDateTime(char const * text, unsigned int length, timeval * time);

    // Text of the local time. `separator` stands in the date; a NUL there ends the text. A text is
    // cut at 31 characters, which only wild years pass.
    static CString formatShortDisplayDateTime(timeval const & time,
                                              char separator);  ///< 2014/01/02 03:04:05
    static CString formatDisplayDateTime(timeval const & time,
                                         char separator);  ///< 2014/01/02 03:04:05.678
    static CString formatDisplayDateTime2(timeval const & time,
                                          char separator);  ///< 2014/01/02 03:04:05.678901
    static CString formatDisplayDate(timeval const & time, char separator);  ///< 2014/01/02
    static CString formatDisplayTime(timeval const & time);                  ///< 03:04:05
    static CString formatDisplayTime1(timeval const & time);                 ///< 03:04:05.678
    static CString formatDisplayTime2(timeval const & time);                 ///< 03:04:05.678901
    static CString formatShortDateTime(timeval const & time);                ///< 20140102030405
    static CString formatDateTime(timeval const & time);                     ///< 20140102030405678
    static CString formatDateTime2(timeval const & time);  ///< 20140102030405678901
    static CString formatDate(timeval const & time);       ///< 20140102
    static CString formatTime(timeval const & time);       ///< 030405
    static CString formatTime1(timeval const & time);      ///< 030405678
    static CString formatTime2(timeval const & time);      ///< 030405678901
    /// strftime of the local time, in the process's locale. Requires: the result has at most 39
    /// characters; a longer one is the caller's fault and gives an empty text.
    static CString formatTime(timeval const & time, char const * format);
};

}  // namespace tvk
