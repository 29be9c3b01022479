#pragma once

#include "platform/Platform.h"
#include "simulator/SimulatedNet.h"
#include "simulator/SimulatedText.h"
#include "simulator/VirtualLoop.h"

#include <string>
#include <vector>

namespace qoro::test
{

/// A player controlled by the test.
struct ScriptedPlayer : PlayerEngine {
    explicit ScriptedPlayer(PlayerListener& news) : listener(news) {}

    void apply(const PlayerSettings& with) override { applied.push_back(with); }
    void play() override { ++plays; }
    void pause() override { ++pauses; }
    void seek(double to) override { time = to; }
    double current_time() const override { return time; }
    double duration() const override { return length; }
    MPMovieLoadState load_state() const override { return static_cast<MPMovieLoadState>(load); }
    MPMoviePlaybackState playback_state() const override { return static_cast<MPMoviePlaybackState>(state); }

    PlayerListener& listener;
    std::vector<PlayerSettings> applied;
    int plays = 0;
    int pauses = 0;
    double time = 0;
    double length = 0;
    int load = 0;
    int state = 0;
};

/// A web engine that records the calls it receives.
struct RecordingWebEngine : WebEngine {
    void load_html(const NSString& page, const NSURL& base) override
    {
        html = page;
        address = base;
    }
    void call_listeners(const std::string& event, const NSArray&, const NSDictionary&) override
    {
        events.push_back(event);
    }
    void load_address(const NSURL& to) override
    {
        address = to;
        state.address = to;
    }
    void go_back() override { calls.emplace_back("back"); }
    void go_forward() override { calls.emplace_back("forward"); }
    void reload() override { calls.emplace_back("reload"); }
    PageState page_state() const override { return state; }
    NSURL current_address() const override { return address; }
    void set_scales_page_to_fit(bool on) override { scales = on; }

    NSString html;
    NSURL address;
    bool scales = false;
    std::vector<std::string> events;
    std::vector<std::string> calls;
    /// Set by the test.
    PageState state;
    WebListener* listener = nullptr;
    PageKind kind{};
};

/// A platform in virtual time for tests of single objects: its player, page, picture, device and display are passive,
/// return what the test has set and count calls; each event to its sink becomes one line of text. It is the thread's
/// current platform while it exists.
class RecordingPlatform : public Platform,
                          private PlayerFactory,
                          private WebEngineFactory,
                          private OutputVolume,
                          private ImageDecoder,
                          private Device,
                          private Calendar,
                          private Display,
                          private EventSink
{
public:
    RecordingPlatform() { set_event_sink(this); }
    ~RecordingPlatform() override
    {
        loop_.clear();
        drop_shared();
    }

    VirtualLoop& loop() override { return loop_; }
    PlayerFactory& players() override { return *this; }
    WebEngineFactory& web_engines() override { return *this; }
    OutputVolume& volume() override { return *this; }
    Fetcher& fetcher() override { return net_; }
    TextMeasurer& text() override { return text_; }
    ImageDecoder& images() override { return *this; }
    Device& device() override { return *this; }
    VideoCacheStore& video_cache() override { return video_cache_; }
    Calendar& calendar() override { return *this; }
    Display& display() override { return *this; }

    /// Advances virtual time.
    void let_pass(double seconds) { loop_.run_until(loop_.now_microseconds() + to_microseconds(seconds)); }

    /// Network answers and text sizes.
    World world;

    std::vector<std::string> transcript;
    int display_requests = 0;
    int decodings = 0;
    int players_gone = 0;
    ScriptedPlayer* player = nullptr;
    RecordingWebEngine* web = nullptr;
    float output_volume = 0.6F;
    bool slider = true;
    DeviceFacts device_facts;
    int device_orientation = 1;
    int bar_orientation = 1;
    bool bar_hidden = false;
    /// Substring of the addresses that can be opened.
    std::string opens = "http";
    std::vector<std::string> opened;
    bool has_calendar = true;
    /// The calendar's error for an event; null for success.
    NSString calendar_answer;
    std::vector<CalendarEvent> calendar_events;
    /// Callback for the viewer's return from an opened address; empty without one.
    std::function<void()> return_of_viewer;

private:
    struct Picture : DecodedImage {
    };

    std::unique_ptr<PlayerEngine> make_player(const NSURL& source, PlayerListener& listener) override;
    std::unique_ptr<WebEngine> make_web_engine(WebListener& listener, PageKind kind) override;
    float value() const override { return output_volume; }
    void set_value(float value) override { output_volume = value; }
    bool has_slider() const override { return slider; }
    /// Decodes any bytes that start with "PNG".
    std::shared_ptr<const DecodedImage> decode(const NSData& bytes) override;
    const DeviceFacts& facts() const override { return device_facts; }
    UIDeviceOrientation orientation() const override { return static_cast<UIDeviceOrientation>(device_orientation); }
    void force_orientation(UIDeviceOrientation orientation) override
    {
        device_orientation = static_cast<int>(orientation);
    }
    UIInterfaceOrientation status_bar_orientation() const override
    {
        return static_cast<UIInterfaceOrientation>(bar_orientation);
    }
    bool status_bar_hidden() const override { return bar_hidden; }
    bool can_open(const NSURL& address) override { return address.absoluteString().contains(opens); }
    void open(const NSURL& address) override { opened.push_back(address.absoluteString().text()); }
    void open_and_wait(const NSURL& address, std::function<void()> done) override
    {
        open(address);
        return_of_viewer = std::move(done);
    }
    bool available() override { return has_calendar; }
    NSString add(const CalendarEvent& event) override
    {
        calendar_events.push_back(event);
        return calendar_answer;
    }
    void needs_display() override { ++display_requests; }
    void receive(const Event& event) override;

    VirtualLoop loop_{*this};
    SimulatedNet net_{loop_, world};
    SimulatedText text_{world};
    SimulatedVideoCache video_cache_{world};
    PlatformScope scope_{*this};
};

} // namespace qoro::test
