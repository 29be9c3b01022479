#include "desktop/media/PulseCall.h"

#include "desktop/glib/Owned.h"

#include <pulse/error.h>
#include <pulse/introspect.h>
#include <pulse/operation.h>

#include <algorithm>
#include <chrono>

namespace qoro
{

namespace
{
double now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}
} // namespace

PulseCall::PulseCall(double seconds) : deadline_(now() + seconds), loop_(pa_mainloop_new())
{
    context_ = pa_context_new(pa_mainloop_get_api(loop_), "qoro-ad");
    if (!context_ || pa_context_connect(context_, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0)
        return;
    while (PA_CONTEXT_IS_GOOD(pa_context_get_state(context_))) {
        connected_ = pa_context_get_state(context_) == PA_CONTEXT_READY;
        if (connected_ || !turn())
            return;
    }
}

PulseCall::~PulseCall()
{
    if (context_) {
        pa_context_disconnect(context_);
        pa_context_unref(context_);
    }
    pa_mainloop_free(loop_);
}

bool PulseCall::turn()
{
    const double left = deadline_ - now();
    if (left <= 0)
        return false;
    const int microseconds = static_cast<int>(std::min(left, 1000.0) * 1e6);
    return pa_mainloop_prepare(loop_, microseconds) >= 0 && pa_mainloop_poll(loop_) >= 0 &&
           pa_mainloop_dispatch(loop_) >= 0;
}

bool PulseCall::wait(pa_operation* operation)
{
    if (!operation)
        return false;
    const Owned<pa_operation, pa_operation_unref> owned(operation);
    while (pa_operation_get_state(operation) == PA_OPERATION_RUNNING && turn()) {
    }
    const bool done = pa_operation_get_state(operation) == PA_OPERATION_DONE;
    pa_operation_cancel(operation);
    return done;
}

std::optional<SinkVolume> PulseCall::default_sink()
{
    if (!connected_)
        return {};
    std::optional<SinkVolume> found;
    wait(pa_context_get_sink_info_by_name(
        context_, "@DEFAULT_SINK@",
        [](pa_context*, const pa_sink_info* sink, int, void* result) {
            if (sink)
                *static_cast<std::optional<SinkVolume>*>(result) =
                    SinkVolume{sink->name, sink->volume, sink->mute != 0, (sink->flags & PA_SINK_FLAT_VOLUME) != 0};
        },
        &found));
    return found;
}

} // namespace qoro
