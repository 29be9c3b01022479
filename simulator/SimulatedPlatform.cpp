#include "simulator/SimulatedPlatform.h"

#include "platform/Decorators.h"
#include "platform/MediaPlayer.h"
#include "views/TearDown.h"

#include <utility>

namespace qoro
{

SimulatedPlatform::SimulatedPlatform(World world, Platform* front)
    : world_(std::move(world)), front_(front ? *front : *this), players_(loop_, world_), web_engines_(loop_, world_),
      device_(world_.device), volume_(front_, loop_, world_.device), net_(loop_, world_), text_(world_),
      video_cache_(world_), calendar_(world_.device)
{
}

SimulatedPlatform::~SimulatedPlatform()
{
    tear_down(front_);
}

void SimulatedPlatform::bring_news(const MPMoviePlayerController& player, const PlayerNews& news)
{
    // The handle retains the player until its news is delivered.
    const MPMoviePlayerController held = player;
    if (auto* engine = static_cast<SimulatedPlayer*>(undecorated(held.engine())))
        engine->take(news);
}

void SimulatedPlatform::break_page(const UIWebView& page, PageFault fault)
{
    if (auto* engine = static_cast<SimulatedWebEngine*>(undecorated(page.engine())))
        engine->break_page(fault);
}

void SimulatedPlatform::change_server(const ServersStep::Change& change)
{
    net_.change_server(change.server, change.failure);
}

bool SimulatedPlatform::page_runs(const UIWebView& page) const
{
    const auto* engine = static_cast<const SimulatedWebEngine*>(undecorated(page.engine()));
    return engine && engine->script_runs();
}

void SimulatedPlatform::change_device(const DeviceChange& change)
{
    const UIDeviceOrientation held_before = device_.orientation();
    const bool bar_turned = device_.turn(change);
    if (change.output_volume)
        volume_.set_value(*change.output_volume);
    if (device_.orientation() != held_before)
        front_.device_orientation_changed();
    if (bar_turned)
        front_.status_bar_frame_changed();
}

} // namespace qoro
