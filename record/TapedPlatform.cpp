#include "record/TapedPlatform.h"

#include "record/TapedPage.h"
#include "record/TapedPlayer.h"
#include "record/Values.h"

#include <map>
#include <optional>
#include <string>
#include <thread>
#include <utility>

namespace qoro
{

namespace
{

using detail::value_of;

class TapedLoop final : public MainLoop
{
public:
    TapedLoop(Tape& tape, MainLoop* real) : tape_(tape), real_(real) {}

    double now() const override
    {
        if (is_machines())
            return real_->now();
        return tape_.read("now", {}, [this] { return Value(real_->now()); }).doubleValue();
    }

    TimerId start_timer(double interval, bool repeats, std::function<void()> fire) override
    {
        if (is_machines())
            return real_->start_timer(interval, repeats, std::move(fire));
        const NSArray of{interval, repeats};
        if (!real_)
            return Taped | tape_.open("timer", of, repeats, [fire = std::move(fire)](const Value&) { fire(); });
        const Tape::SourceId id = tape_.open("timer", of, repeats, {});
        timers_[id] = real_->start_timer(interval, repeats, [this, id, repeats, fire = std::move(fire)] {
            if (!repeats)
                timers_.erase(id);
            tape_.arrive("timer", id, {}, fire);
        });
        return Taped | id;
    }

    void stop_timer(TimerId timer) override
    {
        if ((timer & Taped) == 0) {
            if (real_)
                real_->stop_timer(timer);
            return;
        }
        const Tape::SourceId id = timer & ~Taped;
        tape_.close(id);
        const auto known = timers_.find(id);
        if (known == timers_.end())
            return;
        const TimerId own = known->second;
        timers_.erase(known);
        real_->stop_timer(own);
    }

    double due(TimerId timer) const override
    {
        if ((timer & Taped) == 0)
            return real_ ? real_->due(timer) : 0;
        const Tape::SourceId id = timer & ~Taped;
        return detail::finite_or_infinity(tape_.read("due", static_cast<std::int64_t>(id), [&] {
            const auto known = timers_.find(id);
            return Value(known == timers_.end() ? 0 : real_->due(known->second));
        }));
    }

    void post(std::function<void()> work) override
    {
        if (is_machines())
            return real_->post(std::move(work));
        if (!real_) {
            tape_.open("post", {}, false, [work = std::move(work)](const Value&) { work(); });
            return;
        }
        const Tape::SourceId id = tape_.open("post", {}, false, {});
        real_->post([this, id, work = std::move(work)] { tape_.arrive("post", id, {}, work); });
    }

    void clear() override
    {
        timers_.clear();
        tape_.close(0);
        if (real_)
            real_->clear();
    }

private:
    /// Marks the identities of the session's timers: the machine's own pass through.
    static constexpr TimerId Taped = TimerId{1} << 62U;

    /// Other threads post for the machine.
    bool is_machines() const { return real_ && (std::this_thread::get_id() != thread_ || !tape_.inside()); }

    Tape& tape_;
    MainLoop* const real_;
    const std::thread::id thread_ = std::this_thread::get_id();
    /// The machine's timers by source.
    std::map<Tape::SourceId, TimerId> timers_;
};

class TapedVolume final : public OutputVolume
{
public:
    TapedVolume(Tape& tape, OutputVolume* real) : tape_(tape), real_(real) {}
    float value() const override
    {
        return tape_.read("volume", {}, [this] { return Value(static_cast<double>(real_->value())); }).floatValue();
    }
    void set_value(float volume) override
    {
        tape_.call("set_volume", [&] { real_->set_value(volume); });
    }
    bool has_slider() const override
    {
        return tape_.read("slider", {}, [this] { return Value(real_->has_slider()); }).boolValue();
    }

private:
    Tape& tape_;
    OutputVolume* const real_;
};

class TapedFetcher final : public Fetcher
{
public:
    TapedFetcher(Tape& tape, MainLoop& loop, Fetcher* real) : tape_(tape), loop_(loop), real_(real) {}

    void fetch(const std::string& address, FetchKind kind, std::function<void(FetchAnswer)> answer) override
    {
        if (!tape_.inside())
            return real_->fetch(address, kind, std::move(answer));
        const auto id = tape_.open("fetch", NSArray{address, name_of(kind)}, false,
                                   [answer](const Value& what) { answer(detail::fetch_answer_of(what)); });
        tape_.call("fetch", [&] {
            real_->fetch(address, kind, [&tape = tape_, id, kind, answer](const FetchAnswer& given) {
                tape.arrive("answer", id, value_of(given, kind == FetchKind::Page), [&] { answer(given); });
            });
        });
    }

    FetchAnswer fetch_now(const std::string& address) override
    {
        std::optional<FetchAnswer> given;
        const Value value = tape_.read("fetchNow", address, [&] {
            const double begin = loop_.now();
            given = real_->fetch_now(address);
            Value told = value_of(*given, false);
            told.dictionary().setObject(loop_.now() - begin, "seconds");
            return told;
        });
        return given ? std::move(*given) : detail::fetch_answer_of(value);
    }

private:
    static const char* name_of(FetchKind kind)
    {
        return kind == FetchKind::Page ? "page" : kind == FetchKind::Tracker ? "tracker" : "image";
    }

    Tape& tape_;
    MainLoop& loop_;
    Fetcher* const real_;
};

class TapedText final : public TextMeasurer
{
public:
    TapedText(Tape& tape, TextMeasurer* real) : tape_(tape), real_(real) {}
    CGSize measure(const NSString& text, const FontSpec& font, CGSize box) override
    {
        return detail::size_of(tape_.read("text", NSArray{text, font.family, font.size, value_of(box)},
                                          [&] { return value_of(real_->measure(text, font, box)); }));
    }

private:
    Tape& tape_;
    TextMeasurer* const real_;
};

class TapedImages final : public ImageDecoder
{
public:
    TapedImages(Tape& tape, ImageDecoder* real) : tape_(tape), real_(real) {}
    std::shared_ptr<const DecodedImage> decode(const NSData& bytes) override
    {
        std::shared_ptr<const DecodedImage> decoded;
        const bool is_picture = tape_
                                    .read("decode", {},
                                          [&] {
                                              decoded = real_->decode(bytes);
                                              return Value(decoded != nullptr);
                                          })
                                    .boolValue();
        if (is_picture && !decoded)
            decoded = std::make_shared<DecodedImage>();
        return decoded;
    }

private:
    Tape& tape_;
    ImageDecoder* const real_;
};

class TapedDevice final : public Device
{
public:
    TapedDevice(Tape& tape, Device* real, const DeviceFacts& facts) : tape_(tape), real_(real), facts_(facts) {}

    const DeviceFacts& facts() const override { return real_ ? real_->facts() : facts_; }
    UIDeviceOrientation orientation() const override
    {
        return static_cast<UIDeviceOrientation>(
            read("orientation", [this] { return Value(static_cast<int>(real_->orientation())); }).intValue());
    }
    void force_orientation(UIDeviceOrientation orientation) override
    {
        tape_.call("force_orientation", [&] { real_->force_orientation(orientation); });
    }
    UIInterfaceOrientation status_bar_orientation() const override
    {
        return static_cast<UIInterfaceOrientation>(
            read("statusBar", [this] { return Value(static_cast<int>(real_->status_bar_orientation())); }).intValue());
    }
    bool status_bar_hidden() const override
    {
        return read("statusBarHidden", [this] { return Value(real_->status_bar_hidden()); }).boolValue();
    }
    bool can_open(const NSURL& address) override
    {
        return tape_.read("canOpen", address.absoluteString(), [&] { return Value(real_->can_open(address)); })
            .boolValue();
    }
    void open(const NSURL& address) override
    {
        tape_.call("open", [&] { real_->open(address); });
    }
    void open_and_wait(const NSURL& address, std::function<void()> done) override
    {
        if (!tape_.inside())
            return real_->open_and_wait(address, std::move(done));
        const auto id = tape_.open("away", address.absoluteString(), false, [done](const Value&) {
            if (done)
                done();
        });
        tape_.call("open_and_wait", [&] {
            std::function<void()> back;
            if (done)
                back = [&tape = tape_, id, done] { tape.arrive("back", id, {}, done); };
            real_->open_and_wait(address, std::move(back));
        });
    }

private:
    Value read(const char* name, const std::function<Value()>& real) const { return tape_.read(name, {}, real); }

    Tape& tape_;
    Device* const real_;
    const DeviceFacts facts_;
};

class TapedCopies final : public VideoCacheStore
{
public:
    TapedCopies(Tape& tape, VideoCacheStore* real) : tape_(tape), real_(real) {}
    NSString path_for(const NSString& address) override
    {
        return tape_.read("copy", address, [&] { return Value(real_->path_for(address)); }).string();
    }

private:
    Tape& tape_;
    VideoCacheStore* const real_;
};

class TapedCalendar final : public Calendar
{
public:
    TapedCalendar(Tape& tape, Calendar* real) : tape_(tape), real_(real) {}
    bool available() override
    {
        return tape_.read("calendar", {}, [this] { return Value(real_->available()); }).boolValue();
    }
    NSString add(const CalendarEvent& event) override
    {
        return tape_.read("addEvent", event.title, [&] { return Value(real_->add(event)); }).string();
    }

private:
    Tape& tape_;
    Calendar* const real_;
};

class TapedDisplay final : public Display
{
public:
    TapedDisplay(Tape& tape, Display* real) : tape_(tape), real_(real) {}
    void needs_display() override
    {
        tape_.call("display", [this] { real_->needs_display(); });
    }

private:
    Tape& tape_;
    Display* const real_;
};

class TapedTranslation final : public Translation
{
public:
    TapedTranslation(Tape& tape, Translation* real) : tape_(tape), real_(real) {}
    std::string translate(const char* text) override
    {
        return tape_.read("translation", text, [&] { return Value(real_->translate(text)); }).text();
    }
    std::string translate(const CountedText& text, unsigned long number) override
    {
        return tape_
            .read("translation", NSArray{text.many, static_cast<std::int64_t>(number)},
                  [&] { return Value(real_->translate(text, number)); })
            .text();
    }

private:
    Tape& tape_;
    Translation* const real_;
};

} // namespace

struct TapedPlatform::Ports {
    Ports(Tape& to_tape, Platform* machine, const DeviceFacts& facts, std::function<void()> leave)
        : tape(to_tape), loop(tape, machine ? &machine->loop() : nullptr),
          players(tape, machine ? &machine->players() : nullptr),
          pages(tape, machine ? &machine->web_engines() : nullptr),
          volume(tape, machine ? &machine->volume() : nullptr),
          fetcher(tape, loop, machine ? &machine->fetcher() : nullptr),
          text(tape, machine ? &machine->text() : nullptr), images(tape, machine ? &machine->images() : nullptr),
          device(tape, machine ? &machine->device() : nullptr, facts),
          copies(tape, machine ? &machine->video_cache() : nullptr),
          calendar(tape, machine ? &machine->calendar() : nullptr),
          display(tape, machine ? &machine->display() : nullptr),
          translation(tape, machine ? &machine->translation() : nullptr), leave_app(std::move(leave))
    {
    }

    Tape& tape;
    TapedLoop loop;
    TapedPlayers players;
    TapedPages pages;
    TapedVolume volume;
    TapedFetcher fetcher;
    TapedText text;
    TapedImages images;
    TapedDevice device;
    TapedCopies copies;
    TapedCalendar calendar;
    TapedDisplay display;
    TapedTranslation translation;
    const std::function<void()> leave_app;
};

TapedPlatform::TapedPlatform() = default;
TapedPlatform::~TapedPlatform() = default;

void TapedPlatform::replay_from(Tape& tape, const DeviceFacts& facts)
{
    ports_ = std::make_unique<Ports>(tape, nullptr, facts, nullptr);
}

void TapedPlatform::record_to(Tape& tape, Platform& machine, std::function<void()> leave_app)
{
    ports_ = std::make_unique<Ports>(tape, &machine, DeviceFacts{}, std::move(leave_app));
}

MainLoop& TapedPlatform::loop()
{
    return ports_->loop;
}

PlayerFactory& TapedPlatform::players()
{
    return ports_->players;
}

WebEngineFactory& TapedPlatform::web_engines()
{
    return ports_->pages;
}

OutputVolume& TapedPlatform::volume()
{
    return ports_->volume;
}

Fetcher& TapedPlatform::fetcher()
{
    return ports_->fetcher;
}

TextMeasurer& TapedPlatform::text()
{
    return ports_->text;
}

ImageDecoder& TapedPlatform::images()
{
    return ports_->images;
}

Device& TapedPlatform::device()
{
    return ports_->device;
}

VideoCacheStore& TapedPlatform::video_cache()
{
    return ports_->copies;
}

Calendar& TapedPlatform::calendar()
{
    return ports_->calendar;
}

Display& TapedPlatform::display()
{
    return ports_->display;
}

Translation& TapedPlatform::translation()
{
    return ports_->translation;
}

void TapedPlatform::leave_app()
{
    ports_->tape.call("leave_app", ports_->leave_app);
}

void TapedControls::bring_news(const MPMoviePlayerController& player, const PlayerNews& news)
{
    tape_.call("bring_news", [&] { real_->bring_news(player, news); });
}

void TapedControls::change_device(const DeviceChange& change)
{
    tape_.call("change_device", [&] { real_->change_device(change); });
}

void TapedControls::break_page(const UIWebView& page, PageFault fault)
{
    tape_.call("break_page", [&] { real_->break_page(page, fault); });
}

bool TapedControls::page_runs(const UIWebView& page) const
{
    return tape_.read("pageRuns", {}, [&] { return Value(real_->page_runs(page)); }).boolValue();
}

} // namespace qoro
