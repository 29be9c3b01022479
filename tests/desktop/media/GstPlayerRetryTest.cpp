#include "PlayerTest.h"

#include <filesystem>
#include <fstream>
#include <unistd.h>

// play() after a failure: the player reloads the video and continues at the position of the failure.

namespace qoro::test
{
namespace
{

VideoServer::Answer whole()
{
    VideoServer::Answer answer;
    answer.body = bytes_of(Clip);
    return answer;
}

VideoServer::Answer unavailable()
{
    VideoServer::Answer answer;
    answer.status = 503;
    answer.body = "Sorry";
    return answer;
}

VideoServer::Answer reset()
{
    VideoServer::Answer answer;
    answer.resets = true;
    return answer;
}

VideoServer::Answer silence()
{
    VideoServer::Answer answer;
    answer.silent = true;
    return answer;
}

/// Breaks off at 60 percent, and sends nothing to requests from there on.
VideoServer::Answer half()
{
    VideoServer::Answer answer = whole();
    answer.cuts_at = answer.body.size() * 6 / 10;
    return answer;
}

class GstPlayerRetryTest : public GstPlayerTest
{
protected:
    GstPlayerRetryTest()
    {
        watch.factory().options.server_seconds = 1;
        watch.factory().options.on_failure = [this](const std::string& reason) { failures.push_back(reason); };
    }
    /// Calls play() at each reported failure, as the player's owner does.
    void play_after_each_failure()
    {
        watch.on_report = [this] {
            if (watch.reports.back() == "finished 1")
                watch.player().play();
        };
    }
    NSURL served_in_turn(std::vector<VideoServer::Answer> answers)
    {
        server.serve_in_turn("/v.mp4", std::move(answers));
        return NSURL::URLWithString(server.address("/v.mp4"));
    }

    /// The reason of each failure.
    std::vector<std::string> failures;
};

const Reports Played{"load 1", "load 3", "state 1", "state 2", "finished 0"};

Reports after_one_failure()
{
    Reports all{"state 0", "finished 1"};
    all.insert(all.end(), Played.begin(), Played.end());
    return all;
}

TEST_F(GstPlayerRetryTest, AServerThatIsUnavailableOnceOnlyDelaysTheVideo)
{
    play_after_each_failure();
    watch.open(served_in_turn({unavailable(), whole()}));

    ASSERT_TRUE(watch.until("finished 0"));

    EXPECT_EQ(watch.reports, after_one_failure());
    EXPECT_EQ(failures, (std::vector<std::string>{"HTTP status 503"}));
}

TEST_F(GstPlayerRetryTest, AServerThatResetsItsConnectionsForAWhileOnlyDelaysTheVideo)
{
    play_after_each_failure();
    // The reader itself retries after the first reset.
    watch.open(served_in_turn({reset(), reset(), whole()}));

    ASSERT_TRUE(watch.until("finished 0"));

    EXPECT_EQ(watch.reports, after_one_failure());
}

TEST_F(GstPlayerRetryTest, AServerThatIsSilentForAWhileOnlyDelaysTheVideo)
{
    play_after_each_failure();
    watch.open(served_in_turn({silence(), silence(), whole()}));

    ASSERT_TRUE(watch.until("finished 0", 30));

    EXPECT_EQ(watch.reports, after_one_failure());
    EXPECT_EQ(failures, (std::vector<std::string>{"its server does not answer"}));
}

TEST_F(GstPlayerRetryTest, WithoutAutoplayAPlayAfterAFailurePlays)
{
    play_after_each_failure();
    watch.open(served_in_turn({unavailable(), whole()}), false);

    EXPECT_TRUE(watch.until("finished 0"));
}

TEST_F(GstPlayerRetryTest, APauseBeforeTheReloadRevokesThePlay)
{
    GstPlayer& player = watch.open(served(half()));
    ASSERT_TRUE(watch.until("finished 1"));
    const double failed_at = player.current_time();
    server.serve("/v.mp4", whole());
    watch.reports.clear();

    player.play();
    player.pause();
    watch.let_pass(1);
    EXPECT_EQ(watch.reports, Reports{});
    EXPECT_EQ(player.current_time(), failed_at);

    player.play();
    ASSERT_TRUE(watch.until("finished 0"));
    EXPECT_EQ(watch.reports, (Reports{"state 1", "state 2", "finished 0"}));
}

TEST_F(GstPlayerRetryTest, LeavingTheAppBeforeTheReloadRevokesThePlay)
{
    GstPlayer& player = watch.open(served(half()));
    ASSERT_TRUE(watch.until("finished 1"));
    server.serve("/v.mp4", whole());
    watch.reports.clear();

    player.play();
    watch.factory().leave_app();
    watch.let_pass(1);

    EXPECT_EQ(watch.reports, Reports{});
}

TEST_F(GstPlayerRetryTest, APermanentlyUnavailableServerIsTriedThreeMoreTimes)
{
    play_after_each_failure();
    watch.open(served(unavailable()));
    ASSERT_TRUE(watch.until([&] { return failures.size() == 4; }, 90));
    watch.let_pass(0.5);
    const Reports all = watch.reports;

    // Further calls of play() do nothing, even if the server has recovered.
    watch.on_report = nullptr;
    server.serve("/v.mp4", whole());
    watch.player().play();
    watch.let_pass(0.5);

    EXPECT_EQ(all, (Reports{"state 0", "finished 1", "state 0", "finished 1", "state 0", "finished 1", "state 0",
                            "finished 1"}));
    EXPECT_EQ(watch.reports, all);
    EXPECT_EQ(server.requests(), 4);
}

TEST_F(GstPlayerRetryTest, AVideoThatMadeProgressHasItsThreeRetriesAgain)
{
    VideoServer::Answer begun = whole();
    begun.cuts_at = begun.body.size() * 4 / 10;
    VideoServer::Answer most = whole();
    most.cuts_at = most.body.size() * 8 / 10;
    GstPlayer& player = watch.open(served(begun));
    ASSERT_TRUE(watch.until("finished 1"));
    const double first = player.current_time();
    play_after_each_failure();

    player.play();
    ASSERT_TRUE(watch.until([&] { return failures.size() == 2; }));
    server.serve("/v.mp4", most);
    ASSERT_TRUE(watch.until([&] { return failures.size() == 6; }, 30));
    watch.let_pass(0.5);

    EXPECT_GT(player.current_time(), first + 1);
    EXPECT_EQ(failures.size(), 6U) << "two at the first place, and four at the second";
}

TEST_F(GstPlayerRetryTest, AnotherVideoOfAnotherLengthFails)
{
    const std::string other = testing::TempDir() + "/other-" + std::to_string(getpid()) + ".mp4";
    GstPlayer& player = watch.open(served(half()));
    ASSERT_TRUE(watch.until("finished 1"));
    const double failed_at = player.current_time();
    watch.reports.clear();
    ASSERT_EQ(std::system(("ffmpeg -loglevel error -y -i " + Clip + " -t 2 -c copy " + other).c_str()), 0);
    VideoServer::Answer shorter;
    shorter.body = bytes_of(other);
    server.serve("/v.mp4", shorter);

    player.play();
    ASSERT_TRUE(watch.until("finished 1"));

    EXPECT_EQ(watch.reports, (Reports{"state 0", "finished 1"}));
    EXPECT_EQ(failures.back(), "it is another video than before");
    EXPECT_EQ(player.current_time(), failed_at);
    EXPECT_NEAR(player.duration(), Duration, 0.1) << "as reported before";
    std::filesystem::remove(other);
}

TEST_F(GstPlayerRetryTest, AnAnswerThatIsNoLongerAVideoFailsAgain)
{
    GstPlayer& player = watch.open(served(half()));
    ASSERT_TRUE(watch.until("finished 1"));
    watch.reports.clear();
    VideoServer::Answer page;
    page.body = "<!DOCTYPE html><html><body>Gone</body></html>";
    page.type = "text/html";
    server.serve("/v.mp4", page);

    player.play();
    ASSERT_TRUE(watch.until("finished 1"));

    EXPECT_EQ(watch.reports, (Reports{"state 0", "finished 1"}));
}

// Local files: the cached copy of a video, or a file of the ad's.

class GstPlayerFileRetryTest : public GstPlayerRetryTest
{
protected:
    GstPlayerFileRetryTest() { write(bytes_of(Clip)); }
    ~GstPlayerFileRetryTest() override { std::filesystem::remove(path); }

    /// Replaces the file by rename, as the cache does.
    void write(const std::string& bytes) const
    {
        std::ofstream(path + ".new", std::ios::binary) << bytes;
        std::filesystem::rename(path + ".new", path);
    }

    /// Contains the process id, because tests run in parallel.
    const std::string path = testing::TempDir() + "/copy-" + std::to_string(getpid()) + ".mp4";
};

TEST_F(GstPlayerFileRetryTest, ATruncatedCopyContinuesWhenItIsCompleteAgain)
{
    const std::string all = bytes_of(Clip);
    write(all.substr(0, all.size() * 6 / 10));
    GstPlayer& player = watch.open(NSURL::fileURLWithPath(path));
    ASSERT_TRUE(watch.until("finished 1"));
    const double failed_at = player.current_time();
    EXPECT_GT(failed_at, 1);
    watch.reports.clear();

    write(all);
    player.play();
    ASSERT_TRUE(watch.until("state 1"));
    EXPECT_GE(player.current_time(), failed_at);
    ASSERT_TRUE(watch.until("finished 0"));

    EXPECT_EQ(watch.reports, (Reports{"state 1", "state 2", "finished 0"}));
}

TEST_F(GstPlayerFileRetryTest, ACopyThatStaysTruncatedFailsFourTimesInAll)
{
    const std::string all = bytes_of(Clip);
    write(all.substr(0, all.size() * 6 / 10));
    play_after_each_failure();
    watch.open(NSURL::fileURLWithPath(path));

    ASSERT_TRUE(watch.until([&] { return failures.size() == 4; }, 90));
    watch.let_pass(0.5);

    EXPECT_EQ(failures.size(), 4U);
}

TEST_F(GstPlayerFileRetryTest, ACopyRemovedWhileItPlaysPlaysOnAndAgain)
{
    GstPlayer& player = watch.open(NSURL::fileURLWithPath(path));
    ASSERT_TRUE(watch.until("state 1"));
    std::filesystem::remove(path);

    player.seek(3.5);
    ASSERT_TRUE(watch.until("finished 0"));
    watch.reports.clear();
    player.play();
    player.seek(3.5);
    ASSERT_TRUE(watch.until("finished 0"));

    EXPECT_TRUE(failures.empty());
}

TEST_F(GstPlayerFileRetryTest, ACopyRemovedBeforeItIsOpenedFailsUntilItExists)
{
    std::filesystem::remove(path);
    GstPlayer& player = watch.open(NSURL::fileURLWithPath(path));
    ASSERT_TRUE(watch.until("finished 1"));

    write(bytes_of(Clip));
    player.play();
    ASSERT_TRUE(watch.until("finished 0"));

    EXPECT_EQ(watch.reports, after_one_failure());
}

TEST_F(GstPlayerFileRetryTest, ACopyTruncatedWhileItPlaysFailsAtItsNewEnd)
{
    GstPlayer& player = watch.open(NSURL::fileURLWithPath(path));
    ASSERT_TRUE(watch.until("state 1"));
    std::filesystem::resize_file(path, std::filesystem::file_size(path) * 6 / 10);

    ASSERT_TRUE(watch.until("finished 1"));

    EXPECT_GT(player.current_time(), 0.5);
    EXPECT_LT(player.current_time(), 3.9);
}

} // namespace
} // namespace qoro::test
