#pragma once

#include <sys/types.h>

#include <string>

namespace qoro::test
{

/// A private PulseAudio server with one null sink. This program uses it for as long as the object lives, and has no
/// sound server afterwards.
class SoundServer
{
public:
    SoundServer();
    ~SoundServer();
    SoundServer(const SoundServer&) = delete;
    SoundServer& operator=(const SoundServer&) = delete;

    /// Whether the server answered within half a minute of its start.
    bool runs() const { return runs_; }
    /// Ends the server.
    void end();
    /// Runs pactl on this server.
    /// @return its output
    std::string pactl(const std::string& arguments) const;
    /// The sink's volume as pactl prints it, for example "50%"; followed by the muted state if it is muted.
    std::string device_volume() const;
    /// Starts a phone stream of another application, for which the server corks the streams of videos.
    void begin_call();
    /// Ends that stream; the server uncorks the others.
    void end_call();
    /// The volume of the first stream, for example "50%"; empty if there is no stream.
    std::string stream_volume() const;

private:
    std::string folder_;
    pid_t process_ = -1;
    bool runs_ = false;
    /// The module that makes the call's sound.
    std::string call_;
};

/// Directs this program's sound to a server that does not exist.
void without_sound_server();

} // namespace qoro::test
