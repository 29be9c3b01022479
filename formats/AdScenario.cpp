#include "formats/AdScenario.h"

#include "formats/AdAddresses.h"
#include "formats/AdFile.h"
#include "formats/AdFolder.h"
#include "formats/AdRemarks.h"
#include "formats/Base64.h"
#include "formats/InputError.h"
#include "formats/InputFile.h"
#include "formats/Steps.h"
#include "formats/World.h"
#include "formats/detail/Json.h"
#include "platform/AddressParts.h"
#include "platform/Numbers.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <memory>
#include <string_view>
#include <utility>

namespace qoro
{

namespace
{

using detail::Json;

constexpr const char* Server = "http://ad.example";
/// The signature of a picture (PNG, section 5.2), which is all that the simulator looks at.
constexpr std::string_view PictureBegins = "\x89PNG\r\n\x1a\n";
/// Seconds after the end of the video at which the viewer closes the ad, and from then until the host releases it.
constexpr double CloseAfter = 2;
constexpr double ReleaseAfter = 5;

/// Composes one scenario.
class Composer
{
public:
    explicit Composer(const AdScenarioParts& parts)
        : parts_(parts), folder_(std::filesystem::absolute(parts.ad_file).parent_path().string())
    {
    }

    AdScenario compose()
    {
        const std::string text = parts_.text ? *parts_.text : read_input_file(parts_.ad_file);
        const auto ad = read_ad(text, parts_.ad_file, AdTypes::Strict);
        require_playable(*ad, parts_.ad_file);
        Json json = detail::parse_json(text, parts_.ad_file);
        made_.remarks = ad_remarks(*ad, parts_.ad_file);
        made_.missing_files = missing_files(*ad, parts_.ad_file, folder_);
        visit_addresses(*ad, [&](AdAddressUse use, const std::string& path, const std::string& address) {
            const std::string absolute = address_on_server(address, Server);
            if (const Json::json_pointer place(path); json.contains(place))
                json[place] = absolute;
            answer(use, path, address, absolute);
        });
        const Json video = video_of(*ad);
        return scenario(std::move(json), "video", video);
    }

    AdScenario compose(const TagDocuments& tag)
    {
        const auto answer = [](const TagDocuments::Answer& given) {
            return given.failure.empty() ? body_of(given.body) : Json{{"fail", given.failure}};
        };
        for (const auto& [address, given] : tag.answers)
            net_[address] = answer(given);
        net_[tag.address] = answer(tag.document);
        for (const std::string& address : tag.pictures)
            net_[address] = body_of(PictureBegins);
        if (tag.videos.empty())
            remark("", "the tag leads to no ad: the scenario shows why");
        const Json videos = videos_of(tag);
        return scenario({{"vast", tag.address}}, "videos", videos);
    }

private:
    /// @param key of the videos' behaviour
    AdScenario scenario(Json ad, const char* key, const Json& behaviour)
    {
        end_ = std::ceil(end_ + CloseAfter);
        made_.text = Json{{"device", device()}, {"host", host()},      {"net", std::move(net_)},
                          {key, behaviour},     {"ad", std::move(ad)}, {"steps", steps()}}
                         .dump(2) +
                     "\n";
        return std::move(made_);
    }

    void remark(const std::string& path, const std::string& what)
    {
        made_.remarks.emplace_back(InputError(parts_.ad_file, path, what).what());
    }

    CGSize screen() const { return parts_.device ? parts_.device->screen : CGSize{375, 812}; }

    Json device() const
    {
        return {{"screen", {screen().width, screen().height}}, {"phone", !parts_.device || parts_.device->phone}};
    }

    /// The host of a played ad.
    Json host() const
    {
        return {{"autorotates", {1, 3, 4}},
                {"rootView", {screen().width, screen().height}},
                {"parent", true},
                {"guard", true},
                {"trackerLimit", true}};
    }

    void answer(AdAddressUse use, const std::string& path, const std::string& address, const std::string& absolute)
    {
        if (path == "/strVideoUrl" || use == AdAddressUse::Tracker)
            return;
        const auto fault = parts_.faults.answers.find(std::string_view(path).substr(1));
        Json given = Json::object();
        if (fault != parts_.faults.answers.end() && !fault->second.failure.empty())
            given["fail"] = fault->second.failure;
        else if (AddressParts(address).names_no_server())
            given = file_answer(use, name_in_folder(address));
        else if (use == AdAddressUse::Content)
            remark(path, "not a file of the ad's folder: the simulated server answers without content");
        if (fault != parts_.faults.answers.end() && fault->second.after > 0)
            given["after"] = fault->second.after;
        if (!given.empty())
            net_[absolute] = std::move(given);
    }

    Json file_answer(AdAddressUse use, const std::filesystem::path& name) const
    {
        if (!is_file_in_folder(name, folder_))
            return {{"fail", "no such file"}};
        // What a click-through leads to is not read.
        if (use == AdAddressUse::Target)
            return Json::object();
        return body_of(read_input_file((std::filesystem::path(folder_) / name).string()));
    }

    static Json body_of(std::string_view bytes)
    {
        if (NSString::with_utf8(bytes) && bytes.find('\0') == std::string::npos)
            return {{"body", bytes}};
        return {{"body64", to_base64(bytes)}};
    }

    /// The facts of the ad's video; absent for one that is not a file of the folder, or none at all.
    std::optional<VideoFacts> facts_of(const QoroVideoAd& ad)
    {
        const std::string& address = ad.strVideoUrl.text();
        const std::filesystem::path name = name_in_folder(address);
        if (!AddressParts(address).names_no_server()) {
            if (!parts_.faults.duration)
                remark("/strVideoUrl", "not a file of the ad's folder: " + shortest_text(VideoSetup().duration) +
                                           " s are assumed; set --video duration=SECONDS");
            return std::nullopt;
        }
        if (!is_file_in_folder(name, folder_)) {
            fails_ = true;
            return std::nullopt;
        }
        if (!parts_.discover) {
            if (!parts_.faults.duration)
                throw InputError(parts_.ad_file, "/strVideoUrl",
                                 "this build cannot read videos: expected --video duration=SECONDS");
            return std::nullopt;
        }
        const auto facts = parts_.discover((std::filesystem::path(folder_) / name).string());
        if (!facts || !(facts->duration > 0)) {
            remark("/strVideoUrl", "no video that can be played: " + name.string());
            fails_ = true;
            return std::nullopt;
        }
        return facts;
    }

    void check_proportions(const QoroVideoAd& ad, CGSize size)
    {
        constexpr double Tolerance = 0.01;
        if (!(ad.fVideoWidth > 0 && ad.fVideoHeight > 0 && size.width > 0 && size.height > 0))
            return;
        const double given = static_cast<double>(ad.fVideoWidth) / static_cast<double>(ad.fVideoHeight);
        const double real = size.width / size.height;
        if (std::abs(given / real - 1) > Tolerance)
            remark("/fVideoWidth", shortest_text(static_cast<double>(ad.fVideoWidth)) + " x " +
                                       shortest_text(static_cast<double>(ad.fVideoHeight)) +
                                       " has other proportions than the video, " + shortest_text(size.width) + " x " +
                                       shortest_text(size.height));
    }

    Json video_of(const QoroVideoAd& ad)
    {
        const AdFaults& faults = parts_.faults;
        VideoSetup setup;
        if (ad.strVideoUrl.length() > 0)
            if (const auto facts = facts_of(ad)) {
                setup.duration = facts->duration;
                check_proportions(ad, facts->size);
            }
        setup.duration = faults.duration.value_or(setup.duration);
        fails_ = fails_ || faults.fails;
        if (ad.strVideoUrl.length() > 0 && !fails_)
            std::ranges::copy(remarks_on_duration(ad, parts_.ad_file, setup.duration),
                              std::back_inserter(made_.remarks));
        return video_of(setup.duration);
    }

    /// Also adds to the end of the session.
    Json video_of(double duration)
    {
        const AdFaults& faults = parts_.faults;
        const double load_after = faults.load_after.value_or(VideoSetup().load_after);
        Json video{{"duration", duration}, {"loadAfter", load_after}};
        end_ += load_after + duration;
        for (const AdFaults::Stall& stall : faults.stalls) {
            video["stalls"].push_back({stall.at.value_or(duration / 2), stall.seconds});
            end_ += stall.seconds;
        }
        if (faults.fails_at)
            video["error"] = *faults.fails_at;
        if (fails_)
            video["errorForGood"] = 0;
        return video;
    }

    /// The videos of a tag's ads, which follow each other, by address.
    Json videos_of(const TagDocuments& tag)
    {
        fails_ = parts_.faults.fails;
        Json videos = Json::object();
        for (const TagDocuments::Video& video : tag.videos)
            videos[video.address] =
                video_of(parts_.faults.duration.value_or(video.duration.value_or(VideoSetup().duration)));
        return videos;
    }

    /// Those of the file, from the opening of the ad to the end of the video at the earliest; or a viewer who watches
    /// to the end and closes the ad.
    Json steps()
    {
        if (parts_.steps_file.empty())
            return {
                {{"open", 0}}, {{"at", end_}, {"tap", "btnClose"}}, {{"at", end_ + ReleaseAfter}, {"release", true}}};
        const std::string text = read_input_file(parts_.steps_file);
        Json steps = without_selectors(detail::parse_json(text, parts_.steps_file));
        const std::vector<Step> read = read_steps(steps.dump(), parts_.steps_file, true);
        if (std::ranges::find(read, "open", &Step::key) == read.end())
            steps.insert(steps.begin(), Json{{"open", 0}});
        // Only steps let time pass.
        if (read.empty() || read.back().at < end_)
            steps.push_back({{"at", end_}, {"device", Json::object()}});
        return steps;
    }

    /// The steps without those that touch an element of the page, because scripts and elements are not simulated. The
    /// others keep their times.
    Json without_selectors(const Json& steps)
    {
        if (!steps.is_array())
            return steps;
        Json rest = Json::array();
        Json at;
        for (std::size_t n = 0; n < steps.size(); ++n) {
            Json step = steps[n];
            if (!step.is_object()) {
                rest.push_back(step);
                continue;
            }
            at = step.value("at", at);
            if (step.contains("touch") && step["touch"].is_object() && step["touch"].contains("selector")) {
                const std::string path = "/" + std::to_string(n) + "/touch";
                const char* const why = "left out: the simulated page has no elements";
                made_.remarks.emplace_back(InputError(parts_.steps_file, path, why).what());
                continue;
            }
            if (!at.is_null())
                step["at"] = at;
            rest.push_back(step);
        }
        return rest;
    }

    const AdScenarioParts& parts_;
    const std::string folder_;
    AdScenario made_;
    Json net_ = Json::object();
    /// Whether the video never plays.
    bool fails_ = false;
    /// Seconds: when the video has ended.
    double end_ = 0;
};

} // namespace

AdScenario scenario_of_tag(const AdScenarioParts& parts, const TagDocuments& tag)
{
    return Composer(parts).compose(tag);
}

AdScenario scenario_of_ad(const AdScenarioParts& parts)
{
    return Composer(parts).compose();
}

} // namespace qoro
