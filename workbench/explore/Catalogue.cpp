#include "workbench/explore/Catalogue.h"

#include "formats/InputError.h"
#include "workbench/detail/Json.h"

#include <cstdint>
#include <cstdio>

namespace qoro
{

using detail::Json;

namespace
{

/// FNV-1a: the same on every machine.
std::string id_of_text(std::string_view text)
{
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const char each : text)
        hash = (hash ^ static_cast<unsigned char>(each)) * 0x100000001B3;
    std::string id(20, '\0');
    const int length = std::snprintf(id.data(), id.size(), "ad-%016llx", static_cast<unsigned long long>(hash));
    id.resize(static_cast<std::size_t>(length));
    return id;
}

template <typename Visit>
void visit_lines(std::string_view text, const Visit& visit)
{
    for (std::size_t number = 1; !text.empty(); ++number) {
        const std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        if (!line.empty())
            visit(line, number);
    }
}

} // namespace

std::string catalogue_id(std::string_view line)
{
    if (!line.starts_with('{'))
        return std::string(line);
    const Json json = Json::parse(line, nullptr, false);
    if (json.is_object())
        for (const char* key : {"id", "ad"})
            if (const auto found = json.find(key); found != json.end() && found->is_string())
                return found->get<std::string>();
    return id_of_text(line);
}

CatalogueEntry catalogue_entry(std::string_view line)
{
    if (!line.starts_with('{'))
        return {.path = std::string(line)};
    Json json = Json::parse(line, nullptr, false);
    if (!json.is_object())
        throw InputError(catalogue_id(line), "", "expected a path or a JSON object in one line");
    const auto ad = json.find("ad");
    if (ad != json.end() && ad->is_string())
        return {.path = ad->get<std::string>()};
    const bool is_scenario = ad != json.end() || json.contains("steps");
    json.erase("id");
    return {.ad = AdInput{.kind = is_scenario ? InputKind::Scenario : InputKind::Ad,
                          .name = catalogue_id(line),
                          .text = json.dump()}};
}

void CatalogueResults::add(std::string_view text, const std::string& file)
{
    visit_lines(text, [&](std::string_view line, std::size_t number) {
        const Json json = Json::parse(line, nullptr, false);
        const auto id = json.is_object() ? json.find("id") : json.end();
        if (!json.is_object() || id == json.end() || !id->is_string() ||
            !(json.contains("searches") || json.contains("error")))
            throw InputError(file, "",
                             "line " + std::to_string(number) + ": expected a result, as explore --jsonl writes it");
        const auto [known, is_new] =
            results_.try_emplace(id->get<std::string>(), Result{.line = std::string(line), .file = file});
        if (!is_new)
            throw InputError(file, "",
                             "line " + std::to_string(number) + ": " + known->first + " has a result already, in " +
                                 known->second.file);
        has_failures_ = has_failures_ || json.contains("error");
        has_findings_ = has_findings_ || json.value("findings", 0) > 0;
    });
}

std::vector<std::string> CatalogueResults::missing(std::string_view list) const
{
    std::vector<std::string> missing;
    visit_lines(list, [&](std::string_view line, std::size_t) {
        std::string id = catalogue_id(line);
        if (!results_.contains(id))
            missing.push_back(std::move(id));
    });
    return missing;
}

std::string CatalogueResults::text() const
{
    std::string text;
    for (const auto& [id, result] : results_)
        text += result.line + "\n";
    return text;
}

} // namespace qoro
