#include "simulator/SimulatedPlatform.h"

#include <gtest/gtest.h>

#include <string>

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

} // namespace qoro
