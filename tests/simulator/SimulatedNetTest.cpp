#include "simulator/SimulatedPlatform.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace qoro
{
namespace
{

/// What a network whose only address has a body answers at another address.
std::string body_at(const std::string& address, const std::string& named)
{
    World world;
    world.net[named].body = "found";
    SimulatedPlatform platform(world);
    return platform.fetcher().fetch_now(address).body;
}

} // namespace

TEST(SimulatedNet, AMacroInAnAddressMatchesAnyValue)
{
    const std::string named = "http://a/tag?cb=[CACHEBUSTING]&t=[TIMESTAMP]&x=1";
    EXPECT_EQ(body_at("http://a/tag?cb=12345678&t=1970-01-01T00%3A00%3A00.000%2B00&x=1", named), "found");
    EXPECT_EQ(body_at("http://a/tag?cb=&t=-1&x=1", named), "found");
    EXPECT_EQ(body_at(named, named), "found") << "as written";
    EXPECT_EQ(body_at("http://a/tag?cb=1&t=2&x=12", named), "");
    EXPECT_EQ(body_at("http://a/tag?cb=1&x=1", named), "");
    EXPECT_EQ(body_at("http://b/tag?cb=1&t=2&x=1", named), "");
    EXPECT_EQ(body_at("http://a/?12", "http://a/?[A]"), "found") << "at the end";
}

TEST(SimulatedNet, BracketsAroundOtherTextAreNoMacro)
{
    for (const char* named : {"http://a/[b]", "http://a/[]", "http://a/[B", "http://a/[B C]"}) {
        EXPECT_EQ(body_at(named, named), "found");
        EXPECT_EQ(body_at("http://a/1", named), "");
    }
}

TEST(SimulatedNet, AServerFailsFromItsStepOnUntilItAnswersAgain)
{
    World world;
    world.net["http://a/page"].body = "found";
    world.net["http://a/page"].after = 2;
    SimulatedPlatform platform(world);
    std::vector<std::string> heard;
    const auto ask = [&] {
        platform.fetcher().fetch("http://a/page", FetchKind::Page, [&](const FetchAnswer& answer) {
            heard.push_back(answer.ok ? answer.body : answer.error);
        });
    };
    const auto fails = [&](const std::string& address) { return !platform.fetcher().fetch_now(address).ok; };

    ask();
    platform.run_until(1.0);
    platform.change_server({"http://a", "no route"});
    platform.run_until(3.0);
    EXPECT_EQ(heard, std::vector<std::string>{"no route"}) << "the awaited answer is lost";
    EXPECT_TRUE(fails("http://a/other"));
    EXPECT_TRUE(fails("http://a?x"));
    EXPECT_FALSE(fails("http://a.example/page")) << "another server";
    EXPECT_FALSE(fails("https://a/page")) << "another server";

    platform.change_server({"http://a", std::nullopt});
    ask();
    platform.run_until(6.0);
    EXPECT_EQ(heard.back(), "found");
}

TEST(SimulatedNet, EveryServerFailsAndAnswersAgain)
{
    SimulatedPlatform platform;
    platform.change_server({"*", "no network"});
    EXPECT_EQ(platform.fetcher().fetch_now("http://b/").error, "no network");
    platform.change_server({"*", std::nullopt});
    EXPECT_TRUE(platform.fetcher().fetch_now("http://b/").ok);
}

} // namespace qoro
