#include "app/CommandLine.h"

#include "app/DesktopProgram.h"
#include "workbench/check/Rules.h"

#ifdef QORO_DESKTOP
#include "app/Play.h"
#include "app/TagFetch.h"
#include "desktop/media/VideoDiscovery.h"
#include "desktop/media/VideoStills.h"
#include "desktop/text/PangoText.h"
#endif

#include <qoro/Version.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace qoro
{

CommandLine::CommandLine() : app_("Plays and simulates full-screen video ads.", "qoro-ad")
{
    app_.require_subcommand(1);
    app_.set_version_flag("--version", "qoro-ad " QORO_VERSION_TEXT, "Print the version and exit");
#ifdef QORO_DESKTOP
    add_play_options(*app_.add_subcommand("play", "Play an ad in a window"), play_);
    add_import_options(*app_.add_subcommand("import"), import_);
    add_cache_options(*app_.add_subcommand("cache"), cache_);
#endif
#ifdef QORO_DESKTOP
    simulate_.ad.parts.discover = [](const std::string& path) -> std::optional<VideoFacts> {
        const auto found = discover_video(path);
        if (!found)
            return std::nullopt;
        std::error_code error;
        const auto bytes = std::filesystem::file_size(path, error);
        const double kilobits = error ? 0 : static_cast<double>(bytes) * 8 / 1000;
        return VideoFacts{.duration = found->duration,
                          .size = found->size,
                          .bitrate = found->duration > 0 ? kilobits / found->duration : 0};
    };
    simulate_.ad.fetch_tag = fetch_tag_documents;
#endif
    report_.ad = simulate_.ad;
#ifdef QORO_DESKTOP
    report_.stills_of = [](const std::string& path, std::size_t most) {
        constexpr int StillWidth = 480;
        std::vector<VideoStill> stills;
        for (TakenStill& taken : take_stills(path, most, StillWidth))
            stills.push_back({taken.at, std::move(taken.bytes)});
        return stills;
    };
    report_.measure = [pango = std::shared_ptr<PangoText>()](const std::string& text, const FontSpec& font) mutable {
        constexpr CGSize Unlimited{1e6, 1e6};
        if (!pango)
            pango = std::make_shared<PangoText>();
        return pango->measure(NSString(text), font, Unlimited);
    };
#endif
    add_report_options(*app_.add_subcommand("report"), report_);
#ifdef QORO_DESKTOP
    studio_.report = report_;
    add_studio_options(*app_.add_subcommand("studio"), studio_);
#endif
    add_simulate_options(*app_.add_subcommand("simulate"), simulate_);
    check_.input = simulate_.ad;
    check_.measure = report_.measure;
    add_check_options(*app_.add_subcommand("check"), check_);
    explore_.ad = simulate_.ad;
#ifdef QORO_DESKTOP
    explore_.ads_of_tag = scenarios_of_tag;
#endif
    add_explore_options(*app_.add_subcommand("explore"), explore_);
    shrink_.ad = simulate_.ad;
    shrink_.measure = report_.measure;
    add_shrink_options(*app_.add_subcommand("shrink"), shrink_);
    add_merge_options(*app_.add_subcommand("merge"), merge_);
}

bool CommandLine::needs_no_desktop() const
{
    if (app_.got_subcommand("simulate"))
        return simulate_.ad.parts.ad_file.empty() && std::ranges::all_of(simulate_.files, is_scenario_file);
    if (app_.got_subcommand("explore"))
        return !explore_.jsonl && is_scenario_file(explore_.file);
    if (app_.got_subcommand("shrink"))
        // Rules look at titles, which the desktop measures.
        return !rule_named(shrink_.condition) && is_scenario_file(shrink_.input);
    return app_.got_subcommand("merge");
}

int CommandLine::run() const
{
#ifdef QORO_DESKTOP
    if (app_.got_subcommand("play"))
        return play(play_);
    if (app_.got_subcommand("import"))
        return import_command(import_);
    if (app_.got_subcommand("cache"))
        return cache_command(cache_);
    if (app_.got_subcommand("studio"))
        return studio_command(studio_);
#endif
    if (app_.got_subcommand("check"))
        return check_command(check_);
    if (app_.got_subcommand("explore"))
        return explore_command(explore_);
    if (app_.got_subcommand("merge"))
        return merge_command(merge_);
    if (app_.got_subcommand("report"))
        return report_command(report_);
    if (app_.got_subcommand("shrink"))
        return shrink_command(shrink_);
    return simulate_command(simulate_);
}

} // namespace qoro
