#include "PlayerTest.h"

#include <filesystem>
#include <fstream>

// Forms of video addresses that an ad may contain.

namespace qoro::test
{
namespace
{

class GstPlayerAddressTest : public GstPlayerTest
{
protected:
    /// Serves a body under a path, opens an address, and waits until the player plays or fails.
    void open(const std::string& path, const std::string& asked, const std::string& body)
    {
        VideoServer::Answer answer;
        answer.body = body;
        server.serve(path, std::move(answer));
        watch.open(NSURL::URLWithString(server.address(asked)));
        EXPECT_TRUE(watch.until([&] { return watch.has("state 1") || watch.has("finished 1"); }));
    }
};

TEST_F(GstPlayerAddressTest, AnEscapedZeroByteIsPassedToTheServer)
{
    for (const std::string asked : {"/v.mp4?%00", "/v%00.mp4", "/v.mp4?a=%00&%00=b", "/%00/v.mp4", "/v.%00"}) {
        watch.reports.clear();
        open(asked, asked, bytes_of(Clip));

        EXPECT_TRUE(watch.has("state 1")) << asked;
    }
}

TEST_F(GstPlayerAddressTest, TheFragmentIsNotRequested)
{
    open("/v.mp4", "/v.mp4#%00", bytes_of(Clip));

    EXPECT_TRUE(watch.has("state 1"));
}

TEST_F(GstPlayerAddressTest, AZeroByteIsNoPartOfAnAddress)
{
    open("/v.mp4", std::string("/v.mp4\0?a", 9), bytes_of(Clip));

    EXPECT_EQ(server.requests(), 0);
    EXPECT_EQ(watch.reports, (Reports{"state 0", "finished 1"}));
}

TEST_F(GstPlayerAddressTest, AVideoIsRecognisedWhateverItsExtension)
{
    for (const std::string path : {"/v", "/v.txt", "/V.MP4", "/v.webm", "/v.strange-ending", "/v."}) {
        watch.reports.clear();
        const std::string asked = path + "?a=b.html";
        open(asked, asked, bytes_of(Clip));

        EXPECT_TRUE(watch.has("state 1")) << path << ": " << watch.failure;
    }
}

TEST_F(GstPlayerAddressTest, AFileMayHaveAnyName)
{
    const std::string path = testing::TempDir() + "/clip.mp4?%00";
    std::filesystem::copy_file(Clip, path, std::filesystem::copy_options::overwrite_existing);
    watch.open(NSURL::fileURLWithPath(path));

    EXPECT_TRUE(watch.until("state 1"));
    std::filesystem::remove(path);
}

TEST_F(GstPlayerAddressTest, AFileAddressWithAnEscapedZeroByteIsInvalid)
{
    watch.open(NSURL::URLWithString("file:///tmp/v.mp4%00"));

    EXPECT_TRUE(watch.until("finished 1"));
    EXPECT_EQ(watch.failure, "it has no address that can be played");
}

} // namespace
} // namespace qoro::test
