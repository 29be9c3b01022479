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

/// An attack on the real program, which plays the demo's video beside a page of a stranger in a network of its own.
///
/// To add one: put its page into tests/hostile/pages/ (it says mraid.expand("done") when it has done all that it wanted
/// to), and write down here what must not have come of it:
///
///     TEST_F(HostileTest, APageThatEatsMemoryIsEnded)
///     {
///         play("memory.html");
///         EXPECT_TRUE(ad().tells({{"what", "web"}, {"do", "died"}}));
///         EXPECT_LT(memory().others(), 512 * Megabyte);
///         the_viewer_leaves();
///     }
///
/// What a server does to the ad is an answer of internet() (or a server of the test's own, on any address); what the ad
/// itself does, a property in play()'s second argument. Servers of the world: any address answers on port 80 with what
/// internet() serves, and internet().contacted() says who was spoken to.
class HostileTest : public testing::Test
{
protected:
    static constexpr long Megabyte = 1024 * 1024;
#ifdef __SANITIZE_ADDRESS__
    /// Bytes by which a page may raise the program. The sanitizers keep freed memory for a while, and watch over each
    /// byte with some of their own.
    static constexpr long MostGrowth = 256 * Megabyte;
#else
    static constexpr long MostGrowth = 64 * Megabyte;
#endif
    /// The server of the ad's page. Pages of attacks name 203.0.113.66 for where nothing may ever go.
    static constexpr const char* Stranger = "203.0.113.1";
    static constexpr const char* Elsewhere = "203.0.113.66";

    void SetUp() override;
    void TearDown() override;

    /// Starts the ad with a page of tests/hostile/pages/, and waits until its video plays.
    /// @param page the file's name
    /// @param changes properties of the ad that differ from the demo's
    void play(const std::string& page, nlohmann::json changes = nlohmann::json::object());
    PlayedAd& ad()
    {
        return *ad_;
    }
    Internet& internet()
    {
        return *internet_;
    }
    /// What the program and its pages have taken since the ad's video began to play.
    MemoryWatch& memory()
    {
        return *memory_;
    }

    /// Waits until the page has done all that it wanted to.
    bool page_is_done();
    /// Waits for a line that says what the page was refused.
    /// @param part of the line's detail
    bool refused(const std::string& kind, const std::string& part = "");
    /// Whether anybody was spoken to but the ad's own servers. Names who.
    std::string spoken_to_others();
    /// The program lives, a touch of the close button is answered within a second (longer on a busy machine), and the
    /// ad ends in order.
    void the_viewer_leaves();
    /// A touch of the ad's close button.
    void the_viewer_touches_close();
    /// The kit shows a way out, and a touch of it ends the ad in order.
    void the_viewer_leaves_by_the_guard();

private:
    std::optional<Internet> internet_;
    std::optional<DemoAd> demo_;
    std::optional<PlayedAd> ad_;
    std::optional<MemoryWatch> memory_;
};

} // namespace qoro::test
