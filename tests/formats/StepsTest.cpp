#include "formats/Steps.h"

#include "formats/InputError.h"

#include <gtest/gtest.h>
#include <string>

namespace qoro
{
namespace
{

std::vector<Step> read(const std::string& steps)
{
    return read_steps("[" + steps + "]", "steps.json", true);
}

template <typename What>
What only(const std::string& step)
{
    return std::get<What>(read(step).at(0).what);
}

TEST(Steps, RunAtThePreviousStepsTimeByDefault)
{
    const auto steps = read(R"({"open": 0}, {"at": 1.5, "snapshot": true}, {"release": true})");

    EXPECT_EQ(steps[0].at, 0);
    EXPECT_EQ(steps[1].at, 1.5);
    EXPECT_EQ(steps[2].at, 1.5);
}

TEST(Steps, KeepTheirKeyAndValueAsWritten)
{
    const Step step = read(R"({"at": 2, "player": {"time": 3, "state": 1}})")[0];

    EXPECT_EQ(step.key, "player");
    EXPECT_EQ(step.value, Value(NSDictionary{{"time", 3}, {"state", 1}}));
}

TEST(Steps, ReadEachKind)
{
    EXPECT_EQ(only<OpenStep>(R"({"open": 12.5})").y, 12.5F);
    EXPECT_EQ(only<TapStep>(R"({"tap": "btnReplay"})").button, "btnReplay");
    EXPECT_EQ(only<TouchStep>(R"({"touch": [10, 20.5]})").point, (CGPoint{10, 20.5}));
    EXPECT_EQ(only<InterruptStep>(R"({"interrupt": 1})").type, 1);
    EXPECT_EQ(only<AppStep>(R"({"app": "background"})").event, AppStep::Event::Background);
    EXPECT_EQ(only<AppStep>(R"({"app": "foreground"})").event, AppStep::Event::Foreground);
    EXPECT_EQ(only<AppStep>(R"({"app": "active"})").event, AppStep::Event::Active);
}

TEST(Steps, ReadACommandWithItsArguments)
{
    const ScriptMessage message = only<ScriptStep>(R"({"script": ["playNextVideo", {"id": "n"}]})").message;

    EXPECT_EQ(message.command, "playNextVideo");
    EXPECT_EQ(message.arguments.count(), 1U);
    EXPECT_EQ(message.arguments[0].dictionary()["id"], Value("n"));
}

TEST(Steps, ReadTheNotificationsOfAPlayer)
{
    const PlayerNews news = only<PlayerStep>(R"({"player": {"duration": 30, "finish": 0}})").news;

    EXPECT_EQ(news.duration, 30);
    EXPECT_EQ(news.finish, 0);
    EXPECT_EQ(news.time, std::nullopt);
    EXPECT_EQ(news.load, std::nullopt);
    EXPECT_EQ(news.state, std::nullopt);
}

TEST(Steps, ReadServersThatFailOrAnswerAgain)
{
    const auto changes = only<ServersStep>(R"({"servers": {"http://a:81": "no route", "*": null}})").changes;

    ASSERT_EQ(changes.size(), 2U);
    EXPECT_EQ(changes[0].server, "http://a:81");
    EXPECT_EQ(changes[0].failure, "no route");
    EXPECT_EQ(changes[1].server, "*");
    EXPECT_EQ(changes[1].failure, std::nullopt);
    for (const std::string servers :
         {R"({"a": "x"})", R"({"http://a/": "x"})", R"({"http://": "x"})", R"({"http://a": 1})", R"(["http://a"])"})
        EXPECT_THROW(read(R"({"servers": )" + servers + "}"), InputError) << servers;
    EXPECT_THROW(read_steps(R"([{"servers": {"*": "x"}}])", "steps", false), InputError) << "real servers";
}

TEST(Steps, ReadAChangeOfTheDevice)
{
    const DeviceChange change = only<DeviceStep>(R"({"device": {"orientation": 4, "outputVolume": 0.3}})").change;

    EXPECT_EQ(change.orientation, 4);
    EXPECT_EQ(change.output_volume, 0.3F);
    EXPECT_EQ(change.status_bar_orientation, std::nullopt);
    EXPECT_EQ(change.status_bar_hidden, std::nullopt);
}

struct Unusable {
    const char* step;
    const char* complaint;
};

void PrintTo(const Unusable& unusable, std::ostream* out)
{
    *out << unusable.step;
}

struct UnusableStep : testing::TestWithParam<Unusable> {
};

TEST_P(UnusableStep, IsRefusedInOneLineThatNamesFilePathAndExpectation)
{
    try {
        read(std::string(R"({"at": 1, "open": 0},)") + GetParam().step);
        FAIL() << "nothing was refused";
    } catch (const InputError& error) {
        EXPECT_STREQ(error.what(), GetParam().complaint);
    }
}

INSTANTIATE_TEST_SUITE_P(
    , UnusableStep,
    testing::Values(
        Unusable{"5", "steps.json: /1: expected an object, got 5"},
        Unusable{R"({"at": 2})", R"(steps.json: /1: expected "at" and exactly one thing to do, got {"at":2})"},
        Unusable{R"({"open": 0, "tap": "btnMute"})",
                 R"(steps.json: /1: expected "at" and exactly one thing to do, got {"open":0,"tap":"btnMute"})"},
        Unusable{R"({"at": 0.5, "open": 0})", "steps.json: /1/at: expected a time not before the last step's, got 0.5"},
        Unusable{R"({"at": "1", "open": 0})",
                 "steps.json: /1/at: expected a number of seconds from 0 to 1000000000, got \"1\""},
        Unusable{R"({"tpa": "btnMute"})", "steps.json: /1/tpa: unknown key; did you mean \"tap\"?"},
        Unusable{R"({"tap": "btnMuet"})", "steps.json: /1/tap: expected the name of a button of the controller, got "
                                          "\"btnMuet\"; did you mean \"btnMute\"?"},
        Unusable{R"({"touch": [1, 2, 3]})", "steps.json: /1/touch: expected [x, y], got [1,2,3]"},
        Unusable{R"({"touch": {"selector": "#yes"}})",
                 "steps.json: /1/touch/selector: the page here has no elements; expected a point as \"touch\": [x, y]"},
        Unusable{R"({"script": []})", "steps.json: /1/script: expected a list of a command and its arguments, got []"},
        Unusable{R"({"script": ["setVideoplay"]})", "steps.json: /1/script/0: expected a command of the script, got "
                                                    "\"setVideoplay\"; did you mean \"setVideoPlay\"?"},
        Unusable{R"({"player": {"stat": 1}})", "steps.json: /1/player/stat: unknown key; did you mean \"state\"?"},
        Unusable{R"({"device": {"orientation": null}})",
                 "steps.json: /1/device/orientation: expected a device orientation, got null"},
        Unusable{R"({"app": "gone"})",
                 R"(steps.json: /1/app: expected "background", "foreground" or "active", got "gone")"},
        Unusable{R"({"call": ["closeAction", 1]})",
                 R"(steps.json: /1/call: expected "closeAction" with 0 arguments, got ["closeAction",1])"},
        Unusable{R"({"call": ["setPrePauseStatus", 1, 5]})", "steps.json: /1/call/1: expected true or false, got 1"},
        Unusable{R"({"snapshot": false})", "steps.json: /1/snapshot: expected true, got false"},
        Unusable{R"({"release": 1})", "steps.json: /1/release: expected true, got 1"}));

TEST(Steps, OfAPlayerAreRefusedWithAutomaticPlayers)
{
    EXPECT_THROW(read_steps(R"([{"player": {"state": 1}}])", "steps.json", false), InputError);
    EXPECT_NO_THROW(read_steps(R"([{"tap": "btnMute"}])", "steps.json", false));
}

Step real(const std::string& step)
{
    return read_steps("[" + step + "]", "steps.json", false).at(0);
}

TEST(Steps, MayNameAnElementWherePagesAreReal)
{
    const Step step = real(R"({"touch": {"selector": "#yes"}})");

    EXPECT_EQ(std::get<TouchStep>(step.what).selector, "#yes");
    EXPECT_EQ(step.value, Value(NSDictionary{{"selector", "#yes"}}));
    EXPECT_EQ(std::get<TouchStep>(real(R"({"touch": [3, 4]})").what).point, (CGPoint{3, 4}));
}

struct UnusableTouch : testing::TestWithParam<Unusable> {
};

TEST_P(UnusableTouch, IsRefusedWherePagesAreReal)
{
    try {
        real(GetParam().step);
        FAIL() << "nothing was refused";
    } catch (const InputError& error) {
        EXPECT_STREQ(error.what(), GetParam().complaint);
    }
}

INSTANTIATE_TEST_SUITE_P(
    , UnusableTouch,
    testing::Values(
        Unusable{R"({"touch": {}})", R"(steps.json: /0/touch: expected [x, y] or {"selector": "#id"}, got {})"},
        Unusable{R"({"touch": "#yes"})", R"(steps.json: /0/touch: expected [x, y] or {"selector": "#id"}, got "#yes")"},
        Unusable{R"({"touch": {"selector": ""}})", R"(steps.json: /0/touch/selector: expected a CSS selector, got "")"},
        Unusable{R"({"touch": {"selector": 5}})", R"(steps.json: /0/touch/selector: expected a CSS selector, got 5)"},
        Unusable{R"({"touch": {"select": "#yes"}})",
                 R"(steps.json: /0/touch/select: unknown key; did you mean "selector"?)"}));

} // namespace
} // namespace qoro
