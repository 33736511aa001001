// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Base/Calendar.h"

#include <time.h>

#include <chrono>
#include <cstdint>
#include <mutex>

namespace fi {

namespace {

/// localtime_r need not read the zone's rules by itself; once is enough, the zone of a process is fixed.
void readZoneOnce() {
    static std::once_flag once;
    std::call_once(once, tzset);
}

/// Seconds since 1970 if the parts were of UTC.
int64_t secondsOf(std::chrono::sys_days day, int hour, int minute, int second) {
    return int64_t{day.time_since_epoch().count()} * 86400 + hour * 3600 + minute * 60 + second;
}

bool hasParts(const tm& parts, const DateTimeRec& date) {
    return parts.tm_year == date.year - 1900 && parts.tm_mon == date.month - 1 &&
           parts.tm_mday == date.day && parts.tm_hour == date.hour && parts.tm_min == date.minute &&
           parts.tm_sec == date.second;
}

}  // namespace

DateTimeRec localDate(int64_t secondsSince1970, WeekDays days) {
    readZoneOnce();
    const time_t moment = secondsSince1970;
    tm parts{};
    if (localtime_r(&moment, &parts) == nullptr) return {};
    const int64_t year = int64_t{parts.tm_year} + 1900;
    if (year < INT16_MIN || year > INT16_MAX) return {};
    const int firstDay = days == WeekDays::FromOne ? 1 : 0;
    return {static_cast<int16_t>(year),
            static_cast<int16_t>(parts.tm_mon + 1),
            static_cast<int16_t>(parts.tm_mday),
            static_cast<int16_t>(parts.tm_hour),
            static_cast<int16_t>(parts.tm_min),
            static_cast<int16_t>(parts.tm_sec),
            static_cast<int16_t>(parts.tm_wday + firstDay)};
}

bool localDateExists(const DateTimeRec& date) {
    const std::chrono::year_month_day day{std::chrono::year(date.year),
                                          std::chrono::month(static_cast<unsigned>(date.month)),
                                          std::chrono::day(static_cast<unsigned>(date.day))};
    if (!day.ok()) return false;
    readZoneOnce();
    // Not mktime, which looks at the zone's file each time: dates are asked of thousands of photos. From
    // the moment that has these parts in UTC the way leads by the zone's difference there, once more when
    // the clock changed in between; nothing fits a time that it skips.
    const int64_t wanted = secondsOf(std::chrono::sys_days(day), date.hour, date.minute, date.second);
    time_t moment = wanted;
    for (int attempt = 0; attempt < 4; ++attempt) {
        tm parts{};
        if (localtime_r(&moment, &parts) == nullptr) return false;
        if (hasParts(parts, date)) return true;
        const auto found = std::chrono::year(parts.tm_year + 1900) /
                           std::chrono::month(static_cast<unsigned>(parts.tm_mon + 1)) /
                           std::chrono::day(static_cast<unsigned>(parts.tm_mday));
        const int64_t away =
            wanted - secondsOf(std::chrono::sys_days(found), parts.tm_hour, parts.tm_min, parts.tm_sec);
        moment += away != 0 ? away : 1;  // a zone with leap seconds: 23:59:60 counts as midnight
    }
    return false;
}

}  // namespace fi
