#pragma once

#include <sys/types.h>

#include <string>

namespace qoro::test
{

/// A PulseAudio server of the test's own, with one device that plays into nothing. While it lives, this program's
/// sound goes there; when it is gone there is none.
class SoundServer
{
public:
    SoundServer();
    ~SoundServer();
    SoundServer(const SoundServer&) = delete;
    SoundServer& operator=(const SoundServer&) = delete;

    /// Whether it answered within half a minute.
    bool runs() const { return runs_; }
    /// Ends it while the program goes on.
    void end();
    /// Runs pactl against it.
    /// @return what it printed
    std::string pactl(const std::string& arguments) const;
    /// The device's volume in percent, as pactl prints it: "50%"; with the muted state after it when it is muted.
    std::string device_volume() const;
    /// The volume of the first sound stream in percent, or empty when there is none.
    std::string stream_volume() const;

private:
    std::string folder_;
    pid_t process_ = -1;
    bool runs_ = false;
};

/// Points this program's sound at a server that does not exist.
void without_sound_server();

} // namespace qoro::test
