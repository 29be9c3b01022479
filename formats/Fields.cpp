#include "formats/Fields.h"

#include "Base/VideoPlayer/ControlButtons.h"
#include "Base/VideoPlayer/QoroVideoWebViewController.h"

#include <algorithm>
#include <iterator>

namespace qoro
{

namespace
{

using Controller = QoroVideoWebViewController;

template <auto field>
UIView own(const Controller& controller)
{
    return controller.*field;
}

// The views other than buttons.
constexpr ViewField OtherViews[] = {
    {"labelRemainderTime", own<&Controller::labelRemainderTime>},
    {"labelBrandText", own<&Controller::labelBrandText>},
    {"imgTopBackgroundColor", own<&Controller::imgTopBackgroundColor>},
    {"imgBottomBackgroundColor", own<&Controller::imgBottomBackgroundColor>},
    {"viewTopBackground", own<&Controller::viewTopBackground>},
    {"viewBottomBackground", own<&Controller::viewBottomBackground>},
    {"viewButtonBackground", own<&Controller::viewButtonBackground>},
    {"volumeSlider", own<&Controller::volumeSlider>},
    {"view", [](const Controller& controller) { return controller.view(); }},
    {"webView", [](const Controller& controller) -> UIView { return controller.webView(); }},
    {"moviePlayerView", [](const Controller& controller) { return controller.qoroMoviePlayer.view(); }},
    {"playerView", [](const Controller& controller) { return controller.playerViewController.view(); }},
    {"viewBackground", own<&Controller::viewBackground>},
    {"countDownView", own<&Controller::countDownView>},
    {"miImageView", own<&Controller::miImageView>},
    {"windowAddOnParent", own<&Controller::windowAddOnParent>},
    {"windowTempWindow", own<&Controller::windowTempWindow>},
    {"windowDefaultWindow", own<&Controller::windowDefaultWindow>},
    {"appStoreWindow", own<&Controller::appStoreWindow>},
};

constexpr TimerField TimerFields[] = {
    TimerField{"timerCheckDeviceOrientation", &Controller::timerCheckDeviceOrientation},
    TimerField{"timerUpdateRemainderTime", &Controller::timerUpdateRemainderTime},
    TimerField{"timerCloseBtnCountdown", &Controller::timerCloseBtnCountdown},
    TimerField{"timerBufferSufferTime", &Controller::timerBufferSufferTime},
    TimerField{"timerCheckVideoPlay", &Controller::timerCheckVideoPlay},
    TimerField{"timerSendTrackingToServer", &Controller::timerSendTrackingToServer},
    TimerField{"timerSetControllerButtonHide", &Controller::timerSetControllerButtonHide},
    TimerField{"timerVideoLoaded", &Controller::timerVideoLoaded},
};

} // namespace

UIButton button_named(const QoroVideoWebViewController& controller, std::string_view name)
{
    const auto button = std::ranges::find(controlButtons(), name, &ControlButton::name);
    return button == controlButtons().end() ? UIButton() : controller.*button->field;
}

std::vector<std::string> button_names()
{
    std::vector<std::string> names;
    for (const ControlButton& button : controlButtons())
        names.emplace_back(button.name);
    return names;
}

std::span<const ViewField> view_fields()
{
    // Where a view has two names, the first is the one reported as the parent of its subviews.
    static const auto fields = [] {
        std::vector<ViewField> all;
        for (const ControlButton& button : controlButtons())
            all.push_back({button.name, button.view});
        all.insert(all.end(), std::begin(OtherViews), std::end(OtherViews));
        return all;
    }();
    return fields;
}

std::span<const TimerField> timer_fields()
{
    return TimerFields;
}

} // namespace qoro
