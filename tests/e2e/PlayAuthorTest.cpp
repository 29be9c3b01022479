#include "tests/e2e/DemoAd.h"
#include "tests/e2e/PlayedAd.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

// What a creative's author uses: touches of the page by steps, the page's console, its inspector, and the reload. The
// page begins at 255 points, below the band of the video.

namespace qoro::test
{

namespace
{

using nlohmann::json;

/// The demo ad with a page of the test's own, whose files the test changes.
class AuthoredAd
{
public:
    /// @param changes properties of the ad that differ from the demo's
    explicit AuthoredAd(const std::string& body, const json& changes = json::object()) : demo_(changes)
    {
        write("page.html", page_of(body));
        write("host.json", R"({"device": {"canOpen": ["https:"]}})");
    }

    static std::string page_of(const std::string& body)
    {
        return "<!DOCTYPE html>\n<html><head><script src=\"mraid.js\"></script></head>\n<body>" + body +
               "</body></html>";
    }
    std::string path(const std::string& name) const { return demo_.folder() + "/" + name; }
    void write(const std::string& name, const std::string& text) const { std::ofstream(path(name)) << text; }
    std::string read(const std::string& name) const
    {
        std::ifstream file(path(name));
        return {std::istreambuf_iterator<char>(file), {}};
    }
    std::vector<std::string> arguments(std::vector<std::string> more = {}) const
    {
        more.insert(more.end(), {"--host", path("host.json"), demo_.file()});
        return more;
    }

private:
    const DemoAd demo_;
};

json line_of_console(const std::string& message)
{
    return {{"what", "page.console"}, {"message", message}};
}

/// Number of the program's windows on the X server.
int visible_windows()
{
    const std::shared_ptr<FILE> list(popen("xdotool search --onlyvisible --class '^qoro-ad$' 2>/dev/null", "r"),
                                     pclose);
    int lines = 0;
    for (int c = 0; (c = std::fgetc(list.get())) != EOF;)
        lines += c == '\n' ? 1 : 0;
    return lines;
}

} // namespace

TEST(PlayAuthor, StepsTouchThePageAsTheViewerDoes)
{
    const AuthoredAd authored(
        "<button id='yes' style='position: absolute; top: 100px; left: 40px; width: 200px; height: "
        "60px'>Yes</button><script>\n"
        "yes.onclick = () => mraid.open('https://shop.example/');\n"
        "mraid.addEventListener('error', message => console.warn(message));\n"
        "document.onclick = ({ target }) => console.log(`click ${target.id}`);\n</script>");
    // Repeated, because a slow machine loads the page late.
    json steps = json::array();
    for (int second = 1; second < PlayedAd::Patience; ++second) {
        steps.push_back({{"at", second}, {"touch", {{"selector", "#yes"}}}});
        steps.push_back({{"touch", {187, 700}}});
        steps.push_back({{"touch", {{"selector", "#no"}}}});
        steps.push_back({{"tap", "btnMute"}});
    }
    authored.write("steps.json", steps.dump());
    PlayedAd ad(authored.arguments({"--steps", authored.path("steps.json")}));

    EXPECT_TRUE(ad.reports({{"what", "step"}, {"touch", {{"selector", "#yes"}}}, {"hit", "page #yes"}}));
    EXPECT_TRUE(ad.reports(line_of_console("click yes")));
    // The touch permits a click-through.
    EXPECT_TRUE(ad.reports({{"what", "openURL"}, {"url", "https://shop.example/"}}));
    EXPECT_TRUE(ad.reports({{"what", "step"}, {"touch", {187, 700}}, {"hit", "page html"}}));
    EXPECT_TRUE(ad.reports({{"what", "log"}, {"level", 2}, {"message", "a step touches no element of the page: #no"}}));
    const json missing = ad.wait_for([](const json& line) { return line["what"] == "step" && line["n"] == 2; });
    EXPECT_TRUE(missing.contains("hit") && missing["hit"].is_null());
    // Later steps wait for the answer of the page.
    ASSERT_TRUE(ad.reports({{"what", "step"}, {"tap", "btnMute"}}));
    int next = 0;
    for (const json& line : ad.trace())
        if (line["what"] == "step") {
            EXPECT_EQ(line["n"], next++);
        }
}

TEST(PlayAuthor, ThePagesConsoleAndErrorsReachTheTraceAndStandardError)
{
    const AuthoredAd authored("<img src='missing.png'><script>\nconsole.log('hello', {a: 1});\n"
                              "Promise.reject(new Error('promised'));\nnothingOfThisName();\n</script>");
    PlayedAd ad(authored.arguments({"--log", "info"}));

    const json hello = ad.wait_for([](const json& line) { return line["what"] == "page.console"; });
    ASSERT_FALSE(hello.is_null()) << ad.complaints();
    EXPECT_EQ(hello["level"], "log");
    EXPECT_EQ(hello["message"], "hello {a: 1}");
    EXPECT_EQ(hello["line"], 4);
    EXPECT_TRUE(
        ad.reports({{"what", "page.error"}, {"kind", "rejection"}, {"message", "Error: promised"}, {"line", 5}}));
    EXPECT_TRUE(ad.reports({{"what", "page.error"},
                            {"kind", "exception"},
                            {"message", "ReferenceError: Can't find variable: nothingOfThisName"},
                            {"line", 6}}));
    const json image = ad.wait_for([](const json& line) { return line.value("kind", "") == "resource"; });
    ASSERT_FALSE(image.is_null());
    EXPECT_EQ(image["status"], 404);
    EXPECT_TRUE(image["file"].get<std::string>().ends_with("/missing.png"));

    const auto says = [&](const std::string& part) { return ad.complaints().find(part) != std::string::npos; };
    EXPECT_TRUE(says("/page.html:4: hello {a: 1}\n")) << ad.complaints();
    EXPECT_TRUE(says("/page.html:6: ReferenceError: Can't find variable: nothingOfThisName\n")) << ad.complaints();
    EXPECT_TRUE(says("/missing.png: the server answers 404\n")) << ad.complaints();
}

TEST(PlayAuthor, ThePageKnowsWhereTheControlsAreUprightAndTurned)
{
    // The video is a band in the middle of the page; the close button is at the page's corner.
    const AuthoredAd authored("<script>\n"
                              "const show = (how, controls) => {\n"
                              "  const { x, y, width, height } = controls.find(one => one.name === 'btnClose');\n"
                              "  console.log(how, JSON.stringify([x, y, width, height]));\n"
                              "};\n"
                              "qoroPlayer.addEventListener('controlschange', ({ e: { controls } }) => {\n"
                              "  show('event', controls);\n"
                              "  qoroPlayer.getControlRects().then(found => show('call', found));\n"
                              "});\n</script>",
                              {{"portraitVideoPos", "MIDDLE"}});
    json steps = json::array();
    for (int second = 1; second < PlayedAd::Patience; ++second)
        steps.push_back({{"at", second}, {"snapshot", true}});
    authored.write("host.json", R"({"host": {"autorotates": [1, 3, 4]}})");
    authored.write("steps.json", steps.dump());
    PlayedAd ad(authored.arguments({"--steps", authored.path("steps.json")}));

    // The view tree's frame of the button is in the coordinates of the view that holds it: the page upright, the video
    // in landscape, where the page begins 44 points beside the video.
    const auto in_view_tree = [&](const std::string& parent) {
        const json line = ad.wait_for([&](const json& one) {
            return one["what"] == "snapshot" && one["views"]["btnClose"].is_object() &&
                   one["views"]["btnClose"]["parent"] == parent;
        });
        return line.is_null() ? json() : line["views"]["btnClose"]["frame"];
    };
    json upright = in_view_tree("webView");
    ASSERT_TRUE(upright.is_array()) << ad.complaints();
    EXPECT_TRUE(ad.reports(line_of_console("event " + upright.dump()))) << ad.complaints();
    EXPECT_TRUE(ad.reports(line_of_console("call " + upright.dump())));

    ASSERT_TRUE(ad.reaches_second(1));
    ad.press("Left");

    json turned = in_view_tree("moviePlayerView");
    ASSERT_TRUE(turned.is_array()) << ad.complaints();
    turned[0] = turned[0].get<int>() - 44;
    EXPECT_TRUE(ad.reports(line_of_console("event " + turned.dump()))) << ad.complaints();
    EXPECT_TRUE(ad.reports(line_of_console("call " + turned.dump())));
}

TEST(PlayAuthor, TheInspectorOpensInAWindowOfItsOwn)
{
    const AuthoredAd authored("<script>console.log('here')</script>");
    {
        PlayedAd ad(authored.arguments());
        ASSERT_TRUE(ad.reports(line_of_console("here"))) << ad.complaints();
        ASSERT_TRUE(ad.eventually([] { return visible_windows() == 1; }));
    }
    PlayedAd ad(authored.arguments({"--inspect"}));

    EXPECT_TRUE(ad.eventually([] { return visible_windows() == 2; })) << ad.complaints();
    ad.terminate();
    EXPECT_EQ(ad.exit_status(), 0);
}

TEST(PlayAuthor, AChangedFileOpensTheAdAgain)
{
    const AuthoredAd authored("<script src='look.js'></script>");
    authored.write("look.js", "console.log('first')");
    PlayedAd ad(authored.arguments({"--watch"}));
    ASSERT_TRUE(ad.reports(line_of_console("first"))) << ad.complaints();

    // A file of the page.
    authored.write("look.js", "console.log('second')");
    EXPECT_TRUE(ad.reports(line_of_console("second"))) << ad.complaints();

    // A faulty description leaves the ad open, and is reported in one line.
    const std::string whole = authored.read("ad.json");
    authored.write("ad.json", whole.substr(0, whole.size() / 2));
    EXPECT_TRUE(ad.eventually([&] { return ad.complaints().find("ad.json: ") != std::string::npos; }))
        << ad.complaints();

    // The description itself, repaired.
    authored.write("other.html", AuthoredAd::page_of("<script>console.log('third')</script>"));
    json repaired = json::parse(whole);
    repaired["strWebViewUrl"] = "other.html";
    authored.write("ad.json", repaired.dump());
    EXPECT_TRUE(ad.reports(line_of_console("third"))) << ad.complaints();

    ad.terminate();
    EXPECT_EQ(ad.exit_status(), 0);
}

TEST(PlayAuthor, AnAdThatHasClosedOpensAgainWhenAFileChanges)
{
    const AuthoredAd authored("<script src='look.js'></script>");
    authored.write("look.js", "console.log('first'); mraid.unload()");
    PlayedAd ad(authored.arguments({"--watch"}));
    ASSERT_TRUE(ad.reports({{"what", "mraid"}, {"do", "close"}})) << ad.complaints();

    authored.write("look.js", "console.log('second')");

    EXPECT_TRUE(ad.reports(line_of_console("second"))) << ad.complaints();
    ad.press("Escape");
    EXPECT_EQ(ad.exit_status(), 0) << ad.complaints();
}

TEST(PlayAuthor, ContentThatDoesNotLoadIsNamedWithItsPlace)
{
    const AuthoredAd authored("");
    json edited = json::parse(authored.read("ad.json"));
    // Nothing listens there.
    edited["strVideoUrl"] = "http://127.0.0.1:1/clip.mp4";
    edited["strWebViewUrl"] = "http://127.0.0.1:1/page.html";
    edited["strBrandIconUrl"] = "http://127.0.0.1:1/icon.png";
    authored.write("ad.json", edited.dump());
    PlayedAd ad(authored.arguments());
    for (const char* line :
         {"/ad.json: /strWebViewUrl: http://127.0.0.1:1/page.html did not load: ",
          "/ad.json: /strBrandIconUrl: http://127.0.0.1:1/icon.png did not load: ", "qoro-ad: the video has failed: "})
        EXPECT_TRUE(ad.eventually([&] { return ad.complaints().find(line) != std::string::npos; })) << line << "\n"
                                                                                                    << ad.complaints();
}

TEST(PlayAuthor, APrePausePointBehindTheEndIsNamedOnceTheDurationIsKnown)
{
    const AuthoredAd authored("");
    json edited = json::parse(authored.read("ad.json"));
    edited["arrayPrePauseLocations"] = {1, 100000};
    authored.write("ad.json", edited.dump());
    PlayedAd ad(authored.arguments());
    EXPECT_TRUE(ad.eventually([&] {
        return ad.complaints().find("/ad.json: /arrayPrePauseLocations/1: has no effect: behind the video's end at ") !=
               std::string::npos;
    })) << ad.complaints();
}

} // namespace qoro::test
