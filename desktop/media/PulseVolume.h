#pragma once

#include "platform/Ports.h"

#include <functional>
#include <memory>
#include <optional>

namespace qoro
{

/// The output volume over PulseAudio (or PipeWire's server for it). The value is the one that desktops' sliders show:
/// the share of the way to full volume on the cubic scale; more than full reads as 1, muted as 0.
///
/// Program: the volume of this program's own sound streams. The server's memory of earlier runs is passed over: they
/// begin at full (at the device's volume where streams share its scale), so that a run that ended badly leaves no
/// silent next one.
/// System: the default device's.
///
/// What was found at the start is put back at the end. Without a server the value is a number that is kept, and there
/// is no sound.
class PulseVolume : public OutputVolume
{
public:
    enum class Scope { Program, System };

    /// Asks the server for its volume and waits for that, a third of a second at most.
    PulseVolume(MainLoop& loop, Scope scope);
    /// Puts the volume back. A crash is covered too where the scope is System.
    ~PulseVolume() override;

    float value() const override;
    void set_value(float volume) override;
    bool has_slider() const override { return true; }

    /// Called as an event of its own after each change of the value, whoever made it.
    std::function<void()> on_change;
    /// What new sound streams of this program are to begin with; absent when that is not for us to say.
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
