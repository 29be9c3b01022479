#pragma once

#include <functional>
#include <optional>
#include <string>

#include <pulse/context.h>
#include <pulse/mainloop.h>
#include <pulse/volume.h>

namespace qoro
{

/// A sink's volume, sufficient to restore it.
struct SinkVolume {
    std::string sink;
    pa_cvolume volume{};
    bool muted = false;
    /// Whether the sink has flat volumes: a stream at full volume then raises the sink's volume.
    bool flat = false;
};

/// A short, blocking connection to the sound server, for values that a program needs before it starts and changes that
/// must be made before it ends. Its total duration is bounded, whatever the server does.
class PulseCall
{
public:
    /// @param seconds for all calls together
    explicit PulseCall(double seconds);
    ~PulseCall();
    PulseCall(const PulseCall&) = delete;
    PulseCall& operator=(const PulseCall&) = delete;

    /// Whether the server has accepted the connection.
    bool connected() const { return connected_; }
    pa_context* context() const { return context_; }
    /// Waits for an operation and releases it. Returns false if it failed or did not finish in time; null counts as
    /// failed.
    bool wait(pa_operation* operation);
    /// Absent if there is no connection or no default sink.
    std::optional<SinkVolume> default_sink();

private:
    bool turn();

    double deadline_;
    pa_mainloop* loop_;
    pa_context* context_ = nullptr;
    bool connected_ = false;
};

} // namespace qoro
