#include "platform/json/JsonValue.h"

#include <nlohmann/json.hpp>

#include <limits>
#include <utility>
#include <vector>

namespace qoro
{

using Json = nlohmann::ordered_json;

Value to_value(const Json& json)
{
    using Kind = Json::value_t;
    switch (json.type()) {
    case Kind::boolean:
        return json.get<bool>();
    case Kind::number_integer:
        return json.get<std::int64_t>();
    case Kind::number_unsigned: {
        const auto number = json.get<std::uint64_t>();
        if (number > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
            return static_cast<double>(number);
        return static_cast<std::int64_t>(number);
    }
    case Kind::number_float:
        return json.get<double>();
    case Kind::string:
        return json.get_ref<const std::string&>();
    case Kind::array: {
        std::vector<Value> values;
        values.reserve(json.size());
        for (const Json& each : json)
            values.push_back(to_value(each));
        return NSArray(std::move(values));
    }
    case Kind::object: {
        NSDictionary mapping = NSDictionary::dictionary();
        for (const auto& [key, value] : json.items())
            mapping.setObject(to_value(value), key);
        return mapping;
    }
    default:
        return nullptr;
    }
}

} // namespace qoro
