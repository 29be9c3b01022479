#pragma once

#include "platform/EventTable.h"
#include "platform/Value.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace qoro
{

// Append JSON to a text: locale-independent, no allocation beyond the text's growth.

/// A quoted string; bytes that are not valid UTF-8 become U+FFFD.
void append_json_text(std::string& out, std::string_view text);
/// The shortest decimal that reads back as the same number; null for one that is not finite.
void append_json(std::string& out, double number);
void append_json(std::string& out, float number);
void append_json(std::string& out, std::int64_t number);
/// A value and everything nested in it.
void append_json(std::string& out, const Value& value);
/// The content of an event's field.
void append_json(std::string& out, const Field::Content& content);
/// Microseconds as seconds, without rounding.
void append_seconds(std::string& out, std::int64_t microseconds);

} // namespace qoro
