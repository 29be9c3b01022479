#include "desktop/media/PulseVolume.h"

#include "desktop/glib/Owned.h"
#include "desktop/media/Mailbox.h"
#include "desktop/media/PulseCall.h"
#include "desktop/media/VolumeGuard.h"

#include <glib.h>
#include <pulse/glib-mainloop.h>
#include <pulse/introspect.h>
#include <pulse/operation.h>
#include <pulse/proplist.h>
#include <pulse/subscribe.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <string>
#include <utility>

namespace qoro
{

namespace
{
/// Time limits in seconds for the first query and for restoring the volume.
constexpr double AskPatience = 0.3;
constexpr double PutBackPatience = 0.5;

float slider_value(pa_volume_t volume)
{
    return std::min(static_cast<float>(volume) / static_cast<float>(PA_VOLUME_NORM), 1.0F);
}

pa_volume_t server_volume(float value)
{
    return static_cast<pa_volume_t>(std::lround(value * static_cast<float>(PA_VOLUME_NORM)));
}

float value_of(const pa_cvolume& volume, bool muted)
{
    return muted ? 0.0F : slider_value(pa_cvolume_max(&volume));
}

void forget(pa_operation* operation)
{
    const Owned<pa_operation, pa_operation_unref> owned(operation);
}

/// Sets the loudest channel to a value and preserves the balance.
pa_cvolume scaled(pa_cvolume volume, float value)
{
    pa_cvolume_scale(&volume, server_volume(value));
    return volume;
}
} // namespace

/// The permanent connection: follows the server's volume and changes it.
struct PulseVolume::Server {
    Server(PulseVolume& volume, std::optional<SinkVolume> sink);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    void set(float value);
    void refresh();
    void put_back();

    struct Stream {
        pa_cvolume volume;
        bool muted;
    };

    void see_sink(const pa_sink_info& sink);
    void see_stream(const pa_sink_input_info& stream);
    void refreshed();
    void set_stream(std::uint32_t index, Stream& stream, float value);

    PulseVolume& owner;
    pa_glib_mainloop* loop;
    pa_context* context;
    bool ready = false;

    /// State of the pending query: the number of changes before it was sent, and whether to repeat it. Answers to
    /// queries that are older than the last change are ignored.
    bool asking = false;
    bool ask_again = false;
    unsigned sets = 0;
    unsigned sets_when_asked = 0;

    /// The current default sink; scope System only.
    std::optional<SinkVolume> current;
    /// Original volumes of changed sinks, each with its guard; scope System only.
    std::map<std::string, std::pair<SinkVolume, std::unique_ptr<VolumeGuard>>> found;
    /// This program's streams, as last seen or set; scope Program only.
    std::map<std::uint32_t, Stream> streams;
    /// Initial value of the streams; scope Program only.
    float begun_with;
};

PulseVolume::Server::Server(PulseVolume& volume, std::optional<SinkVolume> sink)
    : owner(volume), loop(pa_glib_mainloop_new(g_main_context_get_thread_default())),
      context(pa_context_new(pa_glib_mainloop_get_api(loop), "qoro-ad")), current(std::move(sink)),
      begun_with(volume.value_)
{
    pa_context_set_state_callback(
        context,
        [](pa_context* self, void* data) {
            Server& server = *static_cast<Server*>(data);
            server.ready = pa_context_get_state(self) == PA_CONTEXT_READY;
            if (!server.ready)
                return;
            const auto mask = static_cast<pa_subscription_mask_t>(
                server.owner.scope_ == Scope::System ? PA_SUBSCRIPTION_MASK_SINK | PA_SUBSCRIPTION_MASK_SERVER
                                                     : PA_SUBSCRIPTION_MASK_SINK_INPUT);
            forget(pa_context_subscribe(self, mask, nullptr, nullptr));
            // Apply what was set while the connection was being established.
            if (server.sets > 0)
                server.set(server.owner.value_);
            server.refresh();
        },
        this);
    pa_context_set_subscribe_callback(
        context,
        [](pa_context*, pa_subscription_event_type_t event, std::uint32_t index, void* data) {
            Server& server = *static_cast<Server*>(data);
            if ((event & PA_SUBSCRIPTION_EVENT_TYPE_MASK) == PA_SUBSCRIPTION_EVENT_REMOVE)
                server.streams.erase(index);
            server.refresh();
        },
        this);
    static_cast<void>(pa_context_connect(context, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr));
}

PulseVolume::Server::~Server()
{
    pa_context_set_state_callback(context, nullptr, nullptr);
    pa_context_set_subscribe_callback(context, nullptr, nullptr);
    pa_context_disconnect(context);
    pa_context_unref(context);
    pa_glib_mainloop_free(loop);
}

void PulseVolume::Server::refresh()
{
    if (!ready)
        return;
    ask_again = asking;
    if (asking)
        return;
    asking = true;
    sets_when_asked = sets;
    if (owner.scope_ == Scope::System) {
        forget(pa_context_get_sink_info_by_name(
            context, "@DEFAULT_SINK@",
            [](pa_context*, const pa_sink_info* sink, int end, void* data) {
                Server& server = *static_cast<Server*>(data);
                if (sink)
                    server.see_sink(*sink);
                if (end)
                    server.refreshed();
            },
            this));
    } else {
        forget(pa_context_get_sink_input_info_list(
            context,
            [](pa_context*, const pa_sink_input_info* stream, int end, void* data) {
                Server& server = *static_cast<Server*>(data);
                if (stream)
                    server.see_stream(*stream);
                if (end)
                    server.refreshed();
            },
            this));
    }
}

void PulseVolume::Server::refreshed()
{
    asking = false;
    if (ask_again || sets != sets_when_asked)
        refresh();
}

void PulseVolume::Server::see_sink(const pa_sink_info& sink)
{
    if (sets != sets_when_asked)
        return;
    current = SinkVolume{sink.name, sink.volume, sink.mute != 0};
    owner.follow(value_of(sink.volume, sink.mute != 0));
}

void PulseVolume::Server::see_stream(const pa_sink_input_info& stream)
{
    const char* tag = pa_proplist_gets(stream.proplist, "qoro.player");
    if (!tag || tag != std::to_string(getpid()) || !stream.has_volume || sets != sets_when_asked)
        return;
    const Stream seen{stream.volume, stream.mute != 0};
    const auto known = streams.find(stream.index);
    if (known == streams.end()) {
        // A new stream gets the program's volume.
        Stream& added = streams.emplace(stream.index, seen).first->second;
        if (value_of(seen.volume, seen.muted) != owner.value_)
            set_stream(stream.index, added, owner.value_);
        return;
    }
    const bool changed = !pa_cvolume_equal(&known->second.volume, &seen.volume) || known->second.muted != seen.muted;
    known->second = seen;
    if (changed)
        owner.follow(value_of(seen.volume, seen.muted));
}

void PulseVolume::Server::set_stream(std::uint32_t index, Stream& stream, float value)
{
    stream.volume = scaled(stream.volume, value);
    forget(pa_context_set_sink_input_volume(context, index, &stream.volume, nullptr, nullptr));
    if (stream.muted && value > 0)
        forget(pa_context_set_sink_input_mute(context, index, 0, nullptr, nullptr));
    stream.muted = stream.muted && value <= 0;
}

void PulseVolume::Server::set(float value)
{
    ++sets;
    if (owner.scope_ == Scope::Program) {
        if (ready)
            for (auto& [index, stream] : streams)
                set_stream(index, stream, value);
        return;
    }
    if (!ready || !current)
        return;
    if (!found.contains(current->sink))
        found.emplace(current->sink, std::pair(*current, std::make_unique<VolumeGuard>(*current)));
    current->volume = scaled(current->volume, value);
    forget(pa_context_set_sink_volume_by_name(context, current->sink.c_str(), &current->volume, nullptr, nullptr));
    if (current->muted && value > 0)
        forget(pa_context_set_sink_mute_by_name(context, current->sink.c_str(), 0, nullptr, nullptr));
    current->muted = current->muted && value <= 0;
}

// Uses a separate, blocking connection, because the main loop no longer runs.
void PulseVolume::Server::put_back()
{
    if (found.empty() && streams.empty())
        return;
    PulseCall call(PutBackPatience);
    if (!call.connected())
        return;
    for (auto& [sink, was] : found) {
        const SinkVolume& before = was.first;
        call.wait(pa_context_set_sink_volume_by_name(call.context(), sink.c_str(), &before.volume, nullptr, nullptr));
        call.wait(pa_context_set_sink_mute_by_name(call.context(), sink.c_str(), before.muted, nullptr, nullptr));
    }
    for (auto& [index, stream] : streams) {
        const pa_cvolume before = scaled(stream.volume, begun_with);
        if (!pa_cvolume_equal(&before, &stream.volume))
            call.wait(pa_context_set_sink_input_volume(call.context(), index, &before, nullptr, nullptr));
    }
}

PulseVolume::PulseVolume(MainLoop& loop, Scope scope) : scope_(scope), mailbox_(std::make_shared<Mailbox>(loop))
{
    std::optional<SinkVolume> sink;
    bool connected = false;
    {
        PulseCall call(AskPatience);
        connected = call.connected();
        sink = call.default_sink();
    }
    if (sink && (scope == Scope::System || sink->flat))
        value_ = value_of(sink->volume, sink->muted);
    if (connected)
        server_ = std::make_unique<Server>(*this, std::move(sink));
}

PulseVolume::~PulseVolume()
{
    mailbox_->close();
    if (server_)
        server_->put_back();
}

float PulseVolume::value() const
{
    return value_;
}

void PulseVolume::set_value(float volume)
{
    const float value = std::isnan(volume) ? 0 : std::clamp(volume, 0.0F, 1.0F);
    if (server_ && server_volume(value) != server_volume(value_))
        server_->set(value);
    follow(value);
    value_ = value;
}

void PulseVolume::follow(float value)
{
    // Values within one of the server's integer steps are equal.
    if (server_volume(value) == server_volume(value_))
        return;
    value_ = value;
    mailbox_->post([this] {
        if (on_change)
            on_change();
    });
}

std::optional<float> PulseVolume::player_volume() const
{
    if (scope_ == Scope::System)
        return {};
    return value_;
}

} // namespace qoro
