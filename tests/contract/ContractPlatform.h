#pragma once

#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "platform/Platform.h"
#include "session/Controls.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace qoro::test
{

/// Seconds that the video lasts, whichever platform plays it.
inline constexpr double VideoSeconds = 4;
/// What Address::Found answers.
inline constexpr const char* FoundBody = "a body";

/// What becomes of the video.
enum class Clip {
    /// It plays from its start to its end.
    Whole,
    /// Its data stops coming somewhere in the middle, until data_comes_again().
    Stalling,
    /// It breaks off somewhere in the middle, until it_can_be_played_again().
    Breaking,
    /// It breaks off for good somewhere in the middle.
    Broken,
};

/// A text that every platform measures alike, and its size in Arial at 20 points by the font's own table: advance
/// widths H 722, e 556, l 222, o 556, ascent 905 and descent 212, in thousandths of the size.
inline constexpr const char* MeasuredText = "Hello";
inline constexpr CGSize MeasuredSize{(722 + 556 + 222 + 222 + 556) * 0.02, (905 + 212) * 0.02};

/// What a fetch meets.
enum class Address { Found, NotFound, NobodyThere, Silent };

/// What a test asks of the world around its platform before it is made.
struct ContractNeeds {
    Clip clip = Clip::Whole;
    /// Whether the test is about the output volume: a platform with a real one then brings a sound server of its own.
    bool volume = false;
    /// Whether there is a local copy of the video.
    bool copy = false;
    /// Whether there is a calendar.
    bool calendar = true;
};

/// A platform under test with the world around it. Each kind of platform has one; where two kinds differ by right (how
/// time passes, what stands at an address, how a page's script is made to speak) the difference is in here, so that one
/// suite states what all of them owe.
class ContractPlatform
{
public:
    virtual ~ContractPlatform() = default;

    virtual Platform& platform() = 0;
    /// For a session on this platform.
    virtual SessionControls& controls() = 0;

    /// Runs events until a condition holds.
    /// @return whether it does, before the platform's patience is at its end
    virtual bool until(const std::function<bool()>& condition) = 0;
    /// Runs events for some seconds of the platform's own time.
    virtual void let_pass(double seconds) = 0;

    /// The video that the needs describe, of VideoSeconds.
    virtual NSURL video() = 0;
    /// The data of a stalling video comes again, now or by itself a little later.
    virtual void data_comes_again() = 0;
    /// What a breaking video fails of has passed.
    virtual void it_can_be_played_again() = 0;

    virtual std::string address(Address what) = 0;
    /// The video of which there is a local copy, when the needs say so.
    virtual std::string copied_address() = 0;

    /// The viewer sets the output volume, by whatever the machine has for it.
    /// @param volume 0 to 1
    virtual void viewer_sets_volume(float volume) = 0;

    /// A page that does not end loading before another takes its place, or a second has gone by.
    virtual std::string slow_page() = 0;

    // The page of an ad, and its script.

    /// Where a page stands that names the script library.
    virtual std::string page_address() = 0;
    /// Runs events until the page of the ad has its script running.
    virtual bool script_starts(QoroVideoWebViewController& ad) = 0;
    virtual void script_listens(QoroVideoWebViewController& ad, const std::string& event) = 0;
    virtual void script_stops_listening(QoroVideoWebViewController& ad, const std::string& event) = 0;
    /// The script sends a message over the bridge.
    /// @param message JSON: a list of a command's name and its arguments, or anything that is no message
    /// @return the answer as JSON; absent when the message is refused
    virtual std::optional<std::string> script_says(QoroVideoWebViewController& ad, const std::string& message) = 0;
    /// What the script's listeners have heard: each event's name and its data as JSON.
    virtual std::vector<std::string> script_heard(QoroVideoWebViewController& ad) = 0;
};

/// A kind of platform.
struct ContractKind {
    const char* name;
    std::unique_ptr<ContractPlatform> (*make)(const ContractNeeds&);

    friend void PrintTo(const ContractKind& kind, std::ostream* out) { *out << kind.name; }
};

/// For the names of a suite's tests.
inline std::string name_of_kind(const testing::TestParamInfo<ContractKind>& kind)
{
    return kind.param.name;
}

/// A test of the contract on one kind of platform.
class ContractTest : public testing::TestWithParam<ContractKind>
{
protected:
    explicit ContractTest(const ContractNeeds& needs = {}) { begin(needs); }

    void begin(const ContractNeeds& needs)
    {
        world_.reset(); // one at a time: a platform may have what there is one of
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
