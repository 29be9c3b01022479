#include "record/TapedPlayer.h"

#include <utility>

namespace qoro
{

namespace
{

class TapedPlayer final : public PlayerDecorator, private PlayerListener
{
public:
    TapedPlayer(Tape& tape, PlayerFactory* real, const NSURL& source, PlayerListener& listener)
        : tape_(tape), listener_(listener),
          source_(tape.open("player", source.absoluteString(), true, [this](const Value& what) { report(what); }))
    {
        if (real)
            tape_.call("make_player", [&] { real_ = real->make_player(source, *this); });
    }
    ~TapedPlayer() override
    {
        tape_.close(source_);
        tape_.call("drop_player", [&] { real_.reset(); });
    }
    TapedPlayer(const TapedPlayer&) = delete;
    TapedPlayer& operator=(const TapedPlayer&) = delete;

    PlayerEngine* decorated() const override { return real_.get(); }

    void apply(const PlayerSettings& settings) override
    {
        tape_.call("apply", [&] { real_->apply(settings); });
    }
    void play() override
    {
        tape_.call("play", [&] { real_->play(); });
    }
    void pause() override
    {
        tape_.call("pause", [&] { real_->pause(); });
    }
    void seek(double time) override
    {
        tape_.call("seek", [&] { real_->seek(time); });
    }
    double current_time() const override
    {
        return read("position", [&] { return Value(real_->current_time()); }).doubleValue();
    }
    double duration() const override
    {
        return read("duration", [&] { return Value(real_->duration()); }).doubleValue();
    }
    MPMovieLoadState load_state() const override
    {
        return static_cast<MPMovieLoadState>(
            read("load", [&] { return Value(static_cast<int>(real_->load_state())); }).intValue());
    }
    MPMoviePlaybackState playback_state() const override
    {
        return static_cast<MPMoviePlaybackState>(
            read("state", [&] { return Value(static_cast<int>(real_->playback_state())); }).intValue());
    }
    PictureSource* pictures() override { return real_ ? real_->pictures() : nullptr; }

private:
    Value read(const char* name, const std::function<Value()>& real) const
    {
        return tape_.read(name, static_cast<std::int64_t>(source_), real);
    }

    void load_state_changed() override
    {
        arrive("load", {}, [&] { listener_.load_state_changed(); });
    }
    void playback_state_changed() override
    {
        arrive("state", {}, [&] { listener_.playback_state_changed(); });
    }
    void finished(MPMovieFinishReason reason) override
    {
        arrive("finish", static_cast<int>(reason), [&] { listener_.finished(reason); });
    }
    void first_picture() override
    {
        arrive("picture", {}, [&] { listener_.first_picture(); });
    }

    /// The states are for readers of the recording; a session asks for those that it needs.
    void arrive(const char* news, const Value& reason, const std::function<void()>& deliver)
    {
        NSDictionary what{{"news", news},
                          {"load", static_cast<int>(real_->load_state())},
                          {"state", static_cast<int>(real_->playback_state())},
                          {"position", real_->current_time()},
                          {"duration", real_->duration()}};
        if (reason)
            what.setObject(reason, "reason");
        tape_.arrive("player", source_, what, deliver);
    }

    /// On a replay.
    void report(const Value& value)
    {
        const NSDictionary what = value.dictionary();
        const std::string& news = what["news"].text();
        if (news == "load")
            listener_.load_state_changed();
        else if (news == "state")
            listener_.playback_state_changed();
        else if (news == "finish")
            listener_.finished(static_cast<MPMovieFinishReason>(what["reason"].integer()));
        else if (news == "picture")
            listener_.first_picture();
    }

    Tape& tape_;
    PlayerListener& listener_;
    const Tape::SourceId source_;
    std::unique_ptr<PlayerEngine> real_;
};

} // namespace

std::unique_ptr<PlayerEngine> TapedPlayers::make_player(const NSURL& source, PlayerListener& listener)
{
    return std::make_unique<TapedPlayer>(tape_, real_, source, listener);
}

void TapedPlayers::leave_app()
{
    tape_.call("leave_players", [&] { real_->leave_app(); });
}

} // namespace qoro
