#include "kit/Accessible.h"

#include "kit/CountDownLook.h"
#include "kit/ScreenTexts.h"
#include "platform/Platform.h"
#include "views/ViewNode.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace qoro
{

namespace
{

using namespace screen_texts;

/// Accessible name and state of a control that shows one of the compiled-in pictures.
struct PictureMeaning {
    std::string_view picture;
    const char* name;
    std::optional<bool> on;
};

constexpr auto PictureMeanings = std::to_array<PictureMeaning>({
    {"arrayVideoBigCloseButton", Close, {}},
    {"arrayVideoCloseButton", Close, {}},
    {"arrayVideoFullscreenButton", FillScreen, {}},
    {"arrayVideoPauseButton", Pause, {}},
    {"arrayVideoPlayButton", Play, {}},
    {"arrayVideoReplayButton", Replay, {}},
    {"arrayVideoSoundOffButton", Mute, true},
    {"arrayVideoSounOnButton", Mute, false},
    {"arrayVideoScaleToPortraitButton", LeaveFullScreen, {}},
    {"arrayHideVideo", HideVideo, {}},
    {"arrayShowVideo", ShowVideo, {}},
});

/// Accessible name by action, for a control that shows nothing or a picture supplied by the ad.
struct ActionMeaning {
    std::string_view action;
    const char* name;
};

constexpr auto ActionMeanings = std::to_array<ActionMeaning>({
    {"setControllerBarHiddenState", ShowControls},
    {"doButtonOneAction", FirstOffer},
    {"doButtonTwoAction", SecondOffer},
});

std::string translated(const ViewNode& view, const char* text)
{
    return view.platform.translation().translate(text);
}

/// The view's label, or else its text. An empty label counts as absent.
std::string own_words(const ViewNode& view)
{
    const NSString& label = view.accessibility_label;
    return label.length() > 0 ? label.text() : view.text ? view.text.text() : std::string();
}

Accessible button(const ViewNode& view)
{
    if (view.targets.empty())
        return {};
    Accessible says{.role = Accessible::Role::Button, .name = own_words(view), .usable = view.takes_touches};
    if (!says.name.empty())
        return says;
    const auto* picture =
        std::ranges::find(PictureMeanings, view.image.accessibilityIdentifier(), &PictureMeaning::picture);
    if (picture != PictureMeanings.end()) {
        says.name = translated(view, picture->name);
        says.on = picture->on;
        return says;
    }
    const auto* action = std::ranges::find(ActionMeanings, view.targets.front().name(), &ActionMeaning::action);
    if (action != ActionMeanings.end())
        says.name = translated(view, action->name);
    return says;
}

Accessible with_words(const ViewNode& view, Accessible::Role role)
{
    std::string words = own_words(view);
    return words.empty() ? Accessible{} : Accessible{.role = role, .name = std::move(words)};
}

Accessible named(const ViewNode& view, Accessible::Role role, const char* otherwise)
{
    std::string words = own_words(view);
    return {.role = role, .name = words.empty() ? translated(view, otherwise) : std::move(words)};
}

std::string time_left(const ViewNode& countdown)
{
    const long seconds = whole_seconds_left(countdown.seconds);
    std::string text = countdown.platform.translation().translate(SecondsLeft, static_cast<unsigned long>(seconds));
    if (const std::size_t number = text.find("%d"); number != std::string::npos)
        text.replace(number, 2, std::to_string(seconds));
    return text;
}

} // namespace

Accessible accessible(const ViewNode& view)
{
    using Role = Accessible::Role;
    switch (view.kind) {
    case ViewNode::Kind::Button:
        return button(view);
    case ViewNode::Kind::Label:
        return with_words(view, Role::Text);
    case ViewNode::Kind::ImageView:
        return with_words(view, Role::Image);
    case ViewNode::Kind::Video:
        return named(view, Role::Video, Video);
    case ViewNode::Kind::WebView:
        return named(view, Role::Page, AdPage);
    case ViewNode::Kind::CountDown:
        return {.role = Role::Timer, .name = time_left(view)};
    case ViewNode::Kind::Spinner:
        return named(view, Role::Wait, Loading);
    case ViewNode::Kind::View:
    case ViewNode::Kind::Window:
    case ViewNode::Kind::Slider: // never visible: the device's keys change the volume
    case ViewNode::Kind::VolumeView:
        break;
    }
    return {};
}

} // namespace qoro
