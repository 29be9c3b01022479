#pragma once

#include "platform/Ports.h"
#include "platform/Value.h"

#include <optional>
#include <string>
#include <string_view>

// The values of the ports as they are recorded.

namespace qoro::detail
{

/// Sets bytes under a key, as text if they are UTF-8, else as base64 under the key and "64".
void set_bytes(NSDictionary& value, const std::string& key, const std::string& bytes);
/// The bytes under a key; absent without one.
std::optional<std::string> bytes_at(const NSDictionary& value, const std::string& key);

Value value_of(const FetchAnswer& answer, bool whole);
FetchAnswer fetch_answer_of(const Value& value);

Value value_of(const PageState& state);
PageState page_state_of(const Value& value);

Value value_of(const PageReport& report);
PageReport page_report_of(const Value& value);

Value value_of(CGSize size);
CGSize size_of(const Value& value);

/// Null for no touch.
Value value_of(const std::optional<PageTouch>& touch);
std::optional<PageTouch> page_touch_of(const Value& value);

/// A number that may be infinite, which JSON cannot express: null stands for infinity.
double finite_or_infinity(const Value& value);

NSURL url_of(const Value& value);

} // namespace qoro::detail
