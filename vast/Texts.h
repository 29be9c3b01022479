#pragma once

#include "vast/Model.h"

#include <optional>
#include <string>
#include <string_view>

// How VAST writes values as text. Blanks around a value are allowed everywhere.

namespace qoro::vast
{

/// Without the blanks (XML 1.0, production S) at both ends.
std::string_view trimmed(std::string_view text);
/// A time, HH:MM:SS or HH:MM:SS.mmm (VAST 4.3, section 2.3.5): seconds; absent for anything else.
std::optional<double> time_in(std::string_view text);
/// A time, or a percentage from 0 to 100 such as "25%" or "12.5%"; absent for anything else.
std::optional<Offset> offset_in(std::string_view text);
/// A number in decimal notation, at least 0; absent for anything else.
/// @{
std::optional<int> whole_number_in(std::string_view text);
/// At least 1.
std::optional<int> position_in(std::string_view text);
std::optional<double> number_in(std::string_view text);
/// @}
/// "true" or "1", "false" or "0" (XML Schema, xs:boolean); absent for anything else.
std::optional<bool> boolean_in(std::string_view text);
/// Whether a text can be requested: it begins with http:// or https://, and has a host. Blanks and control characters
/// are no obstacle (requestable()).
bool is_address(std::string_view text);
/// Whether blanks or control characters are in an address.
bool has_blanks(std::string_view address);
/// The address as it is requested: blanks, control characters and non-ASCII characters are percent-encoded.
std::string requestable(std::string_view address);
/// In lower case (ASCII).
std::string lower(std::string_view text);
/// Whether two texts are equal, letter case aside (ASCII).
bool equal_names(std::string_view one, std::string_view other);

} // namespace qoro::vast
