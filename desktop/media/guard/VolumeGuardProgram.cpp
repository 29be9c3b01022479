// The helper of VolumeGuard: SINK MUTED VOLUME…, with one volume per channel. Restores the sink's volume when standard
// input ends without a byte, because then the program that started it has crashed.

#include "desktop/media/PulseCall.h"

#include <pulse/introspect.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string_view>

namespace
{

/// Seconds. Nothing waits for this program, and a busy server may be slow.
constexpr double Patience = 30;

bool ended_regularly()
{
    char byte = 0;
    ssize_t count = 0;
    do
        count = read(STDIN_FILENO, &byte, 1);
    while (count < 0 && errno == EINTR);
    return count > 0;
}

} // namespace

int main(int count, char** arguments)
{
    constexpr int Fixed = 3;
    pa_cvolume volume{};
    for (int n = Fixed; n < count && volume.channels < PA_CHANNELS_MAX; ++n)
        volume.values[volume.channels++] = static_cast<pa_volume_t>(std::strtoul(arguments[n], nullptr, 10));
    if (!pa_cvolume_valid(&volume) || ended_regularly())
        return 0;
    const bool muted = std::string_view(arguments[2]) == "1";
    qoro::PulseCall call(Patience);
    if (!call.connected())
        return 1;
    const bool restored =
        call.wait(pa_context_set_sink_volume_by_name(call.context(), arguments[1], &volume, nullptr, nullptr)) &&
        call.wait(pa_context_set_sink_mute_by_name(call.context(), arguments[1], muted, nullptr, nullptr));
    return restored ? 0 : 1;
}
