#include "desktop/media/VolumeGuard.h"

#include <csignal>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

extern char** environ;

namespace qoro
{

namespace
{
/// A line on standard input means a regular end; end of file without a line means that the program has crashed.
constexpr const char* Script = R"(read -r regular && exit 0
pactl set-sink-volume "$1" $2
pactl set-sink-mute "$1" "$3")";

/// A volume as pactl expects it: one number per channel.
std::string channels(const pa_cvolume& volume)
{
    std::string text;
    for (int channel = 0; channel < volume.channels; ++channel) {
        text += std::to_string(volume.values[channel]);
        text += ' ';
    }
    return text;
}
} // namespace

VolumeGuard::VolumeGuard(const SinkVolume& found)
{
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        return;
    line_ = ends[0];
    const std::string volume = channels(found.volume);
    const char* arguments[] = {
        "sh", "-c", Script, "qoro-ad volume", found.sink.c_str(), volume.c_str(), found.muted ? "1" : "0", nullptr};
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_adddup2(&files, ends[1], STDIN_FILENO);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    // A separate session, so that the interrupt key, which ends the program, does not end its guard.
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
    if (posix_spawn(&process_, "/bin/sh", &files, &attributes, const_cast<char* const*>(arguments), environ) != 0)
        process_ = -1;
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
    close(ends[1]);
}

VolumeGuard::~VolumeGuard()
{
    if (line_ >= 0) {
        // No SIGPIPE if the guard is gone.
        static_cast<void>(send(line_, "regular\n", 8, MSG_NOSIGNAL));
        close(line_);
    }
    if (process_ > 0)
        waitpid(process_, nullptr, 0);
}

} // namespace qoro
