#include "app/WorkbenchInput.h"

#include "app/Report.h"
#include "formats/InputError.h"
#include "record/MendedRecording.h"
#include "record/RecordedScenario.h"
#include "record/Recording.h"

#include <iostream>
#include <utility>

namespace qoro
{

namespace
{

std::vector<PlacedRemark> placed(const std::vector<std::string>& lines, const std::string& file)
{
    std::vector<PlacedRemark> remarks;
    remarks.reserve(lines.size());
    for (const std::string& line : lines)
        remarks.push_back(placed_remark(line, file));
    return remarks;
}

/// The media files that are beside a tag's file.
std::vector<KnownMediaFile> known_of(const std::vector<TagDocuments::MediaFile>& media_files, const BaseScenario& base,
                                     const SimulatedAdOptions& options)
{
    std::vector<KnownMediaFile> known;
    for (const TagDocuments::MediaFile& said : media_files)
        if (const std::string file = video_file(base, said.address); !file.empty())
            if (const auto real = options.parts.discover(file))
                known.push_back({said, *real});
    return known;
}

} // namespace

void mend_recording(AdInput& input)
{
    if (auto mended = mended_recording(input.text, input.name)) {
        std::cerr << "qoro-ad: " + input.name + ": " + mended->lost + "\n";
        input.text = std::move(mended->text);
    }
}

AdScenario scenario_of(const AdInput& input, const SimulatedAdOptions& options)
{
    AdScenarioParts parts = options.parts;
    parts.ad_file = input.name;
    parts.text = input.text;
    if (input.kind == InputKind::Ad)
        return scenario_of_ad(parts);
    if (!parts.faults.answers.empty())
        throw InputError(input.name, "", "a tag has no --page or --icon of its own; change the written scenario");
    if (!options.fetch_tag)
        throw InputError(input.name, "", "this build cannot resolve a VAST tag; expected an ad file or a scenario");
    return scenario_of_tag(parts, options.fetch_tag(input, parts.device));
}

BaseScenario read_base_scenario(const std::string& named, const SimulatedAdOptions& options)
{
    return base_scenario_of(read_ad_input(named), options);
}

BaseScenario base_scenario_of(AdInput input, const SimulatedAdOptions& options)
{
    if (input.kind == InputKind::Scenario) {
        mend_recording(input);
        // A strict replay has nothing to vary.
        if (is_recording(input.text))
            input.text = scenario_of_recording(input.text, input.name);
        // Complains about the file's own mistakes.
        read_scenario(input.text, input.name);
        ScenarioText scenario(input.text, input.name);
        return {.kind = input.kind, .file = input.name, .text = std::move(input.text), .scenario = std::move(scenario)};
    }
    std::optional<VideoFacts> video;
    bool unreadable = false;
    SimulatedAdOptions watched = options;
    if (options.parts.discover)
        watched.parts.discover = [&](const std::string& path) {
            video = options.parts.discover(path);
            unreadable = !video || !(video->duration > 0);
            return video;
        };
    std::vector<TagDocuments::MediaFile> media_files;
    if (options.fetch_tag)
        watched.fetch_tag = [&](const AdInput& tag, const std::optional<DeviceModel>& device) {
            TagDocuments documents = options.fetch_tag(tag, device);
            media_files = documents.media_files;
            return documents;
        };
    const AdScenario made = scenario_of(input, watched);
    BaseScenario base{.kind = input.kind,
                      .file = input.name,
                      .text = std::move(input.text),
                      .scenario = ScenarioText(made.text, input.name),
                      .remarks = placed(made.remarks, input.name),
                      .missing_files = placed(made.missing_files, input.name),
                      .video = unreadable ? std::nullopt : video,
                      .video_is_unreadable = unreadable};
    // An address has no files beside it.
    if (options.parts.discover && !base.text.empty())
        base.media_files = known_of(media_files, base, options);
    return base;
}

} // namespace qoro
