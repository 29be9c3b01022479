#pragma once

#include "platform/Value.h"

#include <optional>
#include <string>
#include <string_view>

namespace qoro
{

/// A value as JSON text. A number that is not finite is null; bytes that are no UTF-8 become U+FFFD.
std::string json_of(const Value& value);
std::string json_of(const NSArray& list);
std::string json_of(const NSDictionary& mapping);

/// The value of a JSON text; absent when it is none, or is nested more than 32 deep.
std::optional<Value> value_of_json(std::string_view text);

} // namespace qoro
