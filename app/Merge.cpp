#include "app/Explore.h"

#include "app/SearchState.h"
#include "formats/InputError.h"
#include "formats/InputFile.h"
#include "workbench/explore/Catalogue.h"
#include "workbench/explore/Explored.h"
#include "workbench/explore/Invariants.h"
#include "workbench/explore/SessionStore.h"

#include <qoro/Version.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <stdexcept>
#include <utility>

namespace qoro
{

namespace
{

constexpr int Findings = 1;

/// A file that is to be merged.
struct Input {
    std::string name;
    std::string text;
};

/// The shards of one search.
struct Shards {
    SearchPart whole;
    /// By number from 0: the file; empty for one that is missing.
    std::vector<std::string> files;
};

void add_part(SearchPart part, const std::string& file, std::vector<Shards>& searches)
{
    if (part.identity.program != QORO_VERSION_TEXT)
        throw InputError(file, "",
                         "it was written by version " + part.identity.program + ", this is " QORO_VERSION_TEXT);
    auto same = std::ranges::find_if(searches, [&](const Shards& each) {
        return each.whole.identity.ad == part.identity.ad && each.whole.identity.number == part.identity.number &&
               each.whole.identity.device == part.identity.device;
    });
    if (same == searches.end()) {
        searches.push_back({.whole = {.identity = part.identity, .budget = part.budget, .shards = part.shards},
                            .files = std::vector<std::string>(part.shards)});
        same = searches.end() - 1;
    }
    const auto refuse = [&](const std::string& why) {
        return InputError(file, "", "the shard is of another search than those before it: " + why);
    };
    if (const std::string why = difference_of(same->whole.identity, part.identity); !why.empty())
        throw refuse(why);
    if (part.shards != same->whole.shards)
        throw refuse("it is one of " + std::to_string(part.shards) + ", not of " + std::to_string(same->whole.shards));
    if (part.budget != same->whole.budget)
        throw refuse("its --budget is " + std::to_string(part.budget) + ", not " + std::to_string(same->whole.budget));
    if (part.shard < 1 || part.shard > part.shards)
        throw InputError(file, "", "there is no such shard");
    std::string& of_shard = same->files[part.shard - 1];
    if (!of_shard.empty())
        throw InputError(file, "", "shard " + std::to_string(part.shard) + " is also in " + of_shard);
    of_shard = file;
    same->whole.sessions.add_all(part.sessions);
}

void require_all(const std::vector<Shards>& searches)
{
    for (const Shards& search : searches) {
        std::string missing;
        for (std::size_t n = 0; n < search.files.size(); ++n)
            if (search.files[n].empty())
                missing +=
                    (missing.empty() ? "" : ", ") + std::to_string(n + 1) + "/" + std::to_string(search.files.size());
        if (!missing.empty())
            throw InputError(search.whole.identity.ad, "", "missing shards: " + missing);
    }
}

int merge_shards(const std::vector<Input>& inputs, const MergeOptions& options)
{
    std::vector<Shards> searches;
    for (const Input& input : inputs)
        for (SearchPart& part : read_parts(input.text, input.name))
            add_part(std::move(part), input.name, searches);
    require_all(searches);
    std::vector<Explored> all;
    std::size_t simulated = 0;
    for (Shards& shards : searches) {
        SearchPart& whole = shards.whole;
        Explored one{.setup =
                         search_setup(ScenarioText(whole.identity.scenario, whole.identity.ad), whole.identity.guard),
                     .device = whole.identity.device,
                     .ad = whole.identity.number};
        one.result = explore_ad(one.setup, {.depth = whole.identity.depth,
                                            .sessions = whole.budget,
                                            .jobs = options.jobs,
                                            .policy_seconds = whole.identity.policy_seconds,
                                            .store = &whole.sessions});
        simulated += one.result.simulated;
        all.push_back(std::move(one));
    }
    if (simulated > 0)
        std::cerr << "qoro-ad: " << simulated << " sessions were in no shard and have been simulated\n";
    return print_explored(searches.front().whole.identity.ad, all, options.json, options.folder);
}

int merge_results(const std::vector<Input>& inputs, const MergeOptions& options)
{
    CatalogueResults results;
    for (const Input& input : inputs)
        results.add(input.text, input.name);
    if (!options.list.empty()) {
        const std::vector<std::string> missing = results.missing(read_input_file(options.list));
        constexpr std::size_t Named = 10;
        std::string names;
        for (std::size_t n = 0; n < std::min(missing.size(), Named); ++n)
            names += (n == 0 ? "" : ", ") + missing[n];
        if (!missing.empty())
            throw InputError(options.list, "",
                             std::to_string(missing.size()) + " of its ads have no result: " + names +
                                 (missing.size() > Named ? " …" : ""));
    }
    const std::string text = results.text();
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0)
        throw std::runtime_error(std::string("standard output: ") + std::strerror(errno));
    return results.has_findings() || results.has_failures() ? Findings : 0;
}

} // namespace

int merge_command(const MergeOptions& options)
{
    std::vector<Input> inputs;
    for (const std::string& file : options.files)
        inputs.push_back({.name = file == "-" ? "stdin" : file, .text = read_sessions(file)});
    const auto shards = std::ranges::count_if(inputs, [](const Input& each) { return is_search_part(each.text); });
    if (shards != 0 && shards != std::ssize(inputs))
        throw InputError("merge", "", "expected either shards or results of a catalogue, got both");
    if (shards == 0 && (options.json || !options.folder.empty()))
        throw InputError("merge", "", "--format and --out are for shards; results of a catalogue are lines of JSON");
    return shards > 0 ? merge_shards(inputs, options) : merge_results(inputs, options);
}

} // namespace qoro
