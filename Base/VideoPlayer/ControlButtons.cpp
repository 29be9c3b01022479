#include "Base/VideoPlayer/ControlButtons.h"

#include "Base/VideoPlayer/RemoveViews.h"
#include "Base/VideoPlayer/VideoImage/EmbeddedImage.h"
#include "Base/VideoPlayer/VideoImage/VideoImage.h"

#include <array>

namespace qoro
{

namespace
{

using Controller = QoroVideoWebViewController;
using Place = ControlButton::Place;

/// A row with its field; the columns that follow are set by name.
template <auto field>
constexpr ControlButton row(std::string_view name, ControlButton rest = {})
{
    rest.name = name;
    rest.field = field;
    rest.view = [](const Controller& controller) -> UIView { return controller.*field; };
    return rest;
}

template <const auto& bytes>
UIImage shows()
{
    return embeddedImage(bytes);
}

constexpr std::array Buttons{
    row<&Controller::btnMute>(
        "btnMute", {.picture = shows<arrayVideoSoundOffButton>,
                    .action = [](Controller& self) { return action<&Controller::setMute>(&self, "setMute"); },
                    .place = Place::BottomBar}),
    row<&Controller::btnPlayAndPause>(
        "btnPlayAndPause",
        {.picture = shows<arrayVideoPlayButton>,
         .action = [](Controller& self) { return action<&Controller::setPlayOrPause>(&self, "setPlayOrPause"); },
         .place = Place::Middle}),
    // Removed with the bar that contains it.
    row<&Controller::btnScreenScale>(
        "btnScreenScale",
        {.picture = shows<arrayVideoFullscreenButton>,
         .action = [](Controller& self) { return action<&Controller::setScreenScale>(&self, "setScreenScale"); },
         .place = Place::BottomBar,
         .endsWithVideo = false}),
    row<&Controller::btnClose>(
        "btnClose",
        {.picture = shows<arrayVideoCloseButton>,
         .action = [](Controller& self) { return action<&Controller::closeAction>(&self, "closeAction"); }}),
    // addActionButton sets the appearance and the actions of these two.
    row<&Controller::btnActionOne>("btnActionOne"),
    row<&Controller::btnActionTwo>("btnActionTwo"),
    row<&Controller::btnReplay>(
        "btnReplay",
        {.picture = shows<arrayVideoReplayButton>,
         .action = [](Controller& self) { return action<&Controller::videoReplay>(&self, "videoReplay:"); },
         .place = Place::Middle,
         .hidden = true}),
    row<&Controller::btnClickListener>("btnClickListener",
                                       {.action =
                                            [](Controller& self) {
                                                return action<&Controller::setControllerBarHiddenState>(
                                                    &self, "setControllerBarHiddenState");
                                            }}),
    // Belongs to the page's view.
    row<&Controller::btnReturnToVideo>(
        "btnReturnToVideo",
        {.picture = shows<arrayShowVideo>,
         .action = [](Controller& self) { return action<&Controller::setVideoVisible>(&self, "setVideoVisible"); },
         .hidden = true,
         .endsWithVideo = false}),
    row<&Controller::btnBrandIcon>("btnBrandIcon"),
};

} // namespace

std::span<const ControlButton> controlButtons()
{
    return Buttons;
}

void createControlButtons(QoroVideoWebViewController& controller)
{
    for (const ControlButton& row : Buttons) {
        UIButton& button = controller.*row.field;
        button = UIButton::create();
        if (row.picture)
            button.setBackgroundImage(row.picture());
        if (row.action)
            button.addTarget(row.action(controller));
        button.setHidden(row.hidden);
    }
}

void removeControlButtons(QoroVideoWebViewController& controller)
{
    for (const ControlButton& row : Buttons)
        if (row.endsWithVideo)
            removeAndRelease(controller.*row.field);
}

} // namespace qoro
