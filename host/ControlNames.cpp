#include "host/ControlNames.h"

#include "Base/VideoPlayer/VideoImage/ImageName.h"
#include "kit/Accessible.h"
#include "kit/ScreenTexts.h"
#include "platform/Platform.h"

#include <array>
#include <vector>

namespace qoro
{

void set_control_names(Platform& platform)
{
    using namespace screen_texts;
    static const auto pictures = [] {
        std::vector<ControlNames::Picture> named;
        for (const EmbeddedPicture& picture : embeddedPictures())
            if (picture.meaning)
                named.push_back({picture.name, picture.meaning, picture.on});
        return named;
    }();
    static constexpr auto Actions = std::to_array<ControlNames::Action>({
        {"setControllerBarHiddenState", ShowControls},
        {"doButtonOneAction", FirstOffer},
        {"doButtonTwoAction", SecondOffer},
        {"icon_tapped", AboutThisAd},
    });
    platform.shared<ControlNames>() = {pictures, Actions};
}

} // namespace qoro
