#include "tests/contract/PageContract.h"
#include "tests/contract/PlayerContract.h"
#include "tests/contract/VolumeContract.h"

#include "formats/InputError.h"
#include "formats/JsonText.h"
#include "formats/Steps.h"
#include "simulator/SimulatedPlatform.h"

#include <map>

// The contract on the simulator: its world determines everything, and time is virtual.

namespace qoro::test
{

namespace
{

/// Time limit, seconds of virtual time.
constexpr double Patience = 60;
constexpr double Step = 0.001;
/// Position of a stall or failure, and duration of the stall.
constexpr double Middle = 2;
constexpr double StallSeconds = 1;
constexpr double Forever = 3600;

const std::map<Address, std::string> Addresses{
    {Address::Found, "http://net.example/found"},
    {Address::NotFound, "http://net.example/missing"},
    {Address::NobodyThere, "http://nobody.example/"},
    {Address::Silent, "http://net.example/silent"},
};

constexpr const char* CopiedAddress = "http://net.example/v.mp4";

World world_for(const ContractNeeds& needs)
{
    World world;
    world.device.calendar = needs.calendar;
    world.video.duration = VideoSeconds;
    if (needs.clip == Clip::Stalling)
        world.video.stalls = {{Middle, StallSeconds}};
    if (needs.clip == Clip::Breaking)
        world.video.error = Middle;
    if (needs.clip == Clip::Broken)
        world.video.error_for_good = Middle;
    world.text[MeasuredText] = MeasuredSize;
    world.net[Addresses.at(Address::Found)].body = FoundBody;
    world.net[Addresses.at(Address::NotFound)] = {false, "not found", "", 0.1};
    world.net[Addresses.at(Address::NobodyThere)] = {false, "no such host", "", 0.1};
    world.net[Addresses.at(Address::Silent)].after = Forever;
    if (needs.copy)
        world.cached[CopiedAddress] = "/copies/v.mp4";
    return world;
}

class SimulatorContract final : public ContractPlatform, private EventSink
{
public:
    explicit SimulatorContract(const ContractNeeds& needs) : platform_(world_for(needs)) {}

    Platform& platform() override { return platform_; }
    SessionControls& controls() override { return platform_; }

    bool until(const std::function<bool()>& condition) override
    {
        const double end = platform_.loop().now() + Patience;
        while (!condition()) {
            if (platform_.loop().now() >= end)
                return false;
            let_pass(Step);
        }
        return true;
    }
    void let_pass(double seconds) override { platform_.run_until(platform_.loop().now() + seconds); }

    NSURL video() override { return NSURL::URLWithString(CopiedAddress); }
    void data_comes_again() override {} // automatically, after StallSeconds
    void it_can_be_played_again() override {}

    std::string address(Address what) override { return Addresses.at(what); }
    std::string copied_address() override { return CopiedAddress; }

    void viewer_sets_volume(float volume) override
    {
        DeviceChange change;
        change.output_volume = volume;
        platform_.change_device(change);
    }

    std::string slow_page() override { return "<p>takes a tenth of a second, as any page here</p>"; }

    // No script runs here: steps issue its commands, and its events go to the platform's event sink.

    std::string page_address() override { return "http://net.example/page.html"; }
    bool script_starts(QoroVideoWebViewController& ad) override
    {
        return until([&] { return ad.webView().requestURL().absoluteString().text() == page_address(); });
    }
    void script_listens(QoroVideoWebViewController& ad, const std::string& event) override
    {
        hear(ad, R"(["addEventListener", ")" + event + R"(", "of )" + event + "\"]");
    }
    void script_stops_listening(QoroVideoWebViewController& ad, const std::string& event) override
    {
        hear(ad, R"(["removeEventListener", ")" + event + R"(", "of )" + event + "\"]");
    }
    std::optional<std::string> script_says(QoroVideoWebViewController& ad, const std::string& message) override
    {
        std::vector<qoro::Step> steps;
        try {
            steps = read_steps(R"([{"script": )" + message + "}]", "script", true);
        } catch (const InputError&) {
            return {};
        }
        ScriptAnswer answer;
        platform_.dispatch([&] { answer = ad.take_script_message(std::get<ScriptStep>(steps[0].what).message); });
        if (answer.error)
            return {};
        std::string text;
        append_json(text, answer.value);
        return text;
    }
    std::vector<std::string> script_heard(QoroVideoWebViewController&) override { return heard_; }

private:
    /// Issues a listener command and records the events sent to the listeners afterwards.
    void hear(QoroVideoWebViewController& ad, const std::string& command)
    {
        if (platform_.event_sink() != this) {
            next_ = platform_.event_sink();
            platform_.set_event_sink(this);
        }
        EXPECT_TRUE(script_says(ad, command)) << command;
    }

    void receive(const Event& event) override
    {
        if (next_)
            next_->receive(event);
        const auto* call = std::get_if<event::ScriptEvent>(&event);
        if (!call || call->listeners == 0)
            return;
        std::string line(call->event.view());
        line += ' ';
        append_json(line, *call->data);
        heard_.push_back(line);
    }

    SimulatedPlatform platform_;
    EventSink* next_ = nullptr;
    std::vector<std::string> heard_;
};

std::unique_ptr<ContractPlatform> make(const ContractNeeds& needs)
{
    return std::make_unique<SimulatorContract>(needs);
}

constexpr ContractKind SimulatorKind{"Simulator", make};

} // namespace

INSTANTIATE_TEST_SUITE_P(On, LoopContract, testing::Values(SimulatorKind), name_of_kind);
INSTANTIATE_TEST_SUITE_P(On, PlayerContract, testing::Values(SimulatorKind), name_of_kind);
INSTANTIATE_TEST_SUITE_P(On, VolumeContract, testing::Values(SimulatorKind), name_of_kind);
INSTANTIATE_TEST_SUITE_P(On, FetchContract, testing::Values(SimulatorKind), name_of_kind);
INSTANTIATE_TEST_SUITE_P(On, CacheContract, testing::Values(SimulatorKind), name_of_kind);
INSTANTIATE_TEST_SUITE_P(On, CalendarContract, testing::Values(SimulatorKind), name_of_kind);
INSTANTIATE_TEST_SUITE_P(On, TextContract, testing::Values(SimulatorKind), name_of_kind);
INSTANTIATE_TEST_SUITE_P(On, PageContract, testing::Values(SimulatorKind), name_of_kind);
INSTANTIATE_TEST_SUITE_P(On, BrowserContract, testing::Values(SimulatorKind), name_of_kind);
INSTANTIATE_TEST_SUITE_P(On, ScriptContract, testing::Values(SimulatorKind), name_of_kind);

} // namespace qoro::test
