#pragma once

#include "platform/Ports.h"

#include <functional>
#include <memory>
#include <optional>

namespace qoro
{

/// The output volume over PulseAudio (or PipeWire's replacement for it). The value is the one that desktop sliders
/// show: the fraction of full volume on the cubic scale. Above full volume it is 1; muted it is 0.
///
/// Scope Program: the volume of this program's own sound streams. Volumes that the server remembers from earlier runs
/// are ignored: streams begin at full volume (at the sink's volume if the sink has flat volumes), so that a crashed run
/// cannot silence the next one.
/// Scope System: the volume of the default sink.
///
/// The destructor restores the original volume. Without a server the value is only stored, and there is no sound. Main
/// thread only.
class PulseVolume : public OutputVolume
{
public:
    enum class Scope { Program, System };

    /// Reads the server's volume; blocks for at most 0.3 seconds.
    /// @param loop its post() must accept calls from any thread
    PulseVolume(MainLoop& loop, Scope scope);
    /// Restores the volume; blocks for at most 0.5 seconds. With scope System the volume is also restored after a crash
    /// (VolumeGuard).
    ~PulseVolume() override;

    float value() const override;
    void set_value(float volume) override;
    bool has_slider() const override { return true; }

    /// Called after each change of the value, as an event of its own, whether the program or another client made it.
    /// May be empty.
    std::function<void()> on_change;
    /// Initial volume for new sound streams of this program; absent with scope System, which leaves streams alone.
    std::optional<float> player_volume() const;

private:
    struct Server;

    void follow(float value);

    const Scope scope_;
    float value_ = 1;
    std::shared_ptr<class Mailbox> mailbox_;
    std::unique_ptr<Server> server_;
};

} // namespace qoro
