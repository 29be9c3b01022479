#include "desktop/net/AdServer.h"
#include "tests/desktop/app/Command.h"
#include "tests/support/TagRun.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>

namespace qoro::test
{
namespace
{

using testing::HasSubstr;

/// Seconds.
constexpr double Quickly = 30;

/// A chain of two documents on a server, which the first leads to with a macro.
class SimulateTagTest : public testing::Test
{
protected:
    SimulateTagTest() : server_(std::make_unique<AdServer>(AdServerContent{.folder = folder.path(""), .script = ""}))
    {
        folder.write("inner.xml", vast_document(ad_element({.events = {"start", "complete"}})));
        folder.write("tag.xml", vast_document(wrapper_element(server_->base() + "/inner.xml?[CACHEBUSTING]",
                                                              "<Impression>http://t/outer</Impression>")));
    }
    void stop_server() { server_.reset(); }
    std::string base() const { return server_->base(); }

    ScratchFolder folder;

private:
    std::unique_ptr<AdServer> server_;
};

} // namespace

TEST_F(SimulateTagTest, ATagIsSimulatedToItsEnd)
{
    for (const std::string& tag : {folder.path("tag.xml"), base() + "/tag.xml"}) {
        const CommandResult result = run_command({"simulate", tag, "--summary"}, Quickly);
        EXPECT_EQ(result.status, 0) << result.errors;
        EXPECT_THAT(result.output, HasSubstr("http://t/outer"));
        EXPECT_THAT(result.output, HasSubstr("http://t/complete"));
        EXPECT_THAT(result.output, testing::Not(HasSubstr("ad closed                       never")));
    }
}

TEST_F(SimulateTagTest, TheWrittenScenarioNeedsNoServer)
{
    const std::string scenario = folder.path("scenario.json");
    const CommandResult first =
        run_command({"simulate", "--ad", folder.path("tag.xml"), "--write-scenario", scenario}, Quickly);
    stop_server();
    const CommandResult second = run_command({"simulate", scenario}, Quickly);
    EXPECT_THAT(first.output, HasSubstr("http://t/complete"));
    EXPECT_EQ(first.output, second.output);
}

TEST_F(SimulateTagTest, EachAdOfAPodHasItsOwnDuration)
{
    TagAd second{.attributes = "sequence=\"2\"", .events = {"complete"}, .prefix = "2/"};
    second.media = R"(<MediaFile delivery="progressive" type="video/mp4">http://m/second.mp4</MediaFile>)";
    std::string longer = ad_element(second);
    longer.replace(longer.find("00:00:10"), 8, "00:00:20");
    const std::string tag = folder.write(
        "pod.xml", vast_document(ad_element({.attributes = "sequence=\"1\"", .events = {"complete"}}) + longer));

    const CommandResult result = run_command({"simulate", tag}, Quickly);
    // Each can play 0.3 s after it has opened.
    EXPECT_THAT(result.output, HasSubstr(R"({"t":10.3,"what":"request","url":"http://t/complete")"));
    EXPECT_THAT(result.output, HasSubstr(R"({"t":30.6,"what":"request","url":"http://t/2/complete")"));
}

TEST_F(SimulateTagTest, WhatIsNoTagIsRefused)
{
    const std::string tag = folder.write("other.xml", "<html/>");
    const CommandResult result = run_command({"simulate", tag}, Quickly);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.errors, HasSubstr("other.xml: a page (HTML)"));
    EXPECT_THAT(result.errors, HasSubstr("expected an ad file or a scenario (JSON), a VAST tag (XML)"));
}

} // namespace qoro::test
