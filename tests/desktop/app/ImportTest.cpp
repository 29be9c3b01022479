#include "Places.h"
#include "desktop/net/AdServer.h"
#include "tests/desktop/app/Command.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <string>
#include <vector>

using namespace qoro;
using namespace qoro::test;
using Json = nlohmann::json;

namespace
{

/// Seconds.
constexpr double Quickly = 30;

const std::string Documents = std::string(QORO_SOURCE_DIR) + "/tests/vast/documents/";

std::string inline_with(const std::string& media)
{
    return "<VAST version=\"3.0\"><Ad id=\"inner\"><InLine><AdSystem>s</AdSystem><AdTitle>t</AdTitle>"
           "<Impression>http://127.0.0.1:9/impression</Impression><Creatives><Creative><Linear>"
           "<Duration>00:00:10</Duration><MediaFiles>" +
           media + "</MediaFiles></Linear></Creative></Creatives></InLine></Ad></VAST>";
}

std::string media_file(int width)
{
    return "<MediaFile delivery=\"progressive\" type=\"video/mp4\" width=\"" + std::to_string(width) +
           "\" height=\"90\">http://127.0.0.1:9/v.mp4</MediaFile>";
}

std::string wrapper_to(const std::string& address)
{
    return "<VAST version=\"3.0\"><Ad id=\"w\"><Wrapper><AdSystem>s</AdSystem><VASTAdTagURI>" + address +
           "</VASTAdTagURI><Error>" + address + "/error</Error><Impression>" + address +
           "/impression</Impression></Wrapper></Ad></VAST>";
}

class ImportTest : public testing::Test
{
protected:
    /// Describes a tag; the command must succeed without a word on stderr.
    Json describe(const std::string& tag, const std::vector<std::string>& more = {}) const
    {
        std::vector<std::string> arguments{"import", "--describe", tag};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const CommandResult result = run_command(arguments, Quickly);
        EXPECT_EQ(result.status, 0) << result.errors;
        EXPECT_EQ(result.errors, "");
        return Json::parse(result.output, nullptr, false);
    }

    /// @return the one line of a tag that is not usable
    std::string complaint(const std::vector<std::string>& arguments) const
    {
        const CommandResult result = run_command(arguments, Quickly);
        EXPECT_EQ(result.status, 2) << result.output;
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(std::ranges::count(result.errors, '\n'), 1) << result.errors;
        return result.errors;
    }
    std::string complaint_about(const std::string& document) const
    {
        return complaint({"import", "--describe", folder.write("tag.xml", document)});
    }

    /// Paths that were requested of the server.
    static std::vector<std::string> paths(const AdServer& server)
    {
        std::vector<std::string> paths;
        for (const AdServerHit& hit : server.hits())
            paths.push_back(hit.target);
        return paths;
    }

    ScratchFolder folder;
};

} // namespace

TEST_F(ImportTest, AFileIsDescribed)
{
    const Json description = describe(Documents + "versions/vast-4.2.xml");
    EXPECT_EQ(description["version"], "4.2");
    EXPECT_EQ(description["ads"].at(0)["title"], "Everything of 4.2");
    EXPECT_TRUE(description["error"].is_null());
}

TEST_F(ImportTest, AChainIsFollowedAndNoTrackerIsRequested)
{
    const AdServer server({.folder = folder.path(""), .script = ""});
    folder.write("inner.xml", inline_with(media_file(640)));
    folder.write("middle.xml", wrapper_to(server.base() + "/inner.xml"));
    folder.write("tag.xml", wrapper_to(server.base() + "/middle.xml"));

    for (const std::string& tag : {server.base() + "/tag.xml", folder.path("tag.xml")}) {
        const Json description = describe(tag);
        EXPECT_EQ(description["ads"].at(0)["id"], "inner");
        EXPECT_EQ(description["wrappers"].at(0)["address"], server.base() + "/middle.xml");
        EXPECT_EQ(description["wrappers"].at(1)["address"], server.base() + "/inner.xml");
    }
    EXPECT_EQ(paths(server),
              (std::vector<std::string>{"/tag.xml", "/middle.xml", "/inner.xml", "/middle.xml", "/inner.xml"}));
}

TEST_F(ImportTest, ATagWithoutAnAdIsDescribedWithItsError)
{
    const Json none = describe(Documents + "ads/none-with-error.xml");
    EXPECT_EQ(none["error"], 303);
    EXPECT_EQ(none["ads"], Json::array());
    EXPECT_EQ(none["errors"].size(), 2U);
    EXPECT_EQ(describe(Documents + "media/vpaid-only.xml")["error"], 403);
}

TEST_F(ImportTest, AnAddressThatCannotBeFetchedIsDescribed)
{
    const AdServer server({.folder = folder.path(""), .script = ""});
    folder.write("empty.xml", "");
    folder.write("tag.xml", wrapper_to(server.base() + "/none.xml"));
    EXPECT_EQ(describe(server.base() + "/none.xml")["error"], 900);
    EXPECT_EQ(describe(server.base() + "/empty.xml")["error"], 303);
    const Json wrapped = describe(server.base() + "/tag.xml");
    EXPECT_EQ(wrapped["error"], 301);
    EXPECT_EQ(wrapped["wrappers"].at(0)["error"], 301);
    EXPECT_EQ(wrapped["errors"], Json::array({server.base() + "/none.xml/error"}));
}

TEST_F(ImportTest, WhatIsNoVastDocumentIsRefusedWithItsPlace)
{
    EXPECT_NE(complaint_about("<VAST version=\"3.0\">\n  <Ad></Add>\n</VAST>").find("line 2, column 9: "),
              std::string::npos);
    EXPECT_NE(complaint_about("<VideoAdServingTemplate/>").find("/VideoAdServingTemplate: "), std::string::npos);
    EXPECT_NE(complaint_about("<DAAST version=\"1.0\"/>").find("/DAAST: "), std::string::npos);
    EXPECT_NE(complaint_about("<VAST version=\"7.0\"/>").find("/VAST/@version: "), std::string::npos);
    EXPECT_NE(complaint_about("").find("line 1, column 1: "), std::string::npos);
    EXPECT_NE(complaint({"import", "--describe", "-"}).find("line 1, column 1: "), std::string::npos);
    EXPECT_EQ(complaint({"import", "--describe", "/nowhere/tag.xml"}),
              "qoro-ad: /nowhere/tag.xml: No such file or directory\n");

    EXPECT_NE(complaint_about("a video").find("line 1, column 1: "), std::string::npos);
    EXPECT_NE(complaint_about("{}").find("expected a VAST tag (XML), got JSON"), std::string::npos);
    EXPECT_EQ(complaint({"import", "--describe", "ftp://ads.example/tag"}),
              "qoro-ad: ftp://ads.example/tag: expected a file, or an address of http or https\n");

    const AdServer server({.folder = folder.path(""), .script = ""});
    folder.write("page.html", "<html/>");
    EXPECT_NE(complaint({"import", "--describe", server.base() + "/page.html"}).find("/html: "), std::string::npos);
}

TEST_F(ImportTest, TheDeviceDecidesOnTheFile)
{
    const std::string tag = folder.write("tag.xml", inline_with(media_file(320) + media_file(640) + media_file(2000)));
    EXPECT_EQ(describe(tag, {"--device", "320x640"})["ads"].at(0)["chosen"], 0);
    EXPECT_EQ(describe(tag, {"--device", "375x812"})["ads"].at(0)["chosen"], 1);
    EXPECT_EQ(describe(tag, {"--device", "1000x2000"})["ads"].at(0)["chosen"], 2);
    EXPECT_NE(complaint({"import", "--describe", tag, "--device", "toaster"}).find("--device: expected "),
              std::string::npos);
}
