#include "app/Import.h"

#include "app/SimulatedAd.h"
#include "app/TagFetch.h"
#include "formats/AdInput.h"
#include "formats/InputError.h"
#include "vast/AdDescription.h"
#include "vast/Describe.h"
#include "vast/Macros.h"
#include "vast/Resolver.h"

#include <CLI/CLI.hpp>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iostream>

namespace qoro
{

namespace
{

constexpr const char* Description = "Resolve a VAST tag: describe it, or write it as the folder of an ad";

constexpr const char* Advice =
    "Wrappers are followed as a player follows them; no tracker is requested. docs/vast.md says what is supported.\n\n"
    "Exit status: 0; 1 the tag has no ad to write; 2 the tag is no VAST document, or an option is not usable.\n";

vast::Resolution resolve(const ImportOptions& options)
{
    return fetch_tag(read_tag_input(options.tag), options.device).resolution;
}

/// What an ad file has for trackers of VAST: the controller's own lists, by the name of VAST's event.
struct TrackingList {
    std::string_view event;
    const char* property;
};
constexpr std::array<TrackingList, 5> TrackingLists{{{"mute", "arrayMuteTrackingUrls"},
                                                     {"unmute", "arrayUnmuteTrackingUrls"},
                                                     {"pause", "arrayPauseTrackingUrls"},
                                                     {"resume", "arrayResumeTrackingUrls"},
                                                     {"closeLinear", "arrayCloseTrackingUrls"}}};
constexpr std::array<std::string_view, 5> Milestones{"start", "firstQuartile", "midpoint", "thirdQuartile", "complete"};

/// An ad as files, and what of its tag the files do not contain.
struct AdFiles {
    std::string ad;
    std::string page;
    /// A line each.
    std::vector<std::string> left_out;
};

void leave_out(AdFiles& files, const std::string& what, const std::vector<std::string>& addresses)
{
    for (const std::string& address : addresses)
        files.left_out.push_back(what + ": an ad file has no such tracker: " + address);
}

void add_trackers(nlohmann::ordered_json& ad, AdFiles& files, const vast::Linear& linear)
{
    for (const vast::Tracker& tracker : linear.trackers) {
        if (tracker.address.empty())
            continue;
        const auto* const list = std::ranges::find(TrackingLists, tracker.event, &TrackingList::event);
        const double seconds = tracker.offset ? tracker.offset->seconds(linear.duration).value_or(NAN) : NAN;
        if (std::ranges::find(Milestones, tracker.event) != Milestones.end())
            ad["dicTrackingUrls"][tracker.event].push_back(tracker.address);
        else if (list != TrackingLists.end())
            ad[list->property].push_back(tracker.address);
        else if (seconds == std::floor(seconds))
            ad["dicProgressTrackingUrls"][std::to_string(static_cast<int>(seconds))].push_back(tracker.address);
        else
            leave_out(files, tracker.event, {tracker.address});
    }
    // The controller looks at the offsets only where there is a milestone.
    if (ad.contains("dicProgressTrackingUrls") && !ad.contains("dicTrackingUrls"))
        ad["dicTrackingUrls"] = {{"start", nlohmann::ordered_json::array()}};
    if (!linear.click_tracking.empty() && ad.contains("arrayButtonsInfo"))
        ad["arrayButtonsInfo"][0]["btn_tracking_urls"] = linear.click_tracking;
}

/// @param page address of the page
AdFiles files_of(const vast::ResolvedAd& resolved, const std::vector<vast::Ignored>& outside, const std::string& page)
{
    const vast::Ad& ad = resolved.ad;
    AdFiles files;
    nlohmann::ordered_json json = nlohmann::ordered_json::parse(ad_description(resolved, {.page = page}));
    add_trackers(json, files, *ad.linear);
    files.ad = json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
    files.page = ad_page(resolved, {.page = page});
    if (vast::expand(files.ad, {}) != files.ad)
        files.left_out.emplace_back("macros: those of VAST are sent as they are, because an ad file has its own");
    leave_out(files, "Impression", ad.impressions);
    leave_out(files, "Error", ad.errors);
    leave_out(files, "Viewable", ad.viewable.viewable);
    leave_out(files, "NotViewable", ad.viewable.not_viewable);
    leave_out(files, "ViewUndetermined", ad.viewable.undetermined);
    leave_out(files, "CustomClick", ad.linear->custom_click);
    for (const vast::Companion& companion : ad.companions) {
        leave_out(files, "CompanionClickTracking", companion.click_tracking);
        leave_out(files, "creativeView of a companion", companion.creative_view);
    }
    for (const vast::Icon& icon : ad.linear->icons) {
        leave_out(files, "IconClickTracking", icon.click_tracking);
        leave_out(files, "IconViewTracking", icon.view_tracking);
    }
    for (const vast::Verification& verification : ad.verifications)
        leave_out(files, "verificationNotExecuted", verification.not_executed);
    for (const std::vector<vast::Ignored>* list : {&outside, &ad.ignored})
        for (const vast::Ignored& ignored : *list)
            files.left_out.push_back(ignored.path + ": " + ignored.element + ": " + ignored.why);
    return files;
}

void write_file(const std::filesystem::path& path, const std::string& text)
{
    if (std::filesystem::exists(path))
        throw InputError(path.string(), "", "the file exists; remove it, or choose another folder with --out");
    std::ofstream file(path, std::ios::binary);
    file << text;
    if (!file.flush())
        throw InputError(path.string(), "", "the file could not be written");
}

void write_ad(const std::filesystem::path& folder, const AdFiles& files)
{
    std::error_code failed;
    std::filesystem::create_directories(folder, failed);
    if (failed)
        throw InputError(folder.string(), "", failed.message());
    std::string left_out;
    for (const std::string& line : files.left_out)
        left_out += line + "\n";
    write_file(folder / "ad.json", files.ad);
    write_file(folder / "page.html", files.page);
    write_file(folder / "left-out.txt", left_out);
    std::cout << (folder / "ad.json").string() << "\n" << left_out;
}

/// An ad in the folder itself, or a pod's in folders in it.
void write_ads(const vast::Resolution& resolution, const std::filesystem::path& folder)
{
    for (std::size_t n = 0; n < resolution.ads.size(); ++n)
        write_ad(resolution.ads.size() == 1 ? folder : folder / ("ad-" + std::to_string(n + 1)),
                 files_of(resolution.ads[n], resolution.ignored, "page.html"));
}

} // namespace

void add_import_options(CLI::App& command, ImportOptions& options)
{
    command.description(Description);
    command.footer(Advice);
    command.add_option("tag", options.tag, "The tag: a file, - for standard input, or an address of http or https")
        ->type_name("TAG")
        ->required();
    command.add_flag("--describe", options.describe, "Print what the tag leads to, as a JSON object");
    command
        .add_option("--out", options.out_folder,
                    "Write ad.json, page.html and left-out.txt into this folder, or folders ad-1, ad-2 … for a pod")
        ->type_name("DIR");
    add_device_option(command, options.device, "The device whose screen decides which file of the video is chosen");
}

int import_command(const ImportOptions& options)
{
    if (options.describe != options.out_folder.empty())
        throw InputError("import", "", "expected either --describe or --out DIR");
    const vast::Resolution resolution = resolve(options);
    if (options.describe) {
        std::cout << vast::describe(resolution) << std::flush;
        return 0;
    }
    if (resolution.ads.empty()) {
        std::cerr << "qoro-ad: " << options.tag << ": no ad: " << resolution.why << " (VAST error " << *resolution.error
                  << ")\n";
        return 1;
    }
    write_ads(resolution, options.out_folder);
    return 0;
}

std::vector<std::string> scenarios_of_tag(const AdInput& tag, const std::optional<DeviceModel>& device)
{
    const vast::Resolution resolution = fetch_tag(tag, device).resolution;
    if (resolution.ads.empty())
        throw InputError(tag.name, "", "no ad: " + resolution.why);
    const std::string page = "http://localhost/page.html";
    std::vector<std::string> scenarios;
    for (const vast::ResolvedAd& each : resolution.ads) {
        const AdFiles files = files_of(each, resolution.ignored, page);
        nlohmann::ordered_json scenario;
        if (each.ad.linear->duration)
            scenario["video"] = {{"duration", *each.ad.linear->duration}};
        scenario["net"][page] = {{"body", files.page}};
        scenario["ad"] = nlohmann::ordered_json::parse(files.ad);
        scenario["steps"] = nlohmann::ordered_json::array({nlohmann::ordered_json{{"open", 0}}});
        scenarios.push_back(scenario.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
    }
    return scenarios;
}

} // namespace qoro
