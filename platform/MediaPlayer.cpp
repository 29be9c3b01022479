#include "platform/MediaPlayer.h"

// MPMoviePlayerController owns a view and is implemented in views/MoviePlayer.cpp.

namespace qoro
{

namespace
{
/// One per platform, so that parallel sessions do not receive each other's interruptions.
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
