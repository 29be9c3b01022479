#include "host/ControllerExtras.h"

#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "formats/Fields.h"

#include <algorithm>
#include <array>

namespace qoro
{

namespace
{

using Controller = QoroVideoWebViewController;

NSString without_video(const Controller& ad)
{
    return ad.qoroMoviePlayer ? NSString() : NSString("the ad has no video");
}

NSString video_hidden(const Controller& ad)
{
    const bool hidden = ad.bHideVideoToShowWebViewInLandscapeMode || ad.bHideVideoToShowWebViewInPortraitMode;
    return hidden ? NSString("the video is hidden behind the page") : NSString();
}

NSString cannot_play(const Controller& ad)
{
    const NSString absent = without_video(ad);
    return absent ? absent : video_hidden(ad);
}

NSString cannot_sound(const Controller& ad)
{
    if (const NSString hidden = video_hidden(ad))
        return hidden;
    return ad.musicPlayer ? NSString() : NSString("the ad has no video");
}

NSString cannot_replay(const Controller& ad)
{
    if (const NSString absent = without_video(ad))
        return absent;
    return ad.bIsPlayFinish ? NSString() : NSString("the video has not ended");
}

/// Why the ad ignores a command. One that asks for the present state has nothing to do, and is not ignored.
struct Rule {
    std::string_view command;
    NSString (*reason)(const Controller& ad);
};

constexpr auto Rules = std::to_array<Rule>({
    {"setVideoPlay", [](const Controller& ad) { return ad.bIsPlay ? NSString() : cannot_play(ad); }},
    {"setVideoPause", [](const Controller& ad) { return ad.bIsPlay ? cannot_play(ad) : NSString(); }},
    {"setVideoMute", [](const Controller& ad) { return ad.bIsMute ? NSString() : cannot_sound(ad); }},
    {"setVideoUnmute", [](const Controller& ad) { return ad.bIsMute ? cannot_sound(ad) : NSString(); }},
    {"setVideoSeekToTime", without_video},
    {"replay", cannot_replay},
});

/// The views that a page keeps clear of: what the viewer can touch or read. The touch area of the whole video and the
/// bars behind the controls are none.
constexpr auto ControlFields = std::to_array<std::string_view>(
    {"btnClose", "countDownView", "btnReturnToVideo", "btnPlayAndPause", "btnReplay", "btnMute", "btnScreenScale",
     "btnActionOne", "btnActionTwo", "btnBrandIcon", "labelBrandText", "labelRemainderTime"});

} // namespace

NSString ControllerExtras::reason_to_ignore(std::string_view command) const
{
    if (!ad_.dicEventListener)
        return "the ad has closed";
    const auto* const rule = std::ranges::find(Rules, command, &Rule::command);
    return rule == Rules.end() ? NSString() : rule->reason(ad_);
}

NSString ControllerExtras::replay()
{
    const NSString reason = reason_to_ignore("replay");
    if (!reason)
        ad_.videoReplay(nullptr);
    return reason;
}

std::vector<NamedControl> ControllerExtras::controls() const
{
    std::vector<NamedControl> controls;
    for (const std::string_view name : ControlFields) {
        const auto fields = view_fields();
        const auto field = std::ranges::find(fields, name, &ViewField::name);
        if (field != fields.end())
            controls.push_back({name, field->get(ad_)});
    }
    return controls;
}

} // namespace qoro
