// The address of a VAST document's tracker with macros. Lines of the input: address; kind, time, zone, times of the
// content and the ad, latitude, longitude, width (numbers); then texts. Missing lines are absent values.

#include "platform/Value.h"
#include "tests/fuzz/FuzzTarget.h"
#include "vast/Macros.h"

#include <algorithm>
#include <cctype>
#include <optional>
#include <string>

namespace qoro
{

namespace
{

std::optional<std::string> take_line(std::string_view& rest)
{
    if (rest.empty())
        return std::nullopt;
    const std::size_t length = std::min(rest.find('\n'), rest.size());
    std::string line(rest.substr(0, length));
    rest.remove_prefix(std::min(length + 1, rest.size()));
    return line;
}

std::optional<double> take_number(std::string_view& rest)
{
    const auto line = take_line(rest);
    return line ? std::optional(Value(NSString(*line)).doubleValue()) : std::nullopt;
}

std::optional<int> take_integer(std::string_view& rest)
{
    const auto line = take_line(rest);
    return line ? std::optional(Value(NSString(*line)).intValue()) : std::nullopt;
}

vast::MacroValues take_values(std::string_view& rest)
{
    vast::MacroValues values;
    values.request.kind = static_cast<vast::AddressKind>(std::clamp(take_integer(rest).value_or(0), 0, 4));
    values.request.time = take_number(rest);
    values.request.time_zone = take_integer(rest).value_or(0);
    values.request.random = [] { return 7U; };
    values.ad_break.content_time = take_number(rest);
    values.player.ad_time = take_number(rest);
    values.client.latitude = take_number(rest);
    values.client.longitude = take_number(rest);
    values.player.width = values.player.height = take_integer(rest);
    values.regulation.tcf_string = take_line(rest);
    values.regulation.us_privacy = take_line(rest);
    values.client.advertising_id = take_line(rest);
    values.player.asset = take_line(rest);
    values.ad_break.universal_ad_ids = {{.registry = take_line(rest).value_or(""), .value = "7"}};
    values.capabilities.extensions.emplace();
    while (const auto line = take_line(rest))
        values.capabilities.extensions->push_back(*line);
    return values;
}

bool can_be_in_a_value(char c)
{
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x80 && (std::isalnum(byte) || std::string_view("-_.!~*'(),%").find(c) != std::string_view::npos);
}

} // namespace

void fuzz::run_input(std::string_view input)
{
    const std::string address = take_line(input).value_or("");
    const vast::MacroValues values = take_values(input);

    const std::string expanded = vast::expand(address, values);
    std::string appended = "before";
    vast::expand(address, values, appended);
    require(appended == "before" + expanded, "appending gives the same address");

    const std::size_t before = std::min(address.find_first_of("[%"), address.size());
    require(expanded.starts_with(address.substr(0, before)), "text before the first macro stays");
    const std::size_t last = address.find_last_of("]Dd");
    const std::string after = last == std::string::npos ? address : address.substr(last + 1);
    require(expanded.ends_with(after), "text after the last macro stays");

    for (const std::string_view name : vast::macro_names()) {
        const std::string value = vast::expand("[" + std::string(name) + "]", values);
        require(std::all_of(value.begin(), value.end(), can_be_in_a_value), "a value is encoded");
        require(vast::expand("%5b" + std::string(name) + "%5D", values) == value, "both forms have the same value");
        const std::string within = "%5B[" + std::string(name) + "]]";
        require(vast::expand(within, values) == "%5B" + value + "]", "text around a macro stays");
    }
}

} // namespace qoro
