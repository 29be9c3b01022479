#include "workbench/explore/StateHash.h"

#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "workbench/explore/StateReader.h"

namespace qoro
{

StateReader::StateReader(Simulation& simulation, StateWriter& out, StateDetail detail)
    : simulation_(simulation), platform_(simulation.platform()), out_(out), detail_(detail),
      whole_(detail == StateDetail::Whole), ad_(simulation.living())
{
}

void StateReader::picture()
{
    find_engines();
    for (const SimulatedPlayer* each : players_)
        out_.add("player.playable", (each->load_state_ & MPMovieLoadStatePlayable) != 0);
    for (const SimulatedWebEngine* each : pages_)
        out_.add("page.content", each->has_content_);
    out_.add("orientation", platform_.device().orientation());
    windows();
}

bool StateReader::read()
{
    if (detail_ == StateDetail::Picture) {
        picture();
        return true;
    }
    engines();
    windows();
    controller();
    collaborators();
    observers();
    device();
    if (whole_)
        queue();
    return known_;
}

void StateReader::observers()
{
    const PlatformScope scope(platform_);
    const NSNotificationCenter& center = NSNotificationCenter::defaultCenter();
    for (const auto& each : center.registrations_) {
        // Of an observer that is gone, the centre removes the registration without effect.
        if (!each.action.target())
            continue;
        out_.add("observes", each.name);
        action("observes", each.action);
        out_.add("observes", poster(each.object));
    }
}

std::string_view StateReader::poster(const void* object) const
{
    if (!object)
        return "any";
    if (object == AVAudioSession::sharedInstance())
        return "audio";
    if (ad_ && object == ad_->qoroMoviePlayer.identity())
        return "player";
    if (ad_ && object == ad_->playerViewController.moviePlayer().identity())
        return "player of controller";
    // Identities are never used again, so it never posts.
    return "gone";
}

void StateReader::device()
{
    const SimulatedDevice& device = platform_.device();
    out_.add("orientation", device.orientation());
    out_.add("statusBar", device.status_bar_orientation());
    out_.add("statusBarHidden", device.status_bar_hidden());
    out_.add("volume", platform_.volume().value());
}

std::optional<StateKey> state_key(Simulation& simulation, StateDetail detail, std::string_view leave_out)
{
    StateWriter out(leave_out);
    return StateReader(simulation, out, detail).read() ? std::optional(out.key()) : std::nullopt;
}

std::string state_text(Simulation& simulation)
{
    std::string text;
    StateWriter out({}, &text);
    if (!StateReader(simulation, out, StateDetail::Whole).read())
        text += "(with work that has no name)\n";
    return text;
}

} // namespace qoro
