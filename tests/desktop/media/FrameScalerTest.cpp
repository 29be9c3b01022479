#include "desktop/media/FrameScaler.h"
#include "FrameColour.h"
#include "RawFrame.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <string>

namespace qoro::test
{
namespace
{

/// The components of a picture's pixel: 0 blue, 1 green, 2 red.
int component_of(const VideoFrame& picture, int x, int y, int which)
{
    const auto* pixels = static_cast<const guint8*>(g_bytes_get_data(picture.pixels.get(), nullptr));
    return pixels[static_cast<std::size_t>(y) * picture.stride + static_cast<std::size_t>(x) * 4 +
                  static_cast<std::size_t>(which)];
}

struct ScaledFrame : testing::Test {
    VideoFrame scaled(const DecodedSample& frame, int width, int height,
                      MPMovieScalingMode mode = MPMovieScalingModeAspectFit)
    {
        return scaler.scale(frame.get(), width, height, mode);
    }
    FrameScaler scaler;
};

TEST_F(ScaledFrame, PlainColoursKeepTheirValue)
{
    struct Case {
        Yuv yuv;
        std::string more;
        int red, green, blue;
    };
    for (const auto& [yuv, more, red, green, blue] :
         {Case{BlackYuv, ",colorimetry=bt709", 0, 0, 0}, Case{WhiteYuv, ",colorimetry=bt709", 255, 255, 255},
          Case{Red709, ",colorimetry=bt709", 255, 0, 0}, Case{Red601, ",colorimetry=bt601", 255, 0, 0},
          // The full range: ITU-T H.273, 8.3.
          Case{{255, 128, 128}, ",colorimetry=1:4:5:4", 255, 255, 255},
          Case{{54, 99, 255}, ",colorimetry=1:3:5:1", 254, 0, 0}}) {
        const VideoFrame picture = scaled(frame_of(
                                              1280, 720, [&yuv = yuv](int, int) { return yuv; }, more),
                                          375, 375);
        ASSERT_EQ(picture.width, 375);
        ASSERT_EQ(picture.height, 211);
        for (const auto& [x, y] : {std::pair{0, 0}, std::pair{374, 0}, std::pair{0, 210}, std::pair{374, 210}}) {
            EXPECT_NEAR(component_of(picture, x, y, 2), red, 3) << more;
            EXPECT_NEAR(component_of(picture, x, y, 1), green, 3) << more;
            EXPECT_NEAR(component_of(picture, x, y, 0), blue, 3) << more;
            EXPECT_EQ(component_of(picture, x, y, 3), 255) << more;
        }
    }
}

TEST_F(ScaledFrame, ARampStaysInItsPlace)
{
    const auto ramp = [](int x, int y) { return Yuv{16 + (x + y) * 219 / 1080, 128, 128}; };
    for (const auto& [width, height] : {std::pair{375, 211}, std::pair{666, 375}, std::pair{160, 90},
                                        std::pair{960, 540}, std::pair{720, 360}, std::pair{40, 1}}) {
        const VideoFrame picture = scaled(frame_of(720, 360, ramp), width, height, MPMovieScalingModeFill);
        ASSERT_EQ(picture.width, width);
        ASSERT_EQ(picture.height, height);
        for (int y = 0; y < height; y += 7)
            for (int x = 0; x < width; x += 7) {
                // Centres of pixels; the edge repeats the last sample.
                const double from_x = std::clamp((x + 0.5) * 720 / width - 0.5, 0.0, 719.0);
                const double from_y = std::clamp((y + 0.5) * 360 / height - 0.5, 0.0, 359.0);
                EXPECT_NEAR(component_of(picture, x, y, 1), (from_x + from_y) / 1080 * 255, 2.5)
                    << x << ' ' << y << " of " << width << 'x' << height;
            }
    }
}

TEST_F(ScaledFrame, AnUnscaledFrameKeepsEveryPixel)
{
    const auto checks = [](int x, int y) { return (x * 7 + y * 3) % 5 < 2 ? WhiteYuv : BlackYuv; };
    const VideoFrame picture = scaled(frame_of(100, 50, checks), 100, 50);
    for (int y = 0; y < 50; ++y)
        for (int x = 0; x < 100; ++x)
            EXPECT_NEAR(component_of(picture, x, y, 1), checks(x, y).luma == 235 ? 255 : 0, 1) << x << ' ' << y;
}

TEST_F(ScaledFrame, FineDetailsAverage)
{
    const auto stripes = [](int x, int) { return x % 2 ? WhiteYuv : BlackYuv; };
    const VideoFrame picture = scaled(frame_of(1280, 720, stripes), 320, 180);
    for (int x = 0; x < 320; ++x)
        EXPECT_NEAR(component_of(picture, x, 90, 1), 127.5, 2);
}

TEST_F(ScaledFrame, ColoursLieOnTheirLuma)
{
    // Red on the left half, as dark as black would be: only chroma shows where it begins.
    for (const char* site : {",colorimetry=bt709,chroma-site=mpeg2", ",colorimetry=bt709,chroma-site=jpeg"}) {
        const auto halves = [](int x, int) { return x < 64 ? Yuv{63, 102, 240} : Yuv{63, 128, 128}; };
        const VideoFrame picture = scaled(frame_of(128, 64, halves, site), 512, 256);
        // Chroma is sampled at every second pixel: halfway between the last red sample and the next.
        const double last = std::string(site).find("mpeg2") != std::string::npos ? 62.5 : 63.0;
        const double edge = (last + 1) * 4;
        int passed = 0;
        while (component_of(picture, passed, 128, 2) > (255 + 55) / 2)
            ++passed;
        EXPECT_NEAR(passed, edge, 1) << site;
    }
}

TEST_F(ScaledFrame, AspectFillShowsTheMiddle)
{
    const auto thirds = [](int x, int) { return x < 200 ? Red709 : x < 400 ? WhiteYuv : Red709; };
    const VideoFrame picture = scaled(frame_of(600, 200, thirds), 90, 100, MPMovieScalingModeAspectFill);
    ASSERT_EQ(picture.width, 90);
    for (const int x : {3, 45, 86})
        EXPECT_NEAR(component_of(picture, x, 50, 1), 255, 3) << x;
}

TEST_F(ScaledFrame, OddAndTinySizesAreScaled)
{
    for (const auto& [width, height] :
         {std::pair{1, 1}, std::pair{2, 2}, std::pair{3, 5}, std::pair{5, 3}, std::pair{17, 4}, std::pair{641, 361}})
        for (const auto& [to_width, to_height] :
             {std::pair{1, 1}, std::pair{3, 2}, std::pair{64, 64}, std::pair{9, 200}}) {
            const VideoFrame picture = scaled(frame_of(width, height, [](int, int) { return WhiteYuv; }), to_width,
                                              to_height, MPMovieScalingModeFill);
            ASSERT_EQ(picture.width, to_width);
            ASSERT_EQ(picture.height, to_height);
            EXPECT_EQ(colour_of(picture), "white") << width << 'x' << height << " to " << to_width << 'x' << to_height;
        }
}

TEST_F(ScaledFrame, OtherFormatsAreScaledToo)
{
    for (const char* format : {"NV12", "YV12"})
        EXPECT_EQ(colour_of(scaled(frame_of(
                                       64, 36, [](int, int) { return Red709; }, ",colorimetry=bt709", format),
                                   32, 18)),
                  "red")
            << format;
    EXPECT_EQ(
        colour_of(scaled(frame_of(
                             64, 36, [](int, int) { return Red709; }, ",colorimetry=bt709,interlace-mode=interleaved"),
                         32, 18)),
        "red");
}

} // namespace
} // namespace qoro::test
