#include "formats/Snapshot.h"

#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "formats/Fields.h"
#include "platform/Platform.h"
#include "views/ViewNode.h"

#include <array>
#include <charconv>
#include <cmath>
#include <utility>

namespace qoro
{

namespace
{

using Controller = QoroVideoWebViewController;
using Super = QoroPhoneGapViewController;

// ------------------------------------------------------------------------------------------------------------- values

Value value_of(bool flag)
{
    return flag;
}

Value value_of(float number)
{
    if (!std::isfinite(number))
        return nullptr;
    // The double nearest to the shortest decimal, so that 0.6 is not written as 0.60000002384185791.
    std::array<char, 32> text;
    const auto written = std::to_chars(text.data(), text.data() + text.size(), number);
    double shortest = 0;
    std::from_chars(text.data(), written.ptr, shortest);
    return shortest;
}

Value value_of(const NSString& text)
{
    return text;
}

Value value_of(const NSArray& list)
{
    return list;
}

Value value_of(const NSDictionary& mapping)
{
    return mapping;
}

template <typename Number>
requires std::is_enum_v<Number> || std::is_same_v<Number, std::int32_t> || std::is_same_v<Number, std::int64_t>
    Value value_of(Number number)
{
    return static_cast<std::int64_t>(number);
}

/// A named field of an object.
template <typename Class>
struct Named {
    std::string_view name;
    Value (*read)(const Class& object);
};

template <typename Class, auto field>
Value read(const Class& object)
{
    return value_of(object.*field);
}

#define QORO_FIELD(Class, name)                                                                                        \
    Named<Class>                                                                                                       \
    {                                                                                                                  \
#name, read < Class, &Class::name>                                                                             \
    }

template <typename Class, std::size_t Count>
NSDictionary read_all(const Class& object, const std::array<Named<Class>, Count>& fields)
{
    NSDictionary values = NSDictionary::dictionary();
    for (const Named<Class>& field : fields)
        values.setObject(field.read(object), field.name);
    return values;
}

// ------------------------------------------------------------------------------------------------------------- tables

constexpr std::array ControllerFields{
    QORO_FIELD(Controller, buttonPosMode),
    QORO_FIELD(Controller, bIsMute),
    QORO_FIELD(Controller, bIsPlay),
    QORO_FIELD(Controller, bIsLoaded),
    QORO_FIELD(Controller, bDefaultStatusBarHidden),
    QORO_FIELD(Controller, bIsHideControlbutton),
    QORO_FIELD(Controller, bIsInitVideoBeginStep),
    QORO_FIELD(Controller, bGoOutApp),
    QORO_FIELD(Controller, bIsPortraitOnly),
    QORO_FIELD(Controller, bIsPortraitNow),
    QORO_FIELD(Controller, bIsPlayFinish),
    QORO_FIELD(Controller, bIsStopProgreeebar),
    QORO_FIELD(Controller, bDoButtonAction),
    QORO_FIELD(Controller, bIsOpenInAppApplication),
    QORO_FIELD(Controller, bOnlyOneSideVideo),
    QORO_FIELD(Controller, bIsVideoOrientationLandscape),
    QORO_FIELD(Controller, bHideVideoToShowWebViewInLandscapeMode),
    QORO_FIELD(Controller, bHideVideoToShowWebViewInPortraitMode),
    QORO_FIELD(Controller, bIsLockLandscapeAndEnterLandscapeLeft),
    QORO_FIELD(Controller, fDefaultVolume),
    QORO_FIELD(Controller, fScreenWidth),
    QORO_FIELD(Controller, fScreenHeight),
    QORO_FIELD(Controller, fVideoStopTime),
    QORO_FIELD(Controller, fVideoHeight),
    QORO_FIELD(Controller, fVideoWidth),
    QORO_FIELD(Controller, fPortraitModeVideoPosY),
    QORO_FIELD(Controller, iCountdownCount),
    QORO_FIELD(Controller, iBufferingSufferTime),
    QORO_FIELD(Controller, iShowProgressWheel),
    QORO_FIELD(Controller, fTotalTime),
    QORO_FIELD(Controller, changeModeOrientation),
    QORO_FIELD(Controller, currentOrientation),
    QORO_FIELD(Controller, videoState),
    QORO_FIELD(Controller, bUseVASTTracking),
    QORO_FIELD(Controller, bPlayNextVideo),
    QORO_FIELD(Controller, bIsUseVideoCustomClose),
    QORO_FIELD(Controller, qoroMoviePlayerStatus),
    QORO_FIELD(Controller, miWatchDog),
    QORO_FIELD(Controller, isShowMI),
    QORO_FIELD(Controller, _bDoButtonAction),
    QORO_FIELD(Controller, _bIsOpenInAppApplication),
    QORO_FIELD(Controller, _bIsLockLandscapeAndEnterLandscapeLeft),
    QORO_FIELD(Controller, dicSendTrackingState),
    QORO_FIELD(Controller, prePauseStatusDict),
    QORO_FIELD(Controller, dicButtonOneActionInfo),
    QORO_FIELD(Controller, dicButtonTwoActionInfo),
};

constexpr std::array SuperFields{
    QORO_FIELD(Super, bIsFullScreen),
    QORO_FIELD(Super, bIsLockOneSide),
    QORO_FIELD(Super, bIsLockOneSideAndIsLandscape),
    QORO_FIELD(Super, bIsLockOneSideAndIsPortrait),
    QORO_FIELD(Super, bIsClickCloseButton),
    QORO_FIELD(Super, bIsUseCustomClose),
    QORO_FIELD(Super, bIsUseProgressbar),
    QORO_FIELD(Super, bIsAddOnWindow),
    QORO_FIELD(Super, strBaseUrl),
    QORO_FIELD(Super, fDefaultPosY),
};

constexpr std::array AdFields{
    QORO_FIELD(QoroVideoAd, portraitModeType),
    QORO_FIELD(QoroVideoAd, bIsWebViewInFront),
    QORO_FIELD(QoroVideoAd, bIsHideFullPortraitVideoAtEnd),
    QORO_FIELD(QoroVideoAd, bIsHideLandscapeVideoAtEnd),
    QORO_FIELD(QoroVideoAd, arrayButtonsInfo),
    QORO_FIELD(QoroVideoAd, arrayReplayTrackingUrls),
    QORO_FIELD(QoroVideoAd, bIsAutoClose),
    QORO_FIELD(QoroVideoAd, dicTrackingUrls),
    QORO_FIELD(QoroVideoAd, strVideoTrackingUrl),
    QORO_FIELD(QoroVideoAd, strVideoUrl),
    QORO_FIELD(QoroVideoAd, arrayPrePauseLocations),
    QORO_FIELD(QoroVideoAd, strMIUrl),
};

#undef QORO_FIELD

// -------------------------------------------------------------------------------------------------------------- views

/// Rounded to whole microseconds, the loop's resolution.
double in_microseconds(double seconds)
{
    return std::isfinite(seconds) ? std::round(seconds * 1e6) / 1e6 : seconds;
}

Value picture_name(const UIImage& image)
{
    if (!image)
        return nullptr;
    const std::string_view name = image.accessibilityIdentifier();
    return name.empty() ? "fetched" : name;
}

Value color(const UIColor& of_color)
{
    if (!of_color)
        return nullptr;
    return NSArray{of_color.red, of_color.green, of_color.blue, of_color.alpha};
}

Value target_names(const std::vector<Action>& targets)
{
    std::vector<Value> names;
    names.reserve(targets.size());
    for (const Action& target : targets)
        names.emplace_back(target.name());
    return NSArray(std::move(names));
}

/// The parent's first name in view_fields(); "other" when it has none.
Value parent_name(const ViewNode& view, const Controller& controller)
{
    if (!view.parent)
        return nullptr;
    for (const ViewField& field : view_fields())
        if (field.get(controller).node().get() == view.parent)
            return field.name;
    return "other";
}

/// The index among the parent's subviews, from 0. Spinners, which the superclass shows temporarily, are not counted.
Value order(const ViewNode& view)
{
    if (!view.parent)
        return nullptr;
    int place = 0;
    for (const auto& sibling : view.parent->subviews) {
        if (sibling.get() == &view)
            return place;
        if (sibling->kind != ViewNode::Kind::Spinner)
            ++place;
    }
    return nullptr;
}

NSDictionary describe(const ViewNode& view, const Controller& controller)
{
    NSDictionary looks{
        {"frame", NSArray{view.frame.x, view.frame.y, view.frame.width, view.frame.height}},
        {"hidden", view.hidden},
        {"angle", view.angle},
        {"alpha", view.alpha},
        {"parent", parent_name(view, controller)},
        {"order", order(view)},
        {"background", color(view.background)},
        {"image", picture_name(view.image)},
        {"text", view.text},
    };
    if (view.kind == ViewNode::Kind::Button)
        looks.setObject(target_names(view.targets), "targets");
    if (view.kind == ViewNode::Kind::CountDown)
        looks.setObject(value_of(static_cast<float>(view.seconds)), "seconds");
    if (view.kind == ViewNode::Kind::Window) {
        looks.setObject(view.window_level, "level");
        looks.setObject(view.key_window, "key");
    }
    return looks;
}

} // namespace

NSDictionary snapshot_fields(const QoroVideoWebViewController& controller)
{
    return read_all(controller, ControllerFields);
}

NSDictionary snapshot_super(const QoroVideoWebViewController& controller)
{
    NSDictionary values = read_all<Super>(controller, SuperFields);
    NSDictionary counts;
    if (controller.dicEventListener) {
        counts = NSDictionary::dictionary();
        for (const NSDictionary::Entry& event : controller.dicEventListener)
            counts.setObject(static_cast<std::int64_t>(event.value.array().count()), event.key);
    }
    values.setObject(counts, "listeners");
    return values;
}

NSDictionary snapshot_ad(const QoroVideoWebViewController& controller)
{
    return controller.qoroVideoAdInfo ? read_all(*controller.qoroVideoAdInfo, AdFields) : NSDictionary();
}

NSDictionary snapshot_player(const QoroVideoWebViewController& controller)
{
    const MPMoviePlayerController& player = controller.qoroMoviePlayer;
    if (!player)
        return nullptr;
    const PlayerSettings settings = player.settings();
    return {
        {"url", player.contentURL().absoluteString()},
        {"file", player.contentURL().is_file()},
        {"autoplay", settings.should_autoplay},
        {"scalingMode", settings.scaling_mode},
        {"fullscreen", settings.fullscreen},
        {"controlStyle", settings.control_style},
        {"repeatMode", settings.repeat_mode},
        {"sourceType", settings.source_type},
        {"time", player.currentPlaybackTime()},
        {"duration", player.duration()},
        {"state", player.playbackState()},
        {"load", player.loadState()},
    };
}

NSDictionary snapshot_timers(const QoroVideoWebViewController& controller)
{
    NSDictionary running = NSDictionary::dictionary();
    for (const TimerField& field : timer_fields()) {
        const NSTimer& timer = controller.*field.field;
        if (timer.isValid())
            running.setObject(NSDictionary{{"interval", in_microseconds(timer.timeInterval())},
                                           {"repeats", timer.repeats()},
                                           {"due", in_microseconds(timer.fireDate())}},
                              field.name);
    }
    return running;
}

NSDictionary snapshot_views(const QoroVideoWebViewController& controller)
{
    NSDictionary views = NSDictionary::dictionary();
    for (const ViewField& field : view_fields()) {
        const UIView view = field.get(controller);
        views.setObject(view ? Value(describe(*view.node(), controller)) : Value(), field.name);
    }
    return views;
}

void emit_snapshot(Platform& platform, const QoroVideoWebViewController& controller)
{
    if (!platform.event_sink())
        return;
    const Value fields(snapshot_fields(controller));
    const Value super(snapshot_super(controller));
    const Value ad(snapshot_ad(controller));
    const Value player(snapshot_player(controller));
    const Value timers(snapshot_timers(controller));
    const Value views(snapshot_views(controller));
    platform.emit(event::Snapshot{
        .fields = &fields, .superclass = &super, .ad = &ad, .player = &player, .timers = &timers, .views = &views});
}

} // namespace qoro
