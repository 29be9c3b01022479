#pragma once

#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "host/SessionControls.h"
#include "platform/Platform.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace qoro::test
{

/// Duration of the video on every platform, seconds.
inline constexpr double VideoSeconds = 4;
/// Body of the answer of Address::Found.
inline constexpr const char* FoundBody = "a body";

/// Behaviour of the video.
enum class Clip {
    /// Plays from start to end.
    Whole,
    /// Stalls somewhere in the middle until data_comes_again().
    Stalling,
    /// Fails somewhere in the middle until it_can_be_played_again().
    Breaking,
    /// Fails permanently somewhere in the middle.
    Broken,
};

/// A text that every platform measures equally, and its size in Arial at 20 points by the font's table: advance widths
/// H 722, e 556, l 222, o 556, ascent 905 and descent 212, in thousandths of the size.
inline constexpr const char* MeasuredText = "Hello";
inline constexpr CGSize MeasuredSize{(722 + 556 + 222 + 222 + 556) * 0.02, (905 + 212) * 0.02};

/// What a fetch of an address returns.
enum class Address { Found, NotFound, NobodyThere, Silent };

/// A test's requirements on its platform, known before the platform is created.
struct ContractNeeds {
    Clip clip = Clip::Whole;
    /// Whether the test uses the output volume; a platform with a real volume then starts its own sound server.
    bool volume = false;
    /// Whether a cached copy of the video exists.
    bool copy = false;
    /// Whether a calendar exists.
    bool calendar = true;
};

/// A platform under test and its surroundings, one implementation per kind of platform. It hides the legitimate
/// differences between kinds (how time passes, what an address serves, how a page's script is driven), so that one
/// suite specifies them all.
class ContractPlatform
{
public:
    virtual ~ContractPlatform() = default;

    virtual Platform& platform() = 0;
    /// Controls for a session on this platform.
    virtual SessionControls& controls() = 0;

    /// Runs events until a condition holds.
    /// @return false on the platform's time limit
    virtual bool until(const std::function<bool()>& condition) = 0;
    /// Runs events for a time in seconds of the platform's clock.
    virtual void let_pass(double seconds) = 0;

    /// A video of VideoSeconds with the required behaviour.
    virtual NSURL video() = 0;
    /// Resumes the data of a stalling video, now or a little later.
    virtual void data_comes_again() = 0;
    /// Ends the failure of a breaking video.
    virtual void it_can_be_played_again() = 0;

    virtual std::string address(Address what) = 0;
    /// Address of the video with a cached copy, if the test requires one.
    virtual std::string copied_address() = 0;

    /// The viewer sets the output volume by the machine's own control.
    /// @param volume 0 to 1
    virtual void viewer_sets_volume(float volume) = 0;

    /// Address of a page whose load lasts until another load supersedes it, or a second has passed.
    virtual std::string slow_page() = 0;

    // The ad's page and its script.

    /// Address of a page that includes the script library.
    virtual std::string page_address() = 0;
    /// Runs events until the script of the ad's page is running.
    virtual bool script_starts(QoroVideoWebViewController& ad) = 0;
    virtual void script_listens(QoroVideoWebViewController& ad, const std::string& event) = 0;
    virtual void script_stops_listening(QoroVideoWebViewController& ad, const std::string& event) = 0;
    /// Sends a message of the script over the bridge.
    /// @param message JSON: a list of a command's name and its arguments, or an invalid message
    /// @return the answer as JSON; absent when the message is rejected
    virtual std::optional<std::string> script_says(QoroVideoWebViewController& ad, const std::string& message) = 0;
    /// What the script's listeners received: each event's name and its data as JSON.
    virtual std::vector<std::string> script_heard(QoroVideoWebViewController& ad) = 0;
};

/// A kind of platform under test.
struct ContractKind {
    const char* name;
    std::unique_ptr<ContractPlatform> (*make)(const ContractNeeds&);

    friend void PrintTo(const ContractKind& kind, std::ostream* out) { *out << kind.name; }
};

/// Names the parameter of a suite's tests.
inline std::string name_of_kind(const testing::TestParamInfo<ContractKind>& kind)
{
    return kind.param.name;
}

/// A contract test on one kind of platform.
class ContractTest : public testing::TestWithParam<ContractKind>
{
protected:
    explicit ContractTest(const ContractNeeds& needs = {}) { begin(needs); }

    void begin(const ContractNeeds& needs)
    {
        world_.reset(); // destroy the old one first: a platform may own unique resources
        world_ = GetParam().make(needs);
    }
    void end() { world_.reset(); }

    ContractPlatform& world() { return *world_; }
    Platform& platform() { return world_->platform(); }
    MainLoop& loop() { return platform().loop(); }
    bool until(const std::function<bool()>& condition) { return world_->until(condition); }
    void let_pass(double seconds) { world_->let_pass(seconds); }

private:
    std::unique_ptr<ContractPlatform> world_;
};

class LoopContract : public ContractTest
{
};

class FetchContract : public ContractTest
{
};

class CacheContract : public ContractTest
{
protected:
    CacheContract() : ContractTest({.copy = true}) {}
};

class CalendarContract : public ContractTest
{
};

class TextContract : public ContractTest
{
};

} // namespace qoro::test
