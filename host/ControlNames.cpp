#include "host/ControlNames.h"

#include "Base/VideoPlayer/VideoImage/ImageName.h"
#include "Base/VideoPlayer/VideoImage/VideoImage.h"
#include "kit/Accessible.h"
#include "kit/ScreenTexts.h"
#include "platform/Platform.h"

#include <array>

namespace qoro
{

void set_control_names(Platform& platform)
{
    using namespace screen_texts;
    static const auto Pictures = std::to_array<ControlNames::Picture>({
        {embeddedImageName(arrayVideoBigCloseButton), Close, {}},
        {embeddedImageName(arrayVideoCloseButton), Close, {}},
        {embeddedImageName(arrayVideoFullscreenButton), FillScreen, {}},
        {embeddedImageName(arrayVideoPauseButton), Pause, {}},
        {embeddedImageName(arrayVideoPlayButton), Play, {}},
        {embeddedImageName(arrayVideoReplayButton), Replay, {}},
        {embeddedImageName(arrayVideoSoundOffButton), Mute, true},
        {embeddedImageName(arrayVideoSounOnButton), Mute, false},
        {embeddedImageName(arrayVideoScaleToPortraitButton), LeaveFullScreen, {}},
        {embeddedImageName(arrayHideVideo), HideVideo, {}},
        {embeddedImageName(arrayShowVideo), ShowVideo, {}},
    });
    static constexpr auto Actions = std::to_array<ControlNames::Action>({
        {"setControllerBarHiddenState", ShowControls},
        {"doButtonOneAction", FirstOffer},
        {"doButtonTwoAction", SecondOffer},
    });
    platform.shared<ControlNames>() = {Pictures, Actions};
}

} // namespace qoro
