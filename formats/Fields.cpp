#include "formats/Fields.h"

#include "Base/VideoPlayer/QoroVideoWebViewController.h"

#include <algorithm>
#include <array>
#include <utility>

namespace qoro
{

namespace
{

using Controller = QoroVideoWebViewController;

struct ButtonField {
    std::string_view name;
    UIButton Controller::*field;
};

constexpr std::array ButtonFields{
    ButtonField{"btnMute", &Controller::btnMute},
    ButtonField{"btnPlayAndPause", &Controller::btnPlayAndPause},
    ButtonField{"btnScreenScale", &Controller::btnScreenScale},
    ButtonField{"btnClose", &Controller::btnClose},
    ButtonField{"btnActionOne", &Controller::btnActionOne},
    ButtonField{"btnActionTwo", &Controller::btnActionTwo},
    ButtonField{"btnReplay", &Controller::btnReplay},
    ButtonField{"btnClickListener", &Controller::btnClickListener},
    ButtonField{"btnReturnToVideo", &Controller::btnReturnToVideo},
    ButtonField{"btnBrandIcon", &Controller::btnBrandIcon},
};

template <auto field>
UIView own(const Controller& controller)
{
    return controller.*field;
}

// Where a view has two names, the first is the one reported as the parent of its subviews.
constexpr ViewField ViewFields[] = {
    {"btnMute", own<&Controller::btnMute>},
    {"btnPlayAndPause", own<&Controller::btnPlayAndPause>},
    {"btnScreenScale", own<&Controller::btnScreenScale>},
    {"btnClose", own<&Controller::btnClose>},
    {"btnActionOne", own<&Controller::btnActionOne>},
    {"btnActionTwo", own<&Controller::btnActionTwo>},
    {"btnReplay", own<&Controller::btnReplay>},
    {"btnClickListener", own<&Controller::btnClickListener>},
    {"btnReturnToVideo", own<&Controller::btnReturnToVideo>},
    {"btnBrandIcon", own<&Controller::btnBrandIcon>},
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

} // namespace

UIButton button_named(const QoroVideoWebViewController& controller, std::string_view name)
{
    const auto button = std::ranges::find(ButtonFields, name, &ButtonField::name);
    return button == ButtonFields.end() ? UIButton() : controller.*button->field;
}

std::vector<std::string> button_names()
{
    std::vector<std::string> names;
    names.reserve(std::size(ButtonFields));
    for (const ButtonField& button : ButtonFields)
        names.emplace_back(button.name);
    return names;
}

std::span<const ViewField> view_fields()
{
    return ViewFields;
}

} // namespace qoro
