// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Base/Calendar.h"

#include <time.h>

#include <cstdint>
#include <mutex>

namespace fi {

namespace {

/// localtime_r need not read the zone's rules by itself; once is enough, the zone of a process is fixed.
void readZoneOnce() {
    static std::once_flag once;
    std::call_once(once, tzset);
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
    readZoneOnce();
    tm parts{};
    parts.tm_year = date.year - 1900;
    parts.tm_mon = date.month - 1;
    parts.tm_mday = date.day;
    parts.tm_hour = date.hour;
    parts.tm_min = date.minute;
    parts.tm_sec = date.second;
    parts.tm_isdst = -1;
    // mktime normalises; -1 is also a valid moment, so the parts decide. It leaves them alone on failure,
    // and the marker in tm_wday tells.
    parts.tm_wday = -1;
    (void)mktime(&parts);
    return parts.tm_wday != -1 && parts.tm_year == date.year - 1900 && parts.tm_mon == date.month - 1 &&
           parts.tm_mday == date.day && parts.tm_hour == date.hour && parts.tm_min == date.minute &&
           parts.tm_sec == date.second;
}

}  // namespace fi
