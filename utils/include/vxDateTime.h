/// \file vxDateTime.h
/// A point in time, as image properties hold it for each time index.

#ifndef VX_DATE_TIME_H
#define VX_DATE_TIME_H

namespace vx {

/// A calendar date with a time of day. A plain value: no field is checked, none has an effect on another, and no time
/// zone is meant. Two are equal if all fields are.
struct DateTime {
  int year = 0;         ///< Year of the era, 0 for none.
  int month = 0;        ///< 1 to 12, 0 for none.
  int day = 0;          ///< 1 to 31, 0 for none.
  int hour = 0;         ///< 0 to 23.
  int minute = 0;       ///< 0 to 59.
  int second = 0;       ///< 0 to 60.
  int microsecond = 0;  ///< 0 to 999999.

  friend constexpr bool operator==(const DateTime& a, const DateTime& b) noexcept {
    return a.year == b.year && a.month == b.month && a.day == b.day && a.hour == b.hour && a.minute == b.minute &&
           a.second == b.second && a.microsecond == b.microsecond;
  }
  friend constexpr bool operator!=(const DateTime& a, const DateTime& b) noexcept { return !(a == b); }
};

}  // namespace vx

#endif
