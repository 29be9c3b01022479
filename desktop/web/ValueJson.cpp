#include "desktop/web/ValueJson.h"

#include "platform/json/JsonValue.h"

#include <nlohmann/json.hpp>

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
