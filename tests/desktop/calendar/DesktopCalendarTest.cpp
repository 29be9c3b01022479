#include "desktop/calendar/DesktopCalendar.h"
#include "tests/desktop/app/Command.h"
#include "tests/desktop/support/BarePlatform.h"
#include "tests/desktop/support/Programs.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <set>
#include <sys/resource.h>
#include <sys/stat.h>

namespace qoro::test
{
namespace
{

namespace fs = std::filesystem;

constexpr double Deadline = 90;
/// Seconds. run_until() evaluates its condition after each iteration only; a timer of this interval forces iterations.
constexpr double Turn = 0.01;

CalendarEvent concert()
{
    CalendarEvent event;
    event.title = "Concert";
    event.clock.offset = 0;
    event.start = 1'805'925'600;
    return event;
}

class DesktopCalendarTest : public testing::Test
{
protected:
    DesktopCalendarTest() { Programs::instance().forget_calendar_file(); }

    bool until(const std::function<bool()>& condition)
    {
        const TimerId turns = platform_.loop().start_timer(Turn, true, [] {});
        const bool holds = platform_.loop().run_until(condition, Deadline);
        platform_.loop().stop_timer(turns);
        return holds;
    }
    bool calendar_gets_a_file()
    {
        return until([] { return !Programs::instance().calendar_file().empty(); });
    }
    std::set<std::string> files() const
    {
        std::set<std::string> names;
        if (fs::exists(folder))
            for (const auto& entry : fs::directory_iterator(folder))
                names.insert(entry.path().filename().string());
        return names;
    }
    /// Creates a file that was last modified so many hours ago.
    void leave_file(const std::string& name, int hours) const
    {
        fs::create_directories(folder);
        std::ofstream(fs::path(folder) / name) << "x";
        fs::last_write_time(fs::path(folder) / name, fs::file_time_type::clock::now() - std::chrono::hours(hours));
    }

    ScratchFolder scratch;
    const std::string folder = scratch.path("cache/calendar");
    DesktopCalendar calendar{{.folder = folder}};

private:
    BarePlatform platform_;
};

TEST_F(DesktopCalendarTest, AnEventReachesTheCalendarAsAFile)
{
    EXPECT_TRUE(calendar.available());
    EXPECT_EQ(calendar.add(concert()), NSString());

    ASSERT_TRUE(calendar_gets_a_file());
    const std::string file = Programs::instance().calendar_file();
    EXPECT_TRUE(file.starts_with("BEGIN:VCALENDAR\r\n")) << file;
    EXPECT_NE(file.find("\r\nSUMMARY:Concert\r\n"), std::string::npos) << file;
    EXPECT_TRUE(file.ends_with("END:VCALENDAR\r\n")) << file;
}

TEST_F(DesktopCalendarTest, AStandInReceivesTheEventInsteadOfTheProgram)
{
    std::string received;
    DesktopCalendar fake{
        {.folder = folder, .allowed = true, .stand_in = [&received](const std::string& event) { received = event; }}};
    EXPECT_TRUE(fake.available());
    EXPECT_EQ(fake.add(concert()), NSString());
    EXPECT_TRUE(received.starts_with("BEGIN:VCALENDAR\r\n")) << received;
    EXPECT_NE(received.find("\r\nSUMMARY:Concert\r\n"), std::string::npos) << received;
    EXPECT_TRUE(files().empty());

    DesktopCalendar forbidden{{.folder = folder, .allowed = false, .stand_in = [](const std::string&) {}}};
    EXPECT_FALSE(forbidden.available());
    EXPECT_EQ(forbidden.add(concert()), "this device has no calendar");
}

TEST_F(DesktopCalendarTest, AFileIsForItsUserAlone)
{
    calendar.add(concert());
    ASSERT_TRUE(calendar_gets_a_file());

    ASSERT_EQ(files().size(), 1U);
    struct stat status {
    };
    ASSERT_EQ(stat((fs::path(folder) / *files().begin()).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    ASSERT_EQ(stat(folder.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0700U);
}

TEST_F(DesktopCalendarTest, TheSameEventTwiceIsTwoEvents)
{
    calendar.add(concert());
    ASSERT_TRUE(calendar_gets_a_file());
    const std::string first = Programs::instance().calendar_file();
    Programs::instance().forget_calendar_file();
    calendar.add(concert());
    ASSERT_TRUE(calendar_gets_a_file());

    const auto uid = [](const std::string& text) {
        const std::size_t begin = text.find("\r\nUID:");
        return text.substr(begin, text.find("\r\n", begin + 2) - begin);
    };
    EXPECT_NE(uid(first), uid(Programs::instance().calendar_file()));
    EXPECT_EQ(files().size(), 2U);
}

TEST_F(DesktopCalendarTest, FilesOfTheDayBeforeAreRemovedWithTheNextEvent)
{
    leave_file("old.ics", 25);
    leave_file("old.ics.part", 25);
    leave_file("new.ics", 23);
    leave_file("notes.txt", 25);

    calendar.add(concert());
    ASSERT_TRUE(calendar_gets_a_file());

    const std::set<std::string> left = files();
    EXPECT_FALSE(left.contains("old.ics"));
    EXPECT_FALSE(left.contains("old.ics.part"));
    EXPECT_TRUE(left.contains("new.ics"));
    EXPECT_TRUE(left.contains("notes.txt")) << "this is none of the calendar's";
    EXPECT_EQ(left.size(), 3U);
}

TEST_F(DesktopCalendarTest, AnUnknownZoneIsRefusedAndLeavesNoFile)
{
    CalendarEvent event = concert();
    event.clock = {.zone = "Mars/Olympus"};

    EXPECT_EQ(calendar.add(event), "timezone is \"Mars/Olympus\": expected one that this device knows");
    EXPECT_TRUE(files().empty());
}

TEST_F(DesktopCalendarTest, AFullDiskIsReportedAndLeavesNoPartOfAFile)
{
    fs::create_directories(folder);
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    rlimit small = before;
    small.rlim_cur = 50;
    setrlimit(RLIMIT_FSIZE, &small);
    const NSString why = calendar.add(concert());
    setrlimit(RLIMIT_FSIZE, &before);

    EXPECT_EQ(why, "the event could not be written: No space left on device");
    EXPECT_TRUE(files().empty());
}

TEST_F(DesktopCalendarTest, AnUnwritableFolderIsReportedWithoutItsName)
{
    scratch.write("cache", "a file");
    EXPECT_EQ(calendar.add(concert()), "the event could not be written: Not a directory");

    DesktopCalendar nowhere({.folder = "/proc/self/calendar"});
    const std::string why = nowhere.add(concert()).text();
    EXPECT_TRUE(why.starts_with("the event could not be written: ")) << why;
    EXPECT_EQ(why.find("/proc"), std::string::npos) << why;
}

TEST_F(DesktopCalendarTest, WithoutACalendarProgramThereIsNoCalendar)
{
    Programs::instance().keep_calendar(false);
    EXPECT_TRUE(until([&] { return !calendar.available(); }));

    EXPECT_EQ(calendar.add(concert()), "this device has no calendar");
    EXPECT_TRUE(files().empty());

    Programs::instance().keep_calendar(true);
    EXPECT_TRUE(until([&] { return calendar.available(); }));
}

TEST_F(DesktopCalendarTest, AHostMayDisableTheCalendar)
{
    DesktopCalendar kept({.folder = folder, .allowed = false});

    EXPECT_FALSE(kept.available());
    EXPECT_EQ(kept.add(concert()), "this device has no calendar");
    EXPECT_TRUE(files().empty());
}

} // namespace
} // namespace qoro::test
