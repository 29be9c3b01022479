#include "Base/VideoPlayer/VideoImage/ImageName.h"

#include "Base/VideoPlayer/VideoImage/VideoImage.h"

#include <array>

namespace qoro
{

namespace
{

struct EmbeddedPicture {
    std::string_view name;
    const unsigned char* bytes;
};

constexpr std::array EmbeddedPictures{
    EmbeddedPicture{"arrayVideoBigCloseButton", arrayVideoBigCloseButton},
    EmbeddedPicture{"arrayVideoCloseButton", arrayVideoCloseButton},
    EmbeddedPicture{"arrayVideoFullscreenButton", arrayVideoFullscreenButton},
    EmbeddedPicture{"arrayVideoPauseButton", arrayVideoPauseButton},
    EmbeddedPicture{"arrayVideoPlayButton", arrayVideoPlayButton},
    EmbeddedPicture{"arrayVideoReplayButton", arrayVideoReplayButton},
    EmbeddedPicture{"arrayVideoSoundOffButton", arrayVideoSoundOffButton},
    EmbeddedPicture{"arrayVideoSounOnButton", arrayVideoSounOnButton},
    EmbeddedPicture{"arrayTopBackGround", arrayTopBackGround},
    EmbeddedPicture{"arrayVideoScaleToPortraitButton", arrayVideoScaleToPortraitButton},
    EmbeddedPicture{"arrayBottomBackGround", arrayBottomBackGround},
    EmbeddedPicture{"arrayHideVideo", arrayHideVideo},
    EmbeddedPicture{"arrayShowVideo", arrayShowVideo},
};

} // namespace

std::string_view embeddedImageName(const unsigned char* bytes)
{
    for (const EmbeddedPicture& embedded : EmbeddedPictures)
        if (embedded.bytes == bytes)
            return embedded.name;
    return {};
}

} // namespace qoro
