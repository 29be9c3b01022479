#include "Base/VideoPlayer/VideoImage/ImageName.h"

#include "Base/VideoPlayer/VideoImage/VideoImage.h"
#include "platform/Translatable.h"

#include <algorithm>
#include <array>

namespace qoro
{

namespace
{

constexpr std::array EmbeddedPictures{
    EmbeddedPicture{"arrayVideoBigCloseButton", arrayVideoBigCloseButton, translatable("Close")},
    EmbeddedPicture{"arrayVideoCloseButton", arrayVideoCloseButton, translatable("Close")},
    EmbeddedPicture{"arrayVideoFullscreenButton", arrayVideoFullscreenButton, translatable("Full screen")},
    EmbeddedPicture{"arrayVideoPauseButton", arrayVideoPauseButton, translatable("Pause")},
    EmbeddedPicture{"arrayVideoPlayButton", arrayVideoPlayButton, translatable("Play")},
    EmbeddedPicture{"arrayVideoReplayButton", arrayVideoReplayButton, translatable("Play again")},
    EmbeddedPicture{"arrayVideoSoundOffButton", arrayVideoSoundOffButton, translatable("Mute"), true},
    EmbeddedPicture{"arrayVideoSounOnButton", arrayVideoSounOnButton, translatable("Mute"), false},
    EmbeddedPicture{"arrayTopBackGround", arrayTopBackGround},
    EmbeddedPicture{"arrayVideoScaleToPortraitButton", arrayVideoScaleToPortraitButton,
                    translatable("Leave full screen")},
    EmbeddedPicture{"arrayBottomBackGround", arrayBottomBackGround},
    EmbeddedPicture{"arrayHideVideo", arrayHideVideo, translatable("Hide the video")},
    EmbeddedPicture{"arrayShowVideo", arrayShowVideo, translatable("Show the video")},
};

} // namespace

std::span<const EmbeddedPicture> embeddedPictures()
{
    return EmbeddedPictures;
}

std::string_view embeddedImageName(const unsigned char* bytes)
{
    const auto* embedded = std::ranges::find(EmbeddedPictures, bytes, &EmbeddedPicture::bytes);
    return embedded == EmbeddedPictures.end() ? std::string_view() : embedded->name;
}

} // namespace qoro
