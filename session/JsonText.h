#pragma once

#include "platform/Ports.h"
#include "platform/Value.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace qoro
{

// JSON written at the end of a text, without the locale and without an allocation of its own.

/// A text in quotes; bytes that are no UTF-8 become U+FFFD.
void append_json_text(std::string& out, std::string_view text);
/// The fewest digits that give the number back; null for one that is not finite.
void append_json(std::string& out, double number);
void append_json(std::string& out, float number);
void append_json(std::string& out, std::int64_t number);
void append_json(std::string& out, const Value& value);
void append_json(std::string& out, const Field::Content& content);
/// Microseconds as seconds, exactly.
void append_seconds(std::string& out, std::int64_t microseconds);

} // namespace qoro
