#include "Places.h"
#include "tests/e2e/PlayedAd.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <utility>
#include <vector>

// A creative that adds an event to the viewer's calendar, on a phone of 375x812 points: its page begins at 255 points,
// below the band of the video. A click on its left half sends a valid event, one on its right half an invalid one.

namespace qoro::test
{

namespace
{

namespace fs = std::filesystem;
using nlohmann::json;

constexpr const char* Page = R"(<html><head><script src="mraid.js"></script></head>
<body style="margin:0;height:100vh;background:#204060"><script>
const lesson = JSON.stringify({
  summary: "Lesson; the first", description: "Guitar,\nroom 7", location: "Hall 3", start: "2027-03-22T22:00-08:00",
  end: "2027-03-22T23:00-08:00", status: "tentative", reminder: -900000,
  recurrence: { frequency: "weekly", daysInWeek: [1], expires: "2027-06-30" } });
mraid.addEventListener("error", (message, action) => {
  if (action !== "expand") mraid.expand(action + ": " + message); // which is written down
});
document.onclick = click =>
  mraid.createCalendarEvent(click.clientX < 187 ? lesson : { description: "Lesson", start: "soon" });
</script></body></html>)";

class PlayCalendar : public testing::Test
{
protected:
    PlayCalendar()
    {
        std::string name = (fs::temp_directory_path() / "calendar-XXXXXX").string();
        folder_ = mkdtemp(name.data());
        fs::copy_file(QORO_SOURCE_DIR "/examples/demo/clip.mp4", folder_ / "clip.mp4");
        std::ofstream(folder_ / "page.html") << Page;
        std::ofstream(folder_ / "ad.json") << json{
            {"strVideoUrl", "clip.mp4"},
            {"strWebViewUrl", "page.html"},
            {"fVideoWidth", 1280},
            {"fVideoHeight", 720},
            {"portraitModeType", "VIDEO_AND_WEBVIEW"},
            {"portraitVideoPos", "TOP"},
            {"bIsAutoStart", true},
            {"strBackgroundColor", "4279704105"},
            {"landscapeModeType", "VIDEO_AND_WEBVIEW"},
            {"iCloseBtnCountdown", 5},
            {"iBufferingSufferTime", -1},
        };
        setenv("XDG_DATA_HOME", (folder_ / "data").c_str(), 1);
        setenv("XDG_CACHE_HOME", (folder_ / "cache").c_str(), 1);
    }
    ~PlayCalendar() override { fs::remove_all(folder_); }

    /// Installs a calendar program that copies the file it receives.
    void install_calendar() const
    {
        const fs::path applications = folder_ / "data" / "applications";
        fs::create_directories(applications);
        const std::string copy = (folder_ / "event.ics").string();
        std::ofstream(folder_ / "calendar")
            << "#!/bin/sh\ncp \"$1\" '" << copy << ".part' && mv '" << copy << ".part' '" << copy << "'\n";
        fs::permissions(folder_ / "calendar", fs::perms::owner_all);
        std::ofstream(applications / "calendar.desktop")
            << "[Desktop Entry]\nType=Application\nName=Calendar\nMimeType=text/calendar;\nExec="
            << (folder_ / "calendar").string() << " %f\n";
        std::ofstream(applications / "mimeapps.list") << "[Default Applications]\ntext/calendar=calendar.desktop\n";
    }
    /// The file that the calendar received, with folded lines joined (RFC 5545, section 3.1); empty when none was
    /// received.
    std::string calendar_file(PlayedAd& ad) const
    {
        ad.eventually([&] { return fs::exists(folder_ / "event.ics"); });
        std::ostringstream text;
        text << std::ifstream(folder_ / "event.ics").rdbuf();
        std::string file = text.str();
        for (std::size_t fold = 0; (fold = file.find("\r\n ")) != std::string::npos;)
            file.erase(fold, 3);
        return file;
    }
    std::size_t files_in_cache() const
    {
        std::error_code none;
        std::size_t files = 0;
        for (fs::directory_iterator each(folder_ / "cache" / "qoro-ad" / "calendar", none), end; each != end; ++each)
            ++files;
        return files;
    }
    /// Starts the ad and waits until its page listens.
    std::unique_ptr<PlayedAd> play(std::vector<std::string> options = {}) const
    {
        options.push_back((folder_ / "ad.json").string());
        auto ad = std::make_unique<PlayedAd>(std::move(options));
        EXPECT_TRUE(ad->reports({{"what", "mraid"}, {"facts", {{"state", "default"}, {"viewable", true}}}}))
            << ad->complaints();
        return ad;
    }

private:
    fs::path folder_;
};

} // namespace

TEST_F(PlayCalendar, AClickAddsTheEventToTheSystemsCalendar)
{
    install_calendar();
    const auto ad = play();
    EXPECT_TRUE(ad->reports({{"what", "mraid"}, {"facts", {{"supports", {{"calendar", true}}}}}}));

    ad->click(90, 500);

    const std::string file = calendar_file(*ad);
    for (const char* line :
         {"BEGIN:VCALENDAR", "SUMMARY:Lesson\\; the first", "DESCRIPTION:Guitar\\,\\nroom 7", "LOCATION:Hall 3",
          "DTSTART;TZID=UTC-0800:20270322T220000", "DTEND;TZID=UTC-0800:20270322T230000",
          "RRULE:FREQ=WEEKLY;UNTIL=20270701T075959Z;BYDAY=MO", "STATUS:TENTATIVE", "TRIGGER:-PT15M", "END:VCALENDAR"})
        EXPECT_NE(file.find(std::string(line) + "\r\n"), std::string::npos) << line << " is not in\n" << file;
    EXPECT_TRUE(ad->reports({{"what", "kit"}, {"do", "calendar.add"}}));
    ad->press("Escape");
    EXPECT_EQ(ad->exit_status(), 0);
}

TEST_F(PlayCalendar, AFakeCalendarShowsTheEventOverTheAdUntilTheViewerLeavesIt)
{
    const auto ad = play({"--calendar", "fake"});
    EXPECT_TRUE(ad->reports({{"what", "mraid"}, {"facts", {{"supports", {{"calendar", true}}}}}}));

    const auto handed_over = [](const json& line) {
        return line["what"] == "kit" && line["do"] == "handOver" && line["to"] == "calendar";
    };
    json event;
    EXPECT_TRUE(ad->clicks_until(90, 500, [&] { return !(event = ad->wait_for(handed_over, 1)).is_null(); }));
    EXPECT_NE(event.value("text", "").find("\r\nSUMMARY:Lesson\\; the first\r\n"), std::string::npos) << event;
    EXPECT_TRUE(ad->reports({{"what", "kit"}, {"do", "calendar.add"}}));
    constexpr Colour White{255, 255, 255};
    EXPECT_TRUE(ad->shows(20, 700, White));
    // The first key leaves the screen, the second the ad.
    ad->press("Escape");
    EXPECT_TRUE(ad->shows(20, 700, Colour{0x20, 0x40, 0x60}));
    ad->press("Escape");
    EXPECT_EQ(ad->exit_status(), 0);
    EXPECT_EQ(files_in_cache(), 0U);
}

TEST_F(PlayCalendar, AnInvalidEventIsAnErrorOfThePageAndWritesNoFile)
{
    install_calendar();
    const auto ad = play();

    const std::string why =
        "start is \"soon\": expected a date that there is, such as 2027-03-24 or 2027-03-24T09:00-08:00";
    const json refusal{{"what", "kit"}, {"do", "calendar.refused"}, {"why", why}};
    EXPECT_TRUE(ad->clicks_until(280, 500, [&] { return ad->reports(refusal, 1); }));
    EXPECT_TRUE(ad->reports(
        {{"what", "mraid"}, {"command", "expand"}, {"arguments", json::array({"createCalendarEvent: " + why})}}));
    EXPECT_EQ(files_in_cache(), 0U);
}

TEST_F(PlayCalendar, AMachineWithoutACalendarSupportsNone)
{
    const auto ad = play();
    EXPECT_TRUE(ad->reports({{"what", "mraid"}, {"facts", {{"supports", {{"calendar", false}}}}}}));

    const json refusal{{"what", "mraid"},
                       {"command", "expand"},
                       {"arguments", json::array({"createCalendarEvent: this device has no calendar"})}};
    EXPECT_TRUE(ad->clicks_until(90, 500, [&] { return ad->reports(refusal, 1); }));
    EXPECT_EQ(files_in_cache(), 0U);
}

} // namespace qoro::test
