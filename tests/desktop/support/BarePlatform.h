#pragma once

#include "desktop/GlibLoop.h"
#include "platform/Platform.h"

namespace qoro::test
{

/// A platform whose ports do nothing. A test sets the pointers of the ports it needs.
class BarePlatform : public Platform,
                     private PlayerFactory,
                     private WebEngineFactory,
                     private OutputVolume,
                     private Fetcher,
                     private TextMeasurer,
                     private ImageDecoder,
                     private Device,
                     private VideoCacheStore,
                     private Calendar,
                     private Display
{
public:
    BarePlatform() = default;
    ~BarePlatform() override { drop_shared(); }

    GlibLoop& loop() override { return loop_; }
    PlayerFactory& players() override { return player_factory ? *player_factory : *this; }
    WebEngineFactory& web_engines() override { return web_engine_factory ? *web_engine_factory : *this; }
    OutputVolume& volume() override { return *this; }
    Fetcher& fetcher() override { return *this; }
    TextMeasurer& text() override { return *this; }
    ImageDecoder& images() override { return image_decoder ? *image_decoder : *this; }
    Device& device() override { return *this; }
    VideoCacheStore& video_cache() override { return *this; }
    Calendar& calendar() override { return *this; }
    Display& display() override { return shown_on ? *shown_on : *this; }

    PlayerFactory* player_factory = nullptr;
    WebEngineFactory* web_engine_factory = nullptr;
    ImageDecoder* image_decoder = nullptr;
    Display* shown_on = nullptr;
    DeviceFacts device_facts;
    int device_orientation = 1;
    int bar_orientation = 1;

private:
    std::unique_ptr<PlayerEngine> make_player(const NSURL&, PlayerListener&) override { return nullptr; }
    std::unique_ptr<WebEngine> make_web_engine(WebListener&, PageKind) override { return nullptr; }
    float value() const override { return 0; }
    void set_value(float) override {}
    bool has_slider() const override { return false; }
    void fetch(const std::string&, FetchKind, std::function<void(FetchAnswer)>) override {}
    FetchAnswer fetch_now(const std::string&) override { return {}; }
    CGSize measure(const NSString&, const FontSpec&, CGSize) override { return {}; }
    std::shared_ptr<const DecodedImage> decode(const NSData&) override { return nullptr; }
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
    bool status_bar_hidden() const override { return false; }
    bool can_open(const NSURL&) override { return false; }
    void open(const NSURL&) override {}
    void open_and_wait(const NSURL&, std::function<void()>) override {}
    NSString path_for(const NSString&) override { return nullptr; }
    bool available() override { return false; }
    NSString add(const CalendarEvent&) override { return "there is none"; }
    void needs_display() override {}

    GlibLoop loop_{this};
};

} // namespace qoro::test
