#include "vast/MediaChoice.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace qoro::test
{

namespace
{

using vast::MediaFile;

MediaFile file(int width, int bitrate)
{
    return {.address = "http://cdn.example/v.mp4",
            .type = "video/mp4",
            .delivery = "progressive",
            .width = width,
            .height = width * 9 / 16,
            .bitrate = bitrate};
}

std::optional<std::size_t> chosen(const std::vector<MediaFile>& files, double band)
{
    return vast::choose_media(files, vast::CommonMediaSupport(), {.width = band}).chosen;
}

/// Records what it is asked.
class AskedSupport final : public vast::MediaSupport
{
public:
    bool can_play(const std::string& type, const std::string& codec) const override
    {
        asked.push_back(type + "|" + codec);
        return false;
    }
    mutable std::vector<std::string> asked;
};

} // namespace

TEST(VastMediaChoice, TheNarrowestFileThatFillsTheBandIsChosen)
{
    const std::vector<MediaFile> files{file(320, 300), file(1920, 4000), file(640, 800), file(1280, 2000)};
    EXPECT_EQ(chosen(files, 320), 0U);
    EXPECT_EQ(chosen(files, 321), 2U);
    EXPECT_EQ(chosen(files, 640), 2U);
    EXPECT_EQ(chosen(files, 1000), 3U);
    EXPECT_EQ(chosen(files, 4000), 1U);
}

TEST(VastMediaChoice, OfOneWidthTheHighestBitrateUpToFiveMegabitsIsChosen)
{
    EXPECT_EQ(chosen({file(640, 800), file(640, 5000), file(640, 5001)}, 375), 1U);
    EXPECT_EQ(chosen({file(640, 9000), file(640, 6000), file(640, 7000)}, 375), 1U);
    EXPECT_EQ(chosen({file(640, 800), file(640, 800)}, 375), 0U);
    MediaFile range = file(640, 0);
    range.bitrate.reset();
    range.max_bitrate = 900;
    EXPECT_EQ(chosen({file(640, 800), range}, 375), 1U);
}

TEST(VastMediaChoice, AFileOfUnknownSizeComesLast)
{
    MediaFile unknown = file(1, 800);
    unknown.width.reset();
    EXPECT_EQ(chosen({unknown, file(10, 1)}, 375), 1U);
    const auto alone = vast::choose_media({unknown}, vast::CommonMediaSupport(), {});
    EXPECT_EQ(alone.chosen, 0U);
    EXPECT_EQ(alone.why, "no file with a size can be played");
}

TEST(VastMediaChoice, NoFileIsChosenOfNone)
{
    const auto choice = vast::choose_media({}, vast::CommonMediaSupport(), {});
    EXPECT_EQ(choice.chosen, std::nullopt);
    EXPECT_TRUE(choice.reasons.empty());
}

TEST(VastMediaChoice, ThePlatformIsAskedForThePlainTypeInLowerCase)
{
    MediaFile odd = file(640, 800);
    odd.type = " Video/MP4 ; codecs=\"x\"";
    odd.codec = "AVC1.4D401E";
    const AskedSupport support;
    const auto choice = vast::choose_media({odd}, support, {});
    EXPECT_EQ(choice.chosen, std::nullopt);
    ASSERT_FALSE(support.asked.empty());
    EXPECT_EQ(support.asked.front(), "video/mp4|AVC1.4D401E");
}

TEST(VastMediaChoice, InteractiveFilesAreNeverChosen)
{
    for (const char* framework : {"VPAID", "SIMID", "vpaid"}) {
        MediaFile interactive = file(640, 800);
        interactive.api_framework = framework;
        const auto choice = vast::choose_media({interactive}, vast::CommonMediaSupport(), {});
        EXPECT_EQ(choice.chosen, std::nullopt);
        EXPECT_NE(choice.reasons.at(0).find(framework), std::string::npos);
    }
}

TEST(VastMediaChoice, TheFixedListHasTwoContainersAndThreeCodecs)
{
    const vast::CommonMediaSupport support;
    for (const char* codec : {"", "H.264", "h264", "AVC", "avc1.42E01E", "avc1.42E01E, mp4a.40.2",
                              "mp4a.40.2,avc1.4D401E", "vp8", "VP9", "vp09.00.10.08", "vp9, opus"}) {
        EXPECT_TRUE(support.can_play("video/mp4", codec)) << codec;
        EXPECT_TRUE(support.can_play("video/webm", codec)) << codec;
    }
    for (const char* codec : {"hvc1", "hev1.1.6.L93.B0", "av01.0.04M.08", "theora", "0", "mp4a.40.2, hvc1", ","})
        EXPECT_FALSE(support.can_play("video/mp4", codec)) << codec;
    for (const char* type : {"video/ogg", "video/x-flv", "video/3gpp", "application/x-mpegURL", "application/dash+xml",
                             "application/javascript", "audio/mp4", "image/gif", ""})
        EXPECT_FALSE(support.can_play(type, "")) << type;
}

} // namespace qoro::test
