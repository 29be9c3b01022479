#include "PlayerTest.h"

#include <filesystem>
#include <fstream>

// What an ad may write for a video's address.

namespace qoro::test
{
namespace
{

class GstPlayerAddressTest : public GstPlayerTest
{
protected:
    /// Serves a video under a path, and waits until the player of an address has begun to play, or failed.
    void open(const std::string& path, const std::string& asked, const std::string& body)
    {
        VideoServer::Answer answer;
        answer.body = body;
        server.serve(path, std::move(answer));
        watch.open(NSURL::URLWithString(server.address(asked)));
        EXPECT_TRUE(watch.until([&] { return watch.has("state 1") || watch.has("finished 1"); }));
    }
};

TEST_F(GstPlayerAddressTest, an_escaped_zero_byte_is_the_servers_own_matter)
{
    for (const std::string asked : {"/v.mp4?%00", "/v%00.mp4", "/v.mp4?a=%00&%00=b", "/%00/v.mp4", "/v.%00"}) {
        watch.reports.clear();
        open(asked, asked, bytes_of(Clip));

        EXPECT_TRUE(watch.has("state 1")) << asked;
    }
}

TEST_F(GstPlayerAddressTest, what_follows_a_number_sign_is_not_asked_for)
{
    open("/v.mp4", "/v.mp4#%00", bytes_of(Clip));

    EXPECT_TRUE(watch.has("state 1"));
}

TEST_F(GstPlayerAddressTest, a_zero_byte_is_no_part_of_an_address)
{
    open("/v.mp4", std::string("/v.mp4\0?a", 9), bytes_of(Clip));

    EXPECT_EQ(server.requests(), 0);
    EXPECT_EQ(watch.reports, (Reports{"state 0", "finished 1"}));
}

/// An MP4 that begins with something which only MP4's readers skip; its pictures are found wherever it begins.
std::string video_with_a_strange_start()
{
    const std::string path = testing::TempDir() + "/fragments.mp4";
    const std::string command = "ffmpeg -loglevel error -y -i " + std::string(Clip) +
                                " -c copy -movflags frag_keyframe+empty_moov+default_base_moof " + path;
    EXPECT_EQ(std::system(command.c_str()), 0);
    const std::string video = bytes_of(path);
    std::filesystem::remove(path);
    return std::string("\0\0\0\x10qorozzzzzzzz", 16) + video;
}

TEST_F(GstPlayerAddressTest, the_names_ending_tells_what_a_video_is_whose_first_bytes_do_not)
{
    const std::string video = video_with_a_strange_start();

    open("/v.mp4?a=b.x", "/v.mp4?a=b.x", video);
    EXPECT_TRUE(watch.has("state 1")) << watch.failure;
    watch.reports.clear();
    open("/V.MP4", "/V.MP4", video);
    EXPECT_TRUE(watch.has("state 1")) << watch.failure;
    watch.reports.clear();
    open("/v", "/v", video);
    EXPECT_FALSE(watch.has("state 1"));
}

TEST_F(GstPlayerAddressTest, a_file_is_called_whatever_it_is_called)
{
    const std::string path = testing::TempDir() + "/clip.mp4?%00";
    std::filesystem::copy_file(Clip, path, std::filesystem::copy_options::overwrite_existing);
    watch.open(NSURL::fileURLWithPath(path));

    EXPECT_TRUE(watch.until("state 1"));
    std::filesystem::remove(path);
}

TEST_F(GstPlayerAddressTest, an_address_of_a_file_with_an_escaped_zero_byte_is_none)
{
    watch.open(NSURL::URLWithString("file:///tmp/v.mp4%00"));

    EXPECT_TRUE(watch.until("finished 1"));
    EXPECT_EQ(watch.failure, "it has no address that can be played");
}

} // namespace
} // namespace qoro::test
