#pragma once

#include "tests/e2e/DemoAd.h"
#include "tests/e2e/PlayedAd.h"
#include "tests/hostile/Internet.h"
#include "tests/hostile/MemoryWatch.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <optional>
#include <string>
#include <vector>

namespace qoro::test
{

/// An attack on the real program, which plays the demo's video beside a hostile page in a network namespace of its own.
///
/// To add one: put its page into tests/hostile/pages/ (it calls mraid.expand("done") when it has finished), and check
/// here that the attack has failed:
///
///     TEST_F(HostileTest, APageThatExhaustsMemoryIsEnded)
///     {
///         play("memory.html");
///         EXPECT_TRUE(ad().reports({{"what", "web"}, {"do", "died"}}));
///         EXPECT_LT(memory().others(), 512 * Megabyte);
///         the_viewer_leaves();
///     }
///
/// To attack through a server, set an answer of internet(), or run a server on any address in the test; to attack
/// through the ad, pass properties in play()'s second argument. Every address answers on port 80 with what internet()
/// serves, and internet().contacted() lists the addresses contacted.
class HostileTest : public testing::Test
{
protected:
    static constexpr long Megabyte = 1024L * 1024;
#ifdef __SANITIZE_ADDRESS__
    /// Bytes by which a page may grow the program. The sanitizers quarantine freed memory and add shadow memory for
    /// each byte.
    static constexpr long MostGrowth = 256 * Megabyte;
#else
    static constexpr long MostGrowth = 64 * Megabyte;
#endif
    /// Server of the ad's page. Pages of attacks use 203.0.113.66 as the address that must never be contacted.
    static constexpr const char* Stranger = "203.0.113.1";
    static constexpr const char* Elsewhere = "203.0.113.66";

    void SetUp() override;
    void TearDown() override;

    /// Starts the ad with a page of tests/hostile/pages/ and waits until its video plays.
    /// @param page the file's name
    /// @param changes properties of the ad that differ from the demo's
    void play(const std::string& page, const nlohmann::json& changes = nlohmann::json::object());
    PlayedAd& ad()
    {
        return *ad_;
    }
    Internet& internet()
    {
        return *internet_;
    }
    /// Memory use of the program and its pages since the ad's video began to play.
    MemoryWatch& memory()
    {
        return *memory_;
    }

    /// Waits until the page reports that it has finished.
    bool page_is_done();
    /// Waits for a trace line about a rejected action of the page.
    /// @param kind of the rejected action; empty for any
    /// @param part substring of the line's detail
    bool refused(const std::string& kind, const std::string& part = "");
    /// Whether any server but the ad's own was contacted; the message lists the addresses.
    std::string spoken_to_others();
    /// Checks that the program runs, answers a touch of the close button within a second (longer on a busy machine),
    /// and that the ad ends normally.
    void the_viewer_leaves();
    /// Touches the ad's close button.
    void the_viewer_touches_close();
    /// Checks that the close guard's button appears, and that a touch of it ends the ad normally.
    void the_viewer_leaves_by_the_guard();

private:
    std::optional<Internet> internet_;
    std::optional<DemoAd> demo_;
    std::optional<PlayedAd> ad_;
    std::optional<MemoryWatch> memory_;
};

} // namespace qoro::test
