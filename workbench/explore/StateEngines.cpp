#include "workbench/explore/StateReader.h"

namespace qoro
{

void StateReader::find_engines()
{
    for (SimulatedPlayer* each : platform_.players_.players_)
        if (each)
            players_.push_back(each);
    for (SimulatedWebEngine* each : platform_.web_engines_.engines_)
        if (each)
            pages_.push_back(each);
}

void StateReader::engines()
{
    find_engines();
    out_.add("players", players_.size());
    for (const SimulatedPlayer* each : players_)
        player(*each);
    out_.add("pages", pages_.size());
    for (const SimulatedWebEngine* each : pages_)
        page(*each);
}

void StateReader::player(const SimulatedPlayer& player)
{
    out_.add("player.source", player.has_source_);
    // The setup that it follows, by the address of its video; empty for the common one.
    std::string_view video;
    for (const auto& [address, setup] : platform_.world_.videos)
        if (&setup == &player.video_)
            video = address;
    out_.add("player.video", video);
    out_.add("player.autoplay", player.settings_.should_autoplay);
    out_.add("player.scaling", player.settings_.scaling_mode);
    out_.add("player.fullscreen", player.settings_.fullscreen);
    out_.add("player.controls", player.settings_.control_style);
    out_.add("player.repeat", player.settings_.repeat_mode);
    out_.add("player.sourceType", player.settings_.source_type);
    out_.add("player.duration", player.duration_);
    out_.add("player.load", player.load_state_);
    out_.add("player.state", player.playback_state_);
    out_.add("player.ready", player.ready_);
    out_.add("player.wantsPlay", player.wants_play_);
    out_.add("player.ended", player.ended_);
    out_.add("player.stalled", player.stalled_);
    out_.add("player.failed", player.failed_);
    out_.add("player.failedForGood", player.failed_for_good_);
    out_.add("player.vainPlays", player.vain_plays_);
    out_.add("player.stallsDone", player.stalls_done_.size());
    for (const bool done : player.stalls_done_)
        out_.add("player.stallsDone", done);
    if (!whole_)
        return;
    const MediaTime position = player.position();
    out_.add("player.position", position.microseconds_since(MediaTime()));
    out_.add("player.position", position.seconds());
    out_.add("player.manualTime", player.manual_time_);
    out_.add("player.ahead", player.ahead_timer_ != 0);
    if (player.ahead_timer_ != 0) {
        out_.add("player.ahead", player.ahead_);
        out_.add("player.aheadAt", player.ahead_at_.seconds());
        out_.add("player.aheadStall", player.ahead_stall_);
    }
}

void StateReader::page(const SimulatedWebEngine& page)
{
    out_.add("page.address", page.address_);
    out_.add("page.loading", page.loading_);
    out_.add("page.content", page.has_content_);
    out_.add("page.fault", page.fault_.has_value() ? static_cast<int>(*page.fault_) : -1);
    out_.add("page.watched", page.watched_);
    out_.add("page.silent", page.silent_);
    out_.add("page.visited", page.visited_.size());
    for (const NSURL& address : page.visited_)
        out_.add("page.visited", address);
    out_.add("page.place", page.place_);
    out_.add("page.byAddress", page.by_address_);
}

} // namespace qoro
