#include "desktop/cache/VideoCache.h"
#include "tests/desktop/app/Command.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sys/resource.h>
#include <sys/stat.h>
#include <system_error>

using namespace qoro;
using qoro::test::ScratchFolder;

namespace
{
namespace fs = std::filesystem;

constexpr const char* Address = "http://ad.example/v.mp4?a=b#c";
constexpr const char* Other = "http://ad.example/other.mp4";

class VideoCacheTest : public testing::Test
{
protected:
    VideoCache make_cache(std::uint64_t most_bytes = 1000)
    {
        return VideoCache({.folder = scratch.path("videos"),
                           .most_bytes = most_bytes,
                           .warn = [this](const std::string& line) { warnings.push_back(line); }});
    }
    static void keep(VideoCache& in, const std::string& address, const std::string& content)
    {
        IncomingVideo video(in, address);
        video.write(content);
        video.keep();
    }
    static std::string content_of(const NSString& path)
    {
        std::ifstream file(path.text(), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    /// The names of the files in the cache folder except the lock file.
    std::vector<std::string> files() const
    {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(scratch.path("videos")))
            if (entry.path().filename() != "lock")
                names.push_back(entry.path().filename().string());
        return names;
    }
    std::vector<std::string> addresses()
    {
        std::vector<std::string> addresses;
        for (const CachedVideo& video : cache.videos())
            addresses.push_back(video.address);
        return addresses;
    }
    /// The path of the file with this suffix, looked up in the folder and not through the cache.
    std::string copy(const std::string& end) const
    {
        const std::vector<std::string> names = files();
        const auto name = std::ranges::find_if(names, [&](const auto& each) { return each.ends_with(end); });
        EXPECT_NE(name, names.end()) << end;
        return scratch.path("videos/" + *name);
    }
    static void overwrite(const std::string& path, std::streamoff at, const std::string& bytes)
    {
        std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(at);
        file << bytes;
    }

    ScratchFolder scratch;
    std::vector<std::string> warnings;
    VideoCache cache = make_cache();
};
} // namespace

// -------------------------------------------------------------------------------------------------------- contents

TEST_F(VideoCacheTest, AMissingFolderHoldsNothingWithoutAWarning)
{
    EXPECT_FALSE(cache.path_for(Address));
    EXPECT_TRUE(cache.videos().empty());
    EXPECT_EQ(cache.empty().videos, 0U);
    EXPECT_FALSE(fs::exists(scratch.path("videos")));
    EXPECT_TRUE(warnings.empty());
}

TEST_F(VideoCacheTest, AKeptVideoIsFoundByItsAddressAlone)
{
    keep(cache, Address, "the video");
    EXPECT_EQ(content_of(cache.path_for(Address)), "the video");
    EXPECT_FALSE(cache.path_for("http://ad.example/v.mp4"));
    EXPECT_FALSE(cache.path_for(""));
    EXPECT_FALSE(cache.path_for(nullptr));
}

TEST_F(VideoCacheTest, AnotherInstanceFindsAKeptVideo)
{
    keep(cache, Address, "the video");
    VideoCache another = make_cache();
    EXPECT_EQ(content_of(another.path_for(Address)), "the video");
}

TEST_F(VideoCacheTest, ItsFilesAreForItsUserAloneAndNamedByADigestOfTheAddress)
{
    keep(cache, "http://ad.example/../../etc/passwd", "the video");
    const std::string name = fs::path(copy(".video")).filename();
    EXPECT_EQ(name.size(), 64U + 6U);
    EXPECT_EQ(name.find_first_not_of("0123456789abcdef"), 64U);
    EXPECT_EQ(fs::status(copy(".video")).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(fs::status(scratch.path("videos")).permissions(), fs::perms::owner_all);
}

TEST_F(VideoCacheTest, AnAbandonedVideoLeavesNothing)
{
    {
        IncomingVideo video(cache, Address);
        video.write("half of the vid");
        EXPECT_EQ(files().size(), 1U);
        EXPECT_FALSE(cache.path_for(Address));
    }
    EXPECT_TRUE(files().empty());
}

TEST_F(VideoCacheTest, ANewVideoReplacesTheOldOneAtomically)
{
    keep(cache, Address, "the old video");
    IncomingVideo video(cache, Address);
    video.write("the new");
    EXPECT_EQ(content_of(cache.path_for(Address)), "the old video");
    video.write(" video");
    video.keep();
    EXPECT_EQ(content_of(cache.path_for(Address)), "the new video");
    EXPECT_EQ(files().size(), 2U);
}

TEST_F(VideoCacheTest, TwoConcurrentWritersOfOneVideoLeaveOneCopy)
{
    VideoCache another = make_cache();
    IncomingVideo one(cache, Address);
    IncomingVideo two(another, Address);
    one.write("the ");
    two.write("the ");
    one.write("video");
    two.write("video");
    one.keep();
    EXPECT_EQ(content_of(cache.path_for(Address)), "the video");
    two.keep();
    EXPECT_EQ(content_of(cache.path_for(Address)), "the video");
    EXPECT_EQ(files().size(), 2U);
}

// ----------------------------------------------------------------------------------------------------- damaged files

TEST_F(VideoCacheTest, ATruncatedCopyIsNotUsedAndRemoved)
{
    keep(cache, Address, "the video");
    fs::resize_file(copy(".video"), 5);
    EXPECT_FALSE(cache.path_for(Address));
    EXPECT_TRUE(files().empty());
}

TEST_F(VideoCacheTest, ACopyWithAChangedByteIsNotUsedHoweverSoonItChanged)
{
    keep(cache, Address, "the video");
    overwrite(copy(".video"), 4, "V");
    EXPECT_FALSE(cache.path_for(Address));
    EXPECT_TRUE(files().empty());
}

TEST_F(VideoCacheTest, ACopyWithAByteChangedAfterItsUseIsNotUsed)
{
    keep(cache, Address, "the video");
    EXPECT_TRUE(cache.path_for(Address));
    overwrite(copy(".video"), 4, "V");
    EXPECT_FALSE(cache.path_for(Address));
}

TEST_F(VideoCacheTest, ACopyRestoredFromABackupIsVerifiedAndUsed)
{
    keep(cache, Address, "the video");
    const std::string path = copy(".video");
    fs::copy_file(path, scratch.path("backup"));
    fs::remove(path);
    fs::copy_file(scratch.path("backup"), path);
    const std::string before = scratch.read("videos/" + fs::path(copy(".json")).filename().string());

    EXPECT_EQ(content_of(cache.path_for(Address)), "the video");

    const std::string after = scratch.read("videos/" + fs::path(copy(".json")).filename().string());
    EXPECT_NE(before, after) << "the file that it knows now";
    EXPECT_EQ(content_of(cache.path_for(Address)), "the video");
}

TEST_F(VideoCacheTest, AVideoWithoutARecordIsNoCopyAndRemovedWithTheNextVideo)
{
    keep(cache, Address, "the video");
    fs::remove(copy(".json"));
    EXPECT_FALSE(cache.path_for(Address));
    keep(cache, Other, "another");
    EXPECT_EQ(files().size(), 2U);
}

TEST_F(VideoCacheTest, AnInvalidRecordOrOneOfAnotherAddressIsNoCopy)
{
    keep(cache, Address, "the video");
    const std::string record = copy(".json");
    const std::string good = scratch.read("videos/" + fs::path(record).filename().string());
    for (const std::string& bad :
         {std::string(), std::string("{"), std::string("[]"), std::string(100'000, 'x'),
          std::string(R"({"address": "http://ad.example/v.mp4?a=b#c", "length": "9", "sha256": 1})"),
          std::string(good).replace(good.find("v.mp4"), 5, "w.mp4")}) {
        std::ofstream(record, std::ios::trunc) << bad;
        EXPECT_FALSE(cache.path_for(Address)) << bad.substr(0, 80);
        EXPECT_TRUE(cache.videos().empty());
    }
    keep(cache, Other, "another");
    EXPECT_EQ(files().size(), 2U) << "what is no copy has gone";
}

TEST_F(VideoCacheTest, NoLinkIsFollowed)
{
    keep(cache, Address, "the video");
    const std::string path = copy(".video");
    fs::rename(path, scratch.path("elsewhere"));
    fs::create_symlink(scratch.path("elsewhere"), path);
    EXPECT_FALSE(cache.path_for(Address));
    EXPECT_EQ(scratch.read("elsewhere"), "the video");

    keep(cache, Address, "the video");
    const std::string record = copy(".json");
    fs::rename(record, scratch.path("record"));
    fs::create_symlink(scratch.path("record"), record);
    EXPECT_FALSE(cache.path_for(Address));
    keep(cache, Address, "the new video");
    EXPECT_EQ(content_of(cache.path_for(Address)), "the new video");
    EXPECT_NE(scratch.read("record"), "") << "what the link led to is as it was";
}

TEST_F(VideoCacheTest, APipeInPlaceOfAVideoDoesNotBlock)
{
    keep(cache, Address, "the video");
    const std::string path = copy(".video");
    fs::remove(path);
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    EXPECT_FALSE(cache.path_for(Address));
}

// --------------------------------------------------------------------------------------------------------- size limit

TEST_F(VideoCacheTest, TheLeastRecentlyUsedVideosMakeRoom)
{
    VideoCache small = make_cache(30);
    keep(small, "http://ad/1", "0123456789");
    keep(small, "http://ad/2", "0123456789");
    keep(small, "http://ad/3", "0123456789");
    small.path_for("http://ad/1");
    keep(small, "http://ad/4", "01234");
    EXPECT_EQ(addresses(), (std::vector<std::string>{"http://ad/4", "http://ad/1", "http://ad/3"}));
    keep(small, "http://ad/5", "0123456789012345678901234");
    EXPECT_EQ(addresses(), (std::vector<std::string>{"http://ad/5", "http://ad/4"}));
}

TEST_F(VideoCacheTest, AVideosOwnOldCopyNeedsNoRoomBesideIt)
{
    VideoCache small = make_cache(20);
    keep(small, "http://ad/1", "0123456789");
    keep(small, "http://ad/2", "0123456789");
    keep(small, "http://ad/2", "9876543210");
    EXPECT_EQ(addresses(), (std::vector<std::string>{"http://ad/2", "http://ad/1"}));
}

TEST_F(VideoCacheTest, TheListHasAddressLengthPathAndLastUse)
{
    const auto before = std::chrono::system_clock::now().time_since_epoch();
    keep(cache, Address, "the video");
    const std::vector<CachedVideo> videos = cache.videos();
    ASSERT_EQ(videos.size(), 1U);
    EXPECT_EQ(videos[0].address, Address);
    EXPECT_EQ(videos[0].length, 9U);
    EXPECT_EQ(videos[0].path, cache.path_for(Address).text());
    EXPECT_GE(videos[0].last_use, std::chrono::nanoseconds(before).count());
}

TEST_F(VideoCacheTest, EmptyingReportsWhatItRemovedAndKeepsForeignFiles)
{
    keep(cache, Address, "the video");
    keep(cache, Other, "another");
    scratch.write("videos/of the user.txt", "mine");
    const VideoCache::Removed removed = cache.empty();
    EXPECT_EQ(removed.videos, 2U);
    EXPECT_EQ(removed.bytes, 16U);
    EXPECT_EQ(files(), std::vector<std::string>{"of the user.txt"});
}

TEST_F(VideoCacheTest, AVideoBeingWrittenSurvivesEmptyingAndIsKept)
{
    IncomingVideo video(cache, Address);
    video.write("the video");
    cache.empty();
    video.keep();
    EXPECT_EQ(content_of(cache.path_for(Address)), "the video");
}

TEST_F(VideoCacheTest, RemainsOfAnAbortedProcessAreRemovedWithTheNextVideo)
{
    keep(cache, Address, "the video");
    scratch.write("videos/9f0c2f4e-0000.part", "half of");
    keep(cache, Other, "another");
    EXPECT_EQ(files().size(), 4U);
}

// --------------------------------------------------------------------------------------------------- unusable folders

TEST_F(VideoCacheTest, APathThatIsNotAFolderWarnsOnceAndHoldsNothing)
{
    scratch.write("videos", "a file");
    EXPECT_FALSE(cache.path_for(Address));
    EXPECT_FALSE(cache.path_for(Other));
    EXPECT_EQ(warnings, std::vector<std::string>{"the video cache can't be used: " + scratch.path("videos") +
                                                 ": Not a directory"});
    EXPECT_THROW(keep(cache, Address, "the video"), std::system_error);
    EXPECT_THROW(cache.videos(), std::system_error);
    EXPECT_THROW(cache.empty(), std::system_error);
}

TEST_F(VideoCacheTest, AFullDiskKeepsTheOldCopiesAndLeavesNothingOfTheNew)
{
    keep(cache, Address, "the video");
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    rlimit small = before;
    small.rlim_cur = 50;
    {
        IncomingVideo video(cache, Other);
        setrlimit(RLIMIT_FSIZE, &small);
        EXPECT_THROW(video.write(std::string(100, 'x')), std::system_error);
    }
    {
        IncomingVideo video(cache, Other);
        video.write(std::string(40, 'x'));
        EXPECT_THROW(video.keep(), std::system_error) << "there is no room for its record";
    }
    setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ(content_of(cache.path_for(Address)), "the video");
    EXPECT_FALSE(cache.path_for(Other));
    EXPECT_EQ(files().size(), 2U);
}
