#pragma once

#include "platform/Value.h"

#include <optional>
#include <string>
#include <string_view>

namespace qoro
{

/// A value as JSON text (RFC 8259). Numbers that are not finite become null; bytes that are not valid UTF-8 become
/// U+FFFD.
std::string json_of(const Value& value);
std::string json_of(const NSArray& list);
std::string json_of(const NSDictionary& mapping);

/// Parses JSON text. Absent for invalid text, nesting above 32 levels, and more than 256 names in total.
std::optional<Value> value_of_json(std::string_view text);

} // namespace qoro
