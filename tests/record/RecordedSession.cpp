#include "tests/record/RecordedSession.h"

#include "Places.h"
#include "formats/AdFile.h"
#include "formats/InputFile.h"
#include "host/OpenedAd.h"
#include "host/OpenedTag.h"
#include "host/Rehearsal.h"
#include "kit/NetworkZone.h"
#include "record/Recording.h"
#include "record/StandIns.h"
#include "record/TapedPlatform.h"
#include "record/TapedTag.h"
#include "simulator/SimulatedPlatform.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <sstream>
#include <utility>

namespace qoro::test
{

namespace
{

/// A simulated platform with a calendar, a message composer and a store that are screens of the kit, as a desktop may
/// have them.
class MachineWithStandIns final : public Platform
{
public:
    MachineWithStandIns(SimulatedPlatform& machine, Recorder& recorder)
        : machine_(machine), calendar_(recorder), device_(machine, recorder)
    {
    }
    MainLoop& loop() override { return machine_.loop(); }
    PlayerFactory& players() override { return machine_.players(); }
    WebEngineFactory& web_engines() override { return machine_.web_engines(); }
    OutputVolume& volume() override { return machine_.volume(); }
    Fetcher& fetcher() override { return machine_.fetcher(); }
    TextMeasurer& text() override { return machine_.text(); }
    ImageDecoder& images() override { return machine_.images(); }
    Device& device() override { return device_; }
    VideoCacheStore& video_cache() override { return machine_.video_cache(); }
    Calendar& calendar() override { return calendar_; }
    Display& display() override { return machine_.display(); }

private:
    class ShownCalendar final : public Calendar
    {
    public:
        explicit ShownCalendar(Recorder& recorder) : recorder_(recorder) {}
        bool available() override { return true; }
        NSString add(const CalendarEvent& event) override
        {
            show_calendar_stand_in(recorder_, "BEGIN:VEVENT\r\nSUMMARY:" + event.title.text() + "\r\nEND:VEVENT\r\n");
            return nullptr;
        }

    private:
        Recorder& recorder_;
    };
    class DeviceWithPrograms final : public Device
    {
    public:
        DeviceWithPrograms(SimulatedPlatform& machine, Recorder& recorder) : machine_(machine), recorder_(recorder) {}
        const DeviceFacts& facts() const override { return machine_.device().facts(); }
        UIDeviceOrientation orientation() const override { return machine_.device().orientation(); }
        void force_orientation(UIDeviceOrientation orientation) override
        {
            machine_.device().force_orientation(orientation);
        }
        UIInterfaceOrientation status_bar_orientation() const override
        {
            return machine_.device().status_bar_orientation();
        }
        bool status_bar_hidden() const override { return machine_.device().status_bar_hidden(); }
        bool can_open(const NSURL&) override { return true; }
        void open(const NSURL& address) override { show_address_stand_in(recorder_, address, nullptr); }
        void open_and_wait(const NSURL& address, std::function<void()> done) override
        {
            show_address_stand_in(recorder_, address,
                                  [done = std::move(done)] { Platform::current().loop().post(done); });
        }

    private:
        SimulatedPlatform& machine_;
        Recorder& recorder_;
    };

    SimulatedPlatform& machine_;
    ShownCalendar calendar_;
    DeviceWithPrograms device_;
};

} // namespace

Recorded record(const std::string& scenario_text, const RecordingSetup& setup)
{
    const Scenario scenario = read_scenario(scenario_text, "scenario");
    Recorded made;
    bool first = true;
    TapedPlatform taped;
    Recorder recorder(taped, {[&](std::string_view head) { made.text = head; },
                              [&](std::string_view entry) {
                                  made.text += std::exchange(first, false) ? "\n" : ",\n";
                                  made.text += entry;
                              }});
    SimulatedPlatform machine(scenario.world, &taped);
    MachineWithStandIns with_stand_ins(machine, recorder);
    taped.record_to(recorder, setup.stand_ins ? static_cast<Platform&>(with_stand_ins) : machine, [&] {
        machine.players().leave_app();
        taped.application_did_enter_background();
    });
    if (!setup.why_video_fails.empty())
        machine.loop().start_timer(0.5, false, [&] { taped.emit(event::PlayerFailed{setup.why_video_fails}); });
    TapedControls controls(recorder, &machine);
    const Redaction redaction = setup.redacts ? Redaction(scenario.world.device.facts, scenario.host) : Redaction();
    Trace trace(recorder.clock(), TraceFormat::Json, [&](std::string_view line) { made.trace += redaction.of(line); });
    const auto& device = scenario.world.device;
    recorder.begin(scenario.ad ? recording_head(device, scenario.host, *scenario.ad, scenario.steps, setup.redacts)
                               : recording_head(device, scenario.host, scenario.tag, scenario.steps, setup.redacts),
                   redaction, machine.loop());
    recorder.forward_to(&trace);
    std::unique_ptr<OpenedAd> ad;
    std::unique_ptr<OpenedTag> tag;
    TapedTag taped_tag(recorder);
    Rehearsal rehearsal{scenario.steps, controls, nullptr};
    if (scenario.ad) {
        recorder.host("open", [&] {
            ad = std::make_unique<OpenedAd>(taped, copy_of(*scenario.ad), nullptr, scenario.host, std::move(rehearsal));
        });
    } else {
        OpenedTag::Tag what{.address = scenario.tag};
        if (!setup.document.empty())
            what = {.text = setup.document};
        // The machine's own date and random numbers: no two sessions are the same.
        TagOptions options = taped_tag.options({});
        options.resolver.band.width = 750;
        const NSDictionary opening = tag_opening(taped, what, options);
        recorder.host(
            "openTag",
            [&] {
                tag = std::make_unique<OpenedTag>(taped, what, nullptr, scenario.host, std::move(options),
                                                  std::move(rehearsal));
            },
            opening);
    }
    machine.run_until(scenario.steps.empty() ? 1 : scenario.steps.back().at + 1);
    recorder.end();
    taped.set_event_sink(nullptr);
    tag.reset();
    ad.reset();
    made.text += RecordingTail;
    return made;
}

std::string replayed(const std::string& recording)
{
    std::string trace;
    replay(recording, "recording.json", TraceFormat::Json, [&](std::string_view line) { trace += line; });
    return trace;
}

void expect_same(const std::string& scenario, const RecordingSetup& setup)
{
    const Recorded made = record(scenario, setup);
    ASSERT_FALSE(made.trace.empty());
    EXPECT_TRUE(nlohmann::json::accept(made.text));
    EXPECT_TRUE(is_recording(made.text));
    EXPECT_EQ(replayed(made.text), made.trace);
}

std::string first_session()
{
    return read_input_file(QORO_SOURCE_DIR "/examples/simulator/first-session.json");
}

std::vector<nlohmann::json> parsed(const std::string& trace)
{
    std::vector<nlohmann::json> all;
    std::istringstream lines(trace);
    for (std::string line; std::getline(lines, line);)
        all.push_back(nlohmann::json::parse(line));
    return all;
}

std::vector<std::string> trackers_of(const std::string& trace)
{
    std::vector<std::string> sent;
    for (const nlohmann::json& line : parsed(trace))
        if (line["what"] == "request" && line["for"] == "tracking")
            sent.push_back(line["url"]);
    return sent;
}

} // namespace qoro::test
