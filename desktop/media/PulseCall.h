#pragma once

#include <functional>
#include <optional>
#include <string>

#include <pulse/context.h>
#include <pulse/mainloop.h>
#include <pulse/volume.h>

namespace qoro
{

/// A sink's volume as it can be put back.
struct SinkVolume {
    std::string sink;
    pa_cvolume volume{};
    bool muted = false;
    /// Whether streams share their scale with the sink: a stream at full volume then turns the sink up.
    bool flat = false;
};

/// A short connection to the sound server that is waited for: for what has to be known before a program goes on, and
/// done before it ends. Bounded in time, whatever the server does.
class PulseCall
{
public:
    /// @param seconds for everything together
    explicit PulseCall(double seconds);
    ~PulseCall();
    PulseCall(const PulseCall&) = delete;
    PulseCall& operator=(const PulseCall&) = delete;

    /// Whether there is a server that answers.
    bool connected() const { return connected_; }
    pa_context* context() const { return context_; }
    /// Waits for an operation, and lets it go. False when it did not end in time.
    bool wait(pa_operation* operation);
    /// The default sink's; absent when there is none.
    std::optional<SinkVolume> default_sink();

private:
    bool turn();

    double deadline_;
    pa_mainloop* loop_;
    pa_context* context_ = nullptr;
    bool connected_ = false;
};

} // namespace qoro
