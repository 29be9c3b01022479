#include "tests/support/AdSession.h"

#include "platform/Numbers.h"
#include "views/ViewNode.h"

#include <algorithm>
#include <type_traits>
#include <utility>
#include <variant>

namespace qoro
{

namespace
{

std::string in_quotes(std::string_view text)
{
    std::string json = "\"";
    for (const char letter : text) {
        if (letter == '"' || letter == '\\')
            json += '\\';
        json += letter;
    }
    return json + '"';
}

std::string as_text(const Field& field)
{
    return std::visit(
        [](const auto& content) -> std::string {
            using Content = std::remove_cvref_t<decltype(content)>;
            if constexpr (std::is_same_v<Content, std::nullptr_t>)
                return "null";
            else if constexpr (std::is_same_v<Content, bool>)
                return content ? "true" : "false";
            else if constexpr (std::is_same_v<Content, std::int64_t>)
                return std::to_string(content);
            else if constexpr (std::is_same_v<Content, std::string_view>)
                return std::string(content);
            else if constexpr (std::is_same_v<Content, const Value*>)
                return as_text(*content);
            else
                return shortest_text(content);
        },
        field.content);
}

} // namespace

std::string as_text(const Value& value)
{
    std::string json;
    if (value.is_null())
        return "null";
    if (value.is_bool())
        return value.boolValue() ? "true" : "false";
    if (value.is_string())
        return in_quotes(value.string().text());
    if (value.is_array()) {
        for (const Value& entry : value.array())
            json += (json.empty() ? "" : ",") + as_text(entry);
        return '[' + json + ']';
    }
    if (value.is_dictionary()) {
        for (const auto& [key, entry] : value.dictionary())
            json += (json.empty() ? "" : ",") + in_quotes(key) + ':' + as_text(entry);
        return '{' + json + '}';
    }
    return value.stringValue().text();
}

World AdSession::manual_world()
{
    World world;
    world.video.manual = true;
    return world;
}

AdSession::AdSession(World world, const HostSetup& host) : platform_(std::move(world))
{
    platform_.set_event_sink(this);
    ad_->strVideoUrl = "http://ad/v.mp4";
    ad_->fVideoWidth = 1280;
    ad_->fVideoHeight = 720;
    ad_->portraitModeType = VIDEO_AND_WEBVIEW;
    ad_->portraitVideoPos = TOP;
    ad_->iCloseBtnCountdown = 5;
    ad_->iBufferingSufferTime = -1;
    session_ = std::make_unique<Session>(platform_, platform_, host, ad_);
}

AdSession::~AdSession() = default;

template <typename F>
void AdSession::as_event(F&& event)
{
    platform_.dispatch(std::forward<F>(event));
}

void AdSession::open()
{
    as_event([this] { session_->open(0); });
}

void AdSession::let_pass(double seconds)
{
    platform_.run_until(now() + seconds);
}

void AdSession::tap(const UIButton& button)
{
    // The tap may clear the field.
    const UIButton touched = button;
    as_event([&touched] { touched.sendTouchUpInside(); });
}

void AdSession::touch(double x, double y)
{
    as_event([this, x, y] { qoro::touch(platform_, {x, y}); });
}

void AdSession::rotate(int device_orientation)
{
    DeviceChange change;
    change.orientation = static_cast<UIDeviceOrientation>(device_orientation);
    as_event([this, &change] { platform_.change_device(change); });
}

void AdSession::turn_status_bar(UIInterfaceOrientation orientation)
{
    DeviceChange change;
    change.status_bar_orientation = orientation;
    as_event([this, &change] { platform_.change_device(change); });
}

void AdSession::set_volume(float volume)
{
    DeviceChange change;
    change.output_volume = volume;
    as_event([this, &change] { platform_.change_device(change); });
    let_pass(0);
}

void AdSession::leave_app()
{
    as_event([this] { platform_.leave_app(); });
    let_pass(0);
}

void AdSession::return_to_app()
{
    as_event([this] { platform_.application_will_enter_foreground(); });
    as_event([this] { platform_.application_did_become_active(); });
}

void AdSession::interrupt(int type)
{
    as_event([this, type] { platform_.audio_interrupted(static_cast<AVAudioSessionInterruptionType>(type)); });
}

ScriptAnswer AdSession::script_says(const std::string& command, const NSArray& arguments)
{
    ScriptAnswer answer;
    as_event([&] { answer = controller().take_script_message({command, arguments}); });
    return answer;
}

void AdSession::release()
{
    session_->release();
}

void AdSession::bring(const PlayerNews& news)
{
    as_event([this, &news] { platform_.bring_news(controller().qoroMoviePlayer, news); });
}

void AdSession::player_reports_load(int state)
{
    PlayerNews news;
    news.load = static_cast<MPMovieLoadState>(state);
    bring(news);
}

void AdSession::player_reports_state(int state)
{
    PlayerNews news;
    news.state = static_cast<MPMoviePlaybackState>(state);
    bring(news);
}

void AdSession::player_reports_finish(int reason)
{
    PlayerNews news;
    news.finish = static_cast<MPMovieFinishReason>(reason);
    bring(news);
}

void AdSession::player_is_at(double time)
{
    PlayerNews news;
    news.time = time;
    bring(news);
}

void AdSession::player_lasts(double duration)
{
    PlayerNews news;
    news.duration = duration;
    bring(news);
}

void AdSession::plays(double duration)
{
    player_lasts(duration);
    player_reports_load(MPMovieLoadStatePlayable);
    player_reports_state(MPMoviePlaybackStatePlaying);
}

void AdSession::plays_on()
{
    player_reports_state(MPMoviePlaybackStatePlaying);
}

void AdSession::pauses_at(double time)
{
    player_is_at(time);
    player_reports_state(MPMoviePlaybackStatePaused);
}

void AdSession::ends()
{
    pauses_at(controller().qoroMoviePlayer.duration());
    player_reports_finish(MPMovieFinishReasonPlaybackEnded);
}

std::vector<std::string> AdSession::lines(std::string_view what) const
{
    std::vector<std::string> found;
    for (const std::string& line : transcript_) {
        if (line.starts_with(what) && line.substr(what.size()).starts_with(' '))
            found.push_back(line.substr(what.size() + 1));
    }
    return found;
}

std::vector<std::string> AdSession::fetched() const
{
    constexpr std::string_view tracker = " tracking";
    std::vector<std::string> urls;
    for (const std::string& line : lines("request")) {
        if (line.ends_with(tracker))
            urls.push_back(line.substr(0, line.size() - tracker.size()));
    }
    return urls;
}

std::vector<std::string> AdSession::events() const
{
    constexpr std::string_view without_data = " null";
    std::vector<std::string> events;
    for (const std::string& line : lines("js")) {
        // The number of listeners is not part of the event.
        std::string event = line.substr(0, line.rfind(' '));
        if (event.ends_with(without_data))
            event.resize(event.size() - without_data.size());
        events.push_back(event);
    }
    return events;
}

std::size_t AdSession::count_of(std::string_view line) const
{
    return static_cast<std::size_t>(std::count(transcript_.begin(), transcript_.end(), line));
}

double AdSession::now()
{
    return platform_.loop().now();
}

void AdSession::receive(const Event& event)
{
    if (const auto* close = std::get_if<event::AdClosed>(&event))
        closes_.push_back(close->by);
    describe(event, [this](std::string_view what, std::span<const Field> fields) {
        std::string line(what);
        for (const Field& field : fields)
            line += ' ' + as_text(field);
        transcript_.push_back(std::move(line));
    });
}

} // namespace qoro
