#include "platform/MediaPlayer.h"

// The movie player itself owns a view and stands with the views (views/MoviePlayer.cpp).

namespace qoro
{

namespace
{
/// One per platform, so that side-by-side sessions don't hear each other's interruptions.
struct SharedAudioSession {
};
} // namespace

MPMusicPlayerController MPMusicPlayerController::applicationMusicPlayer()
{
    MPMusicPlayerController player;
    player.present_ = true;
    return player;
}

const void* AVAudioSession::sharedInstance()
{
    return &Platform::current().shared<SharedAudioSession>();
}

float AVAudioSession::outputVolume()
{
    return Platform::current().volume().value();
}

} // namespace qoro
