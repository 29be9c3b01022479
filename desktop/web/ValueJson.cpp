#include "desktop/web/ValueJson.h"

#include <nlohmann/json.hpp>

#include <limits>

namespace qoro
{

namespace
{

using Json = nlohmann::ordered_json;

constexpr int deepest = 32;
/// Limits the total number of names: inserting one searches its mapping linearly.
constexpr int most_names = 256;

Json to_json(const Value& value);

Json to_json(const NSArray& list)
{
    if (!list)
        return nullptr;
    Json json = Json::array();
    for (const Value& value : list)
        json.push_back(to_json(value));
    return json;
}

Json to_json(const NSDictionary& mapping)
{
    if (!mapping)
        return nullptr;
    Json json = Json::object();
    for (const NSDictionary::Entry& entry : mapping)
        json[entry.key] = to_json(entry.value);
    return json;
}

Json to_json(const Value& value)
{
    if (value.is_bool())
        return value.boolValue();
    if (value.is_integer()) // as text: Value's own integer accessor is limited to 32 bits
        return Json::parse(value.stringValue().text());
    if (value.is_double())
        return value.doubleValue();
    if (value.is_string())
        return value.string().text();
    if (value.is_array())
        return to_json(value.array());
    if (value.is_dictionary())
        return to_json(value.dictionary());
    return nullptr;
}

std::string text_of(const Json& json)
{
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

Value to_value(const Json& json)
{
    switch (json.type()) {
    case Json::value_t::boolean:
        return json.get<bool>();
    case Json::value_t::number_unsigned:
        if (json.get<std::uint64_t>() > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
            return json.get<double>();
        return json.get<std::int64_t>();
    case Json::value_t::number_integer:
        return json.get<std::int64_t>();
    case Json::value_t::number_float:
        return json.get<double>();
    case Json::value_t::string:
        return json.get<std::string>();
    case Json::value_t::array: {
        std::vector<Value> values;
        values.reserve(json.size());
        for (const Json& child : json)
            values.push_back(to_value(child));
        return NSArray(std::move(values));
    }
    case Json::value_t::object: {
        NSDictionary mapping = NSDictionary::dictionary();
        for (const auto& [key, child] : json.items())
            mapping.setObject(to_value(child), key);
        return mapping;
    }
    default:
        return nullptr;
    }
}

/// Scans a text without storing anything, until it is invalid or exceeds a limit.
class Bounds : public nlohmann::json_sax<Json>
{
public:
    bool null() override { return true; }
    bool boolean(bool) override { return true; }
    bool number_integer(number_integer_t) override { return true; }
    bool number_unsigned(number_unsigned_t) override { return true; }
    bool number_float(number_float_t, const string_t&) override { return true; }
    bool string(string_t&) override { return true; }
    bool binary(binary_t&) override { return true; }
    bool start_object(std::size_t) override { return ++depth_ <= deepest; }
    bool key(string_t&) override { return ++names_ <= most_names; }
    bool end_object() override { return depth_-- > 0; }
    bool start_array(std::size_t) override { return ++depth_ <= deepest; }
    bool end_array() override { return depth_-- > 0; }
    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override { return false; }

private:
    int depth_ = 0;
    int names_ = 0;
};

} // namespace

std::string json_of(const Value& value)
{
    return text_of(to_json(value));
}

std::string json_of(const NSArray& list)
{
    return text_of(to_json(list));
}

std::string json_of(const NSDictionary& mapping)
{
    return text_of(to_json(mapping));
}

std::optional<Value> value_of_json(std::string_view text)
{
    // The limits apply before any recursion and before the names cost time. A separate pass is necessary: with a
    // callback, the parser searches all earlier elements of a list after each mapping in it.
    Bounds bounds;
    if (!Json::sax_parse(text, &bounds))
        return std::nullopt;
    return to_value(Json::parse(text));
}

} // namespace qoro
