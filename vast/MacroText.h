#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// Texts of macros' values, appended to an address.

namespace qoro::vast
{

/// As ECMAScript's encodeURIComponent, byte for byte: an invalid UTF-8 sequence is encoded too.
void append_encoded(std::string& out, std::string_view text);
void append_number(std::string& out, std::int64_t number);

// Each of the following appends a value, encoded, or returns false and appends nothing when it is unknown.

/// HH:MM:SS.mmm
/// @param seconds absent, negative, non-finite or longer than 30,000 years: unknown
bool append_time(std::string& out, const std::optional<double>& seconds);

/// ISO 8601 with milliseconds and zone: 2016-01-17T08:15:07.127-05. The zone has minutes if it needs them.
/// @param seconds since 1970-01-01 UTC; absent, or outside the years 0 to 9999: unknown
/// @param zone minutes east of UTC; a day or more: unknown
bool append_timestamp(std::string& out, const std::optional<double>& seconds, int zone);

/// With up to six decimals, separated by a comma.
/// @param latitude degrees, from -90 to 90; else unknown
/// @param longitude degrees, from -180 to 180; else unknown
bool append_place(std::string& out, const std::optional<double>& latitude, const std::optional<double>& longitude);

} // namespace qoro::vast
