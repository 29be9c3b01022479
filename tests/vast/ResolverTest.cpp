#include "tests/vast/Tags.h"
#include "vast/Reader.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

// Chains in virtual time. What they lead to: the documents of the corpus' folder chains.

namespace qoro::test
{

namespace
{

using vast::Resolution;

const std::string Site = "http://ads.example/";

std::string repeated(const std::string& text, int times)
{
    std::string result;
    for (int n = 0; n < times; ++n)
        result += text;
    return result;
}

class VastResolver : public testing::Test
{
protected:
    Tags tags;
};

} // namespace

// ------------------------------------------------------------------------------------------------- the tag's own
// address

TEST_F(VastResolver, ATagIsFetchedAndResolved)
{
    tags.serve("tag", vast_of(inline_ad("1")), 2);
    const Resolution resolution = tags.resolve(Site + "tag");
    EXPECT_EQ(tags.calls, 1);
    EXPECT_EQ(tags.took, 2);
    EXPECT_EQ(resolution.ads.size(), 1U);
    EXPECT_EQ(resolution.error, std::nullopt);
    EXPECT_FALSE(resolution.malformed);
    EXPECT_EQ(tags.requests, std::vector<std::string>{Site + "tag"});
}

TEST_F(VastResolver, ATagWithoutAnAnswerInFiveSecondsIsATimeOut)
{
    tags.serve("tag", vast_of(inline_ad("1")), 5.5);
    const Resolution resolution = tags.resolve(Site + "tag");
    EXPECT_EQ(tags.calls, 1);
    EXPECT_EQ(tags.took, 5);
    EXPECT_EQ(resolution.error, 301);
    EXPECT_FALSE(resolution.malformed);
}

TEST_F(VastResolver, ATagThatCannotBeFetchedIsAnUndefinedError)
{
    tags.world.net[Site + "tag"].ok = false;
    tags.world.net[Site + "tag"].error = "no such host";
    const Resolution resolution = tags.resolve(Site + "tag");
    EXPECT_EQ(resolution.error, 900);
    EXPECT_EQ(resolution.why, "no such host");
    EXPECT_FALSE(resolution.malformed);
}

TEST_F(VastResolver, AnEmptyAnswerIsNoAd)
{
    for (const char* body : {"", " \r\n"}) {
        tags.serve("tag", body);
        const Resolution resolution = tags.resolve(Site + "tag");
        EXPECT_EQ(resolution.error, 303);
        EXPECT_FALSE(resolution.malformed);
    }
}

TEST_F(VastResolver, AnAnswerThatIsNoVastIsMalformed)
{
    tags.serve("tag", "<html/>");
    const Resolution resolution = tags.resolve(Site + "tag");
    EXPECT_TRUE(resolution.malformed);
    EXPECT_EQ(resolution.error, 101);
    EXPECT_EQ(tags.calls, 1);
}

TEST_F(VastResolver, ATextThatIsNoVastThrowsBeforeAnythingIsRequested)
{
    EXPECT_THROW(tags.resolve_text("<html/>"), vast::DocumentError);
    EXPECT_TRUE(tags.requests.empty());
}

TEST_F(VastResolver, ATagThatLeadsToItselfIsACircle)
{
    tags.serve("tag", vast_of(wrapper_of(Site + "tag")));
    EXPECT_EQ(tags.resolve(Site + "tag").error, 302);
    EXPECT_EQ(tags.requests.size(), 1U);
}

// -------------------------------------------------------------------------------------------------------------
// requests

TEST_F(VastResolver, AddressesAreExpandedAndEncodedBeforeTheyAreRequested)
{
    tags.options.expand = [](const std::string& address) {
        std::string result = address;
        if (const std::size_t macro = result.find("[X]"); macro != std::string::npos)
            result.replace(macro, 3, "1 2");
        return result;
    };
    tags.serve("tag?1%202", vast_of(wrapper_of(Site + "inner?[X]")));
    tags.serve("inner?1%202", vast_of(inline_ad("1")));
    const Resolution resolution = tags.resolve(Site + "tag?[X]");
    EXPECT_EQ(tags.requests, (std::vector<std::string>{Site + "tag?1%202", Site + "inner?1%202"}));
    ASSERT_EQ(resolution.wrappers.size(), 1U);
    EXPECT_EQ(resolution.wrappers[0].address, Site + "inner?[X]");
    EXPECT_EQ(resolution.ads.size(), 1U);
}

TEST_F(VastResolver, WhetherADocumentMayLeadOnDependsOnBothAddresses)
{
    std::vector<std::string> asked;
    tags.options.permits = [&](const std::string& from, const std::string& to) {
        asked.push_back(from + " " + to);
        return to != Site + "c";
    };
    tags.serve("b", vast_of(wrapper_of(Site + "c")));
    const Resolution resolution = tags.resolve_text(vast_of(wrapper_of(Site + "b")), "");
    EXPECT_EQ(asked, (std::vector<std::string>{" " + Site + "b", Site + "b " + Site + "c"}));
    EXPECT_EQ(resolution.error, 300);
    EXPECT_EQ(tags.requests, std::vector<std::string>{Site + "b"});
}

TEST_F(VastResolver, ThePodsWrappersAreRequestedAtOnceAndTheBuffetsInTurn)
{
    for (const char* name : {"a", "b"})
        tags.serve(name, vast_of(inline_ad(name)), 3);
    EXPECT_EQ(
        tags.resolve_text(vast_of(wrapper_of(Site + "a", "sequence=\"1\"") + wrapper_of(Site + "b", "sequence=\"2\"")))
            .ads.size(),
        2U);
    EXPECT_EQ(tags.took, 3);

    tags.serve("a", "<VAST/>", 3);
    const Resolution buffet = tags.resolve_text(vast_of(wrapper_of(Site + "a") + wrapper_of(Site + "b")));
    EXPECT_EQ(tags.took, 6);
    ASSERT_EQ(buffet.ads.size(), 1U);
    EXPECT_EQ(buffet.ads[0].ad.id, "b");
}

TEST_F(VastResolver, TheBuffetsNextAdIsNotRequestedOnceOnePlays)
{
    tags.serve("a", vast_of(inline_ad("a")));
    tags.serve("b", vast_of(inline_ad("b")));
    tags.resolve_text(vast_of(wrapper_of(Site + "a") + wrapper_of(Site + "b")));
    EXPECT_EQ(tags.requests, std::vector<std::string>{Site + "a"});
}

TEST_F(VastResolver, AtMostAHundredWrappersAreFollowedOfATag)
{
    std::string ads;
    for (int n = 0; n < 150; ++n) {
        const std::string name = "n" + std::to_string(n);
        tags.serve(name, vast_of(inline_ad(name)));
        ads += wrapper_of(Site + name, "sequence=\"" + std::to_string(n + 1) + "\"");
    }
    const Resolution resolution = tags.resolve_text(vast_of(ads));
    EXPECT_EQ(tags.requests.size(), 100U);
    EXPECT_EQ(resolution.ads.size(), 100U);
    ASSERT_EQ(resolution.failed.size(), 50U);
    EXPECT_EQ(resolution.failed[0].code, 302);
}

TEST_F(VastResolver, AtMostAHundredAdsPlayOfATag)
{
    std::string ads;
    for (int n = 1; n <= 120; ++n)
        ads += inline_ad(std::to_string(n), "sequence=\"" + std::to_string(n) + "\"");
    const Resolution resolution = tags.resolve_text(vast_of(ads));
    ASSERT_EQ(resolution.ads.size(), 100U);
    EXPECT_EQ(resolution.ads.back().ad.id, "100");
    ASSERT_EQ(resolution.failed.size(), 20U);
    EXPECT_EQ(resolution.failed[0].code, 206);
}

TEST_F(VastResolver, TheNumberOfWrappersInsideOneAnotherIsAnOption)
{
    tags.serve("b", vast_of(inline_ad("1")));
    tags.options.wrappers = 0;
    EXPECT_EQ(tags.resolve_text(vast_of(wrapper_of(Site + "b"))).error, 302);
    EXPECT_TRUE(tags.requests.empty());
    tags.options.wrappers = 1;
    const Resolution resolution = tags.resolve_text(vast_of(wrapper_of(Site + "b")));
    ASSERT_EQ(resolution.ads.size(), 1U);
    EXPECT_EQ(resolution.ads[0].wrappers, 1);
}

// ------------------------------------------------------------------------------------------------------------
// time-outs

TEST_F(VastResolver, AHopsTimeOutIsFiveSecondsFromItsRequest)
{
    tags.serve("a", vast_of(wrapper_of(Site + "b")), 3);
    tags.serve("b", vast_of(inline_ad("1")), 5.1);
    const Resolution resolution = tags.resolve_text(vast_of(wrapper_of(Site + "a")));
    EXPECT_EQ(resolution.error, 301);
    EXPECT_EQ(tags.took, 8);
    EXPECT_EQ(tags.calls, 1);
}

TEST_F(VastResolver, TheWholeTagHasTenSeconds)
{
    tags.serve("tag", vast_of(wrapper_of(Site + "a")), 4);
    tags.serve("a", vast_of(wrapper_of(Site + "b")), 4);
    tags.serve("b", vast_of(inline_ad("1")), 4);
    const Resolution resolution = tags.resolve(Site + "tag");
    EXPECT_EQ(resolution.error, 301);
    EXPECT_EQ(tags.took, 10);
    EXPECT_EQ(tags.calls, 1);
}

TEST_F(VastResolver, WhatIsResolvedWhenTheTimeIsOverPlays)
{
    tags.options.time_out = 60;
    tags.serve("slow", vast_of(inline_ad("slow")), 20);
    const Resolution pod = tags.resolve_text(vast_of(wrapper_of(Site + "slow", "sequence=\"1\"") +
                                                     inline_ad("quick", "sequence=\"2\"") + inline_ad("alone")));
    EXPECT_EQ(tags.took, 10);
    ASSERT_EQ(pod.ads.size(), 2U);
    EXPECT_EQ(pod.ads[0].ad.id, "alone");
    EXPECT_EQ(pod.ads[1].ad.id, "quick");

    const Resolution buffet =
        tags.resolve_text(vast_of(wrapper_of(Site + "slow") + wrapper_of(Site + "other") + inline_ad("alone")));
    EXPECT_EQ(tags.took, 10);
    EXPECT_EQ(tags.requests, std::vector<std::string>{Site + "slow"});
    ASSERT_EQ(buffet.ads.size(), 1U);
    EXPECT_EQ(buffet.ads[0].ad.id, "alone");
}

// -------------------------------------------------------------------------------------------------------------
// failures

TEST_F(VastResolver, EachAdThatFailsHasItsCodeAndErrorAddressesInnermostFirst)
{
    std::string inner = vast_of("<Ad><InLine><Error>http://t.example/in</Error></InLine></Ad>");
    std::string outer = vast_of(wrapper_of(Site + "in"));
    outer.insert(outer.find("<Impression>"), "<Error>http://t.example/out</Error>");
    tags.serve("in", inner);
    const Resolution resolution = tags.resolve_text(outer);
    ASSERT_EQ(resolution.failed.size(), 1U);
    EXPECT_EQ(resolution.failed[0].code, 101);
    EXPECT_EQ(resolution.failed[0].errors, (std::vector<std::string>{"http://t.example/in", "http://t.example/out"}));
    EXPECT_EQ(resolution.failed[0].why.find('\n'), std::string::npos);
    EXPECT_EQ(resolution.errors, resolution.failed[0].errors);
}

// VAST 4.3, section 3.2.1: the Error of a document without an ad.
TEST_F(VastResolver, AnAdThatLeadsToAResponseWithoutAnAdHasTheErrorAddressesOfThatToo)
{
    tags.serve("none", vast_of("<Error>http://t.example/none</Error>"));
    std::string wrapper = wrapper_of(Site + "none");
    wrapper.insert(wrapper.find("<Impression>"), "<Error>http://t.example/out</Error>");
    const Resolution resolution = tags.resolve_text(vast_of(wrapper + inline_ad("other")));
    EXPECT_EQ(resolution.ads.size(), 1U);
    ASSERT_EQ(resolution.failed.size(), 1U);
    EXPECT_EQ(resolution.failed[0].code, 303);
    EXPECT_EQ(resolution.failed[0].errors, (std::vector<std::string>{"http://t.example/none", "http://t.example/out"}));
    EXPECT_EQ(resolution.failed[0].documents, (std::vector<std::string>{Site + "none", Site + "tag.xml"}));
}

TEST_F(VastResolver, ThousandsOfAdsThatFailDoNotRecurse)
{
    const Resolution buffet = tags.resolve_text(vast_of(repeated("<Ad/>", 9999)));
    EXPECT_EQ(buffet.error, 101);
    EXPECT_EQ(buffet.failed.size(), 100U);
    const Resolution pod = tags.resolve_text(vast_of(repeated("<Ad sequence=\"1\"/>", 5000) + repeated("<Ad/>", 4999)));
    EXPECT_EQ(pod.error, 101);
}

// -------------------------------------------------------------------------------------------------------------
// lifetime

TEST(VastResolverLifetime, ADestroyedResolverDoesNotCall)
{
    World world;
    world.net[Site + "tag"].body = vast_of(inline_ad("1"));
    world.net[Site + "tag"].after = 1;
    SimulatedPlatform platform(world);
    const vast::CommonMediaSupport support;
    int calls = 0;
    // With an answer due, and with the call itself due.
    for (const bool fetched : {false, true}) {
        auto resolver = std::make_unique<vast::Resolver>(platform.fetcher(), platform.loop(), support);
        if (fetched)
            resolver->resolve_text(vast_of(inline_ad("1")), "", [&](const Resolution&) { ++calls; });
        else
            resolver->resolve(Site + "tag", [&](const Resolution&) { ++calls; });
        resolver.reset();
        platform.run_until(platform.loop().now() + 30);
    }
    EXPECT_EQ(calls, 0);
}

TEST(VastResolverLifetime, ACallMayDestroyItsResolver)
{
    SimulatedPlatform platform;
    const vast::CommonMediaSupport support;
    auto resolver = std::make_unique<vast::Resolver>(platform.fetcher(), platform.loop(), support);
    int ads = 0;
    resolver->resolve_text(vast_of(inline_ad("1")), "", [&](const Resolution& resolution) {
        resolver.reset();
        ads = static_cast<int>(resolution.ads.size());
    });
    platform.run_until(30);
    EXPECT_EQ(ads, 1);
}

TEST(VastResolverLifetime, TagsAreResolvedAtTheSameTime)
{
    World world;
    for (const char* name : {"a", "b"}) {
        world.net[Site + name].body = vast_of(inline_ad(name));
        world.net[Site + name].after = 3;
    }
    SimulatedPlatform platform(world);
    const vast::CommonMediaSupport support;
    vast::Resolver resolver(platform.fetcher(), platform.loop(), support);
    std::string done;
    for (const char* name : {"a", "b"})
        resolver.resolve(Site + name, [&](const Resolution& resolution) { done += resolution.ads.at(0).ad.id; });
    platform.run_until(3);
    EXPECT_EQ(done, "ab");
    EXPECT_EQ(platform.loop().pending(), 0U);
}

TEST(VastResolverLifetime, ALateAnswerIsNotUsed)
{
    World world;
    world.net[Site + "tag"].body = vast_of(inline_ad("1"));
    world.net[Site + "tag"].after = 20;
    SimulatedPlatform platform(world);
    const vast::CommonMediaSupport support;
    vast::Resolver resolver(platform.fetcher(), platform.loop(), support);
    std::vector<std::optional<int>> errors;
    resolver.resolve(Site + "tag", [&](const Resolution& resolution) { errors.push_back(resolution.error); });
    platform.run_until(60);
    EXPECT_EQ(errors, std::vector<std::optional<int>>{301});
}

} // namespace qoro::test
