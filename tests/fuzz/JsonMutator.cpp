// Usually mutates JSON inputs as JSON: byte changes alone rarely pass the parser.

#include "tests/fuzz/Mutator.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace
{

using Json = nlohmann::ordered_json;
using Random = std::minstd_rand;

std::size_t below(std::size_t count, Random& random)
{
    return random() % count;
}

void collect(Json& json, std::vector<Json*>& nodes)
{
    nodes.push_back(&json);
    if (json.is_structured())
        for (Json& each : json)
            collect(each, nodes);
}

/// Boundary values of numbers and texts, and a value of every type.
Json extreme(Random& random)
{
    static const Json values = Json::parse(R"([
        null, true, false, 0, 1, -1, 2, 3, 4, 0.5, -0.25, 100, 2147483647, -2147483648, 2147483648, 16777217,
        9223372036854775807, -9223372036854775808, 18446744073709551615, 1e-300, 1e-45, 3.5e38, -3.5e38, 1e300, -1e300,
        "", "c", "1", "-1", "1e999", "http://t/{CurrentTime}", "%", [], {}, [[]], [null]])");
    return values[below(values.size(), random)];
}

void mutate_text(Json& json)
{
    std::string text = json.get<std::string>();
    const std::size_t size = text.size();
    text.resize(size + 20);
    text.resize(LLVMFuzzerMutate(reinterpret_cast<std::uint8_t*>(text.data()), size, text.size()));
    json = text;
}

void mutate_list_or_object(Json& json, Json donor, Random& random)
{
    if (json.empty()) {
        json = std::move(donor);
        return;
    }
    const auto place = std::next(json.begin(), static_cast<std::ptrdiff_t>(below(json.size(), random)));
    const auto other = std::next(json.begin(), static_cast<std::ptrdiff_t>(below(json.size(), random)));
    switch (below(3, random)) {
    case 0:
        json.erase(place);
        break;
    case 1:
        std::swap(*place, *other);
        break;
    default:
        if (json.is_array())
            json.insert(place, std::move(donor));
        else
            *place = std::move(donor);
    }
}

void mutate(Json& json, Random& random)
{
    std::vector<Json*> nodes;
    collect(json, nodes);
    Json& node = *nodes[below(nodes.size(), random)];
    Json donor = *nodes[below(nodes.size(), random)];
    switch (below(4, random)) {
    case 0:
        node = extreme(random);
        break;
    case 1:
        node = std::move(donor);
        break;
    default:
        if (node.is_structured())
            mutate_list_or_object(node, std::move(donor), random);
        else if (node.is_string())
            mutate_text(node);
        else
            node = extreme(random);
    }
}

} // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most, unsigned seed)
{
    Random random(seed);
    Json json = Json::parse(data, data + size, nullptr, false);
    if (json.is_discarded() || below(8, random) == 0)
        return LLVMFuzzerMutate(data, size, most);
    for (std::size_t changes = 1 + below(3, random); changes > 0; --changes)
        mutate(json, random);
    const std::string text = json.dump(-1, ' ', false, Json::error_handler_t::replace);
    if (text.size() > most)
        return LLVMFuzzerMutate(data, size, most);
    std::ranges::copy(text, data);
    return text.size();
}
