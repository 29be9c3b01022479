#include "app/Explore.h"

#include "app/Interruption.h"
#include "app/SearchState.h"
#include "app/WorkbenchInput.h"
#include "formats/InputError.h"
#include "workbench/explore/Catalogue.h"
#include "workbench/explore/Explored.h"
#include "workbench/explore/Invariants.h"
#include "workbench/explore/SessionStore.h"

#include <qoro/Version.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <utility>

namespace qoro
{

namespace
{

constexpr int Findings = 1;

void write_file(const std::filesystem::path& path, const std::string& text)
{
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    if (!file)
        throw InputError(path.string(), "", "can't be written");
}

void print(const std::string& text)
{
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0)
        throw std::runtime_error(std::string("standard output: ") + std::strerror(errno));
}

/// A search that is to be made.
struct Planned {
    std::string name;
    std::string device;
    /// Number of the ad among those of a tag; 0 if there is only one.
    std::size_t ad = 0;
    ScenarioText scenario;
};

void add_plans(const AdInput& input, const ExploreOptions& options, const std::string& device,
               std::vector<Planned>& plans)
{
    SimulatedAdOptions made = options.ad;
    if (!device.empty())
        made.parts.device = device_model(device);
    if (input.kind == InputKind::Tag) {
        if (!options.ads_of_tag)
            throw InputError(input.name, "", "this build cannot resolve a VAST tag; expected an ad file or a scenario");
        const std::vector<std::string> ads = options.ads_of_tag(input, made.parts.device);
        for (std::size_t n = 0; n < ads.size(); ++n)
            plans.push_back({.name = input.name,
                             .device = device,
                             .ad = ads.size() > 1 ? n + 1 : 0,
                             .scenario = ScenarioText(ads[n], input.name)});
    } else {
        BaseScenario base = base_scenario_of(input, made);
        plans.push_back({.name = base.file, .device = device, .scenario = std::move(base.scenario)});
    }
    if (made.parts.device)
        for (Planned& plan : plans)
            if (plan.device == device)
                plan.scenario.set_device(*made.parts.device);
}

std::vector<Planned> plans_of(const AdInput& input, const ExploreOptions& options)
{
    std::vector<Planned> plans;
    if (options.devices.empty())
        add_plans(input, options, "", plans);
    for (const std::string& device : options.devices)
        add_plans(input, options, device, plans);
    return plans;
}

SearchPart part_of(const Planned& plan, const ExploreOptions& options)
{
    SearchPart part;
    part.identity = {.program = QORO_VERSION_TEXT,
                     .ad = plan.name,
                     .number = plan.ad,
                     .device = plan.device,
                     .scenario = plan.scenario.text(),
                     .guard = options.guard,
                     .depth = options.search.depth,
                     .policy_seconds = options.search.policy_seconds};
    part.budget = options.search.sessions;
    part.shard = options.search.shard + 1;
    part.shards = options.search.shards;
    return part;
}

std::vector<Explored> explored(const AdInput& input, const ExploreOptions& options)
{
    std::vector<Explored> all;
    for (const Planned& plan : plans_of(input, options)) {
        Explored one{.setup = search_setup(plan.scenario, options.guard), .device = plan.device, .ad = plan.ad};
        SearchOptions search_options = options.search;
        search_options.shards = 1;
        search_options.shard = 0;
        one.result = explore_ad(one.setup, search_options);
        all.push_back(std::move(one));
    }
    return all;
}

int explore_catalogue(const ExploreOptions& options)
{
    std::size_t number = 0;
    for (std::string line; std::getline(std::cin, line);) {
        if (line.ends_with('\r'))
            line.pop_back();
        if (line.empty() || number++ % options.search.shards != options.search.shard)
            continue;
        const std::string id = catalogue_id(line);
        std::string result;
        try {
            CatalogueEntry entry = catalogue_entry(line);
            const AdInput input = entry.ad ? std::move(*entry.ad) : read_ad_input(entry.path);
            result = json_of(id, explored(input, options));
        } catch (const std::exception& error) {
            result = json_of_failure(id, error.what());
        }
        print(result + "\n");
    }
    return 0;
}

/// Searches whose sessions are kept: in a file, or for the output of a shard.
int explore_kept(const std::vector<Planned>& plans, const ExploreOptions& options)
{
    std::vector<SearchPart> wanted;
    wanted.reserve(plans.size());
    for (const Planned& plan : plans)
        wanted.push_back(part_of(plan, options));
    const Interruption interruption;
    SearchState state(options.state, std::move(wanted));
    std::vector<Explored> all;
    for (std::size_t n = 0; n < plans.size(); ++n) {
        Explored one{
            .setup = search_setup(plans[n].scenario, options.guard), .device = plans[n].device, .ad = plans[n].ad};
        SearchOptions with_store = options.search;
        with_store.store = &state.store(n);
        with_store.stop = [&state] {
            state.write_if_due();
            return Interruption::requested();
        };
        one.result = options.sharded ? search(one.setup.run, with_store) : explore_ad(one.setup, with_store);
        if (one.result.stopped) {
            state.write();
            if (!options.state.empty())
                std::cerr << "qoro-ad: interrupted; " << options.state
                          << " keeps the sessions, and the same command goes on\n";
            Interruption::end_program();
        }
        all.push_back(std::move(one));
    }
    state.write();
    if (options.sharded) {
        print(state.text());
        return 0;
    }
    return print_explored(options.file, all, options.json, options.folder);
}

} // namespace

int print_explored(const std::string& id, std::vector<Explored>& searches, bool json, const std::string& folder)
{
    std::size_t file = 0;
    if (!folder.empty()) {
        std::error_code failed;
        std::filesystem::create_directories(folder, failed);
        if (failed)
            throw InputError(folder, "", "can't be created: " + failed.message());
        for (Explored& each : searches)
            for (const SearchFinding& finding : each.result.findings) {
                const auto path =
                    std::filesystem::path(folder) / (std::to_string(++file) + "-" + finding.rule + ".json");
                write_file(path, scenario_of_course(each.setup, finding.course, finding.until).text());
                each.files.push_back(path.string());
            }
    }
    int status = 0;
    for (const Explored& each : searches) {
        if (!json)
            print(text_of(each, searches.size() > 1) + "\n");
        status = has_findings(each) ? Findings : status;
    }
    if (json)
        print(json_of(id, searches) + "\n");
    return status;
}

int explore_command(const ExploreOptions& options)
{
    if (options.jsonl)
        return explore_catalogue(options);
    if (options.file.empty())
        throw InputError("explore", "", "expected an AD, or --jsonl with a list of ads on standard input");
    const AdInput input = read_ad_input(options.file);
    if (!options.state.empty() || options.sharded)
        return explore_kept(plans_of(input, options), options);
    std::vector<Explored> all = explored(input, options);
    return print_explored(options.file, all, options.json, options.folder);
}

} // namespace qoro
