#include "tests/e2e/DemoAd.h"
#include "tests/e2e/PlayedAd.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

// What a creative's author uses: touches of the page by steps, and the page's console. The
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
    explicit AuthoredAd(const std::string& body)
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
    std::vector<std::string> arguments(std::vector<std::string> more = {}) const
    {
        more.insert(more.end(), {"--host", path("host.json"), demo_.file()});
        return more;
    }

private:
    const DemoAd demo_;
};

} // namespace

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

} // namespace qoro::test
