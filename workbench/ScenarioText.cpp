#include "workbench/ScenarioText.h"

#include "formats/InputError.h"
#include "workbench/detail/Json.h"

#include <utility>

namespace qoro
{

using detail::Json;

/// Copied only: a move of JSON may throw.
struct ScenarioText::Document {
    explicit Document(const Json& content = Json()) : json(content) {}
    Document(const Document&) = default;
    Document& operator=(const Document&) = default;
    ~Document() = default;

    Json json;
};

namespace
{

/// The value at a place; null if there is none.
template <typename AnyJson>
AnyJson* find(AnyJson& json, const std::string& path)
{
    const Json::json_pointer place(path);
    return json.contains(place) ? &json.at(place) : nullptr;
}

} // namespace

ScenarioText::ScenarioText(std::string_view text, const std::string& file) : document_(std::make_unique<Document>())
{
    document_->json = Json::parse(text, nullptr, false);
    if (!document_->json.is_object())
        throw InputError(file, "", "expected a scenario: a JSON object");
}

ScenarioText::ScenarioText(const ScenarioText& other) : document_(std::make_unique<Document>(*other.document_))
{
}

ScenarioText& ScenarioText::operator=(const ScenarioText& other)
{
    if (this != &other)
        *document_ = *other.document_;
    return *this;
}

ScenarioText::ScenarioText(ScenarioText&& other) noexcept = default;
ScenarioText& ScenarioText::operator=(ScenarioText&& other) noexcept = default;
ScenarioText::~ScenarioText() = default;

std::string ScenarioText::text() const
{
    return document_->json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

Scenario ScenarioText::scenario() const
{
    return read_scenario(document_->json.dump(-1, ' ', false, Json::error_handler_t::replace), "scenario");
}

bool ScenarioText::has(const std::string& path) const
{
    try {
        return find(std::as_const(document_->json), path) != nullptr;
    } catch (const Json::exception&) {
        return false;
    }
}

std::optional<std::string> ScenarioText::value(const std::string& path) const
{
    const Json* found = find(std::as_const(document_->json), path);
    return found ? std::optional(found->dump(-1, ' ', false, Json::error_handler_t::replace)) : std::nullopt;
}

std::optional<std::string> ScenarioText::string(const std::string& path) const
{
    const Json* found = find(std::as_const(document_->json), path);
    return found && found->is_string() ? std::optional(found->get<std::string>()) : std::nullopt;
}

void ScenarioText::set(const std::string& path, const std::string& json)
{
    const Json::json_pointer place(path);
    const Json* const parent = find(std::as_const(document_->json), place.parent_pointer().to_string());
    if (parent && parent->is_array() && !document_->json.contains(place))
        return;
    document_->json[place] = Json::parse(json);
}

void ScenarioText::remove(const std::string& path)
{
    const Json::json_pointer place(path);
    if (path.empty() || !document_->json.contains(place))
        return;
    Json& parent = document_->json.at(place.parent_pointer());
    if (parent.is_array())
        parent.erase(static_cast<std::size_t>(std::stoul(place.back())));
    else
        parent.erase(place.back());
}

std::vector<std::string> ScenarioText::children(const std::string& path) const
{
    std::vector<std::string> paths;
    const Json* found = find(std::as_const(document_->json), path);
    if (!found || !found->is_structured())
        return paths;
    for (const auto& [key, value] : found->items())
        paths.push_back(path_under(path, key));
    return paths;
}

void ScenarioText::set_device(const DeviceModel& model, UIDeviceOrientation held)
{
    const Json size{model.screen.width, model.screen.height};
    Json& json = document_->json;
    json["device"]["screen"] = size;
    json["device"]["phone"] = model.phone;
    json["host"]["rootView"] = size;
    Json& steps = json["steps"];
    if (held == UIDeviceOrientationPortrait || !steps.is_array())
        return;
    // A controller that is created turns the device upright: the device is turned before the ad opens.
    steps.insert(
        steps.begin(),
        Json{{"at", 0},
             {"device", {{"orientation", static_cast<int>(held)}, {"statusBarOrientation", static_cast<int>(held)}}}});
}

void ScenarioText::lock_host(bool landscape)
{
    document_->json["host"]["autorotates"] = landscape ? Json{3, 4} : Json::array({1});
}

void ScenarioText::add_stall(double at, double seconds)
{
    document_->json["video"]["stalls"].push_back(Json::array({at, seconds}));
}

void ScenarioText::fail_video(double at)
{
    document_->json["video"]["errorForGood"] = at;
}

void ScenarioText::fail_answer(const std::string& address, const std::string& reason)
{
    document_->json["net"][address] = {{"fail", reason}};
}

void ScenarioText::delay_answer(const std::string& address, double seconds)
{
    document_->json["net"][address]["after"] = seconds;
}

void ScenarioText::clear_steps()
{
    document_->json["steps"] = Json::array();
}

void ScenarioText::add_step(double at, const std::string& key, const std::string& json)
{
    document_->json["steps"].push_back(Json{{"at", at}, {key, Json::parse(json)}});
}

std::size_t ScenarioText::steps() const
{
    const Json* found = find(std::as_const(document_->json), "/steps");
    return found ? found->size() : 0;
}

double ScenarioText::end() const
{
    double end = 0;
    if (const Json* found = find(std::as_const(document_->json), "/steps"); found && found->is_array())
        for (const Json& step : *found)
            if (step.is_object() && step.contains("at") && step["at"].is_number())
                end = step["at"].get<double>();
    return end;
}

bool ScenarioText::operator==(const ScenarioText& other) const
{
    return document_->json == other.document_->json;
}

std::string path_under(const std::string& path, std::string_view key)
{
    std::string whole = path + '/';
    for (const char c : key)
        if (c == '~')
            whole += "~0";
        else if (c == '/')
            whole += "~1";
        else
            whole += c;
    return whole;
}

} // namespace qoro
