#include "Base/VideoPlayer/VideoImage/EmbeddedImage.h"
#include "Base/VideoPlayer/VideoImage/VideoImage.h"
#include "desktop/images/GdkImages.h"
#include "tests/desktop/support/BarePlatform.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <gdk-pixbuf/gdk-pixbuf.h>
#include <ostream>
#include <span>
#include <string>
#include <string_view>

namespace qoro::test
{

namespace
{

struct ControlImage {
    const char* name;
    std::span<const unsigned char> bytes;
    /// Returns it as Base/ does (EmbeddedImage.h).
    UIImage (*embedded)();
    std::size_t count;
    int width;
    int height;

    friend void PrintTo(const ControlImage& image, std::ostream* out) { *out << image.name; }
};

template <const auto& array>
ControlImage control_image(const char* name, std::size_t count, int width, int height)
{
    return {name, array, [] { return embeddedImage(array); }, count, width, height};
}

const ControlImage ControlImages[] = {
    control_image<arrayVideoBigCloseButton>("arrayVideoBigCloseButton", 2808, 140, 140),
    control_image<arrayVideoCloseButton>("arrayVideoCloseButton", 681, 60, 60),
    control_image<arrayVideoFullscreenButton>("arrayVideoFullscreenButton", 650, 60, 60),
    control_image<arrayVideoPauseButton>("arrayVideoPauseButton", 4614, 160, 160),
    control_image<arrayVideoPlayButton>("arrayVideoPlayButton", 6483, 160, 160),
    control_image<arrayVideoReplayButton>("arrayVideoReplayButton", 8749, 160, 160),
    control_image<arrayVideoSoundOffButton>("arrayVideoSoundOffButton", 1367, 60, 60),
    control_image<arrayVideoSounOnButton>("arrayVideoSounOnButton", 1180, 60, 60),
    control_image<arrayTopBackGround>("arrayTopBackGround", 332, 5, 60),
    control_image<arrayVideoScaleToPortraitButton>("arrayVideoScaleToPortraitButton", 680, 60, 60),
    control_image<arrayBottomBackGround>("arrayBottomBackGround", 332, 5, 60),
    control_image<arrayHideVideo>("arrayHideVideo", 2418, 160, 160),
    control_image<arrayShowVideo>("arrayShowVideo", 2510, 160, 160),
};

class ControlImageTest : public testing::TestWithParam<ControlImage>
{
};

/// The number of pixels whose alpha is within [from, to].
long pixels_of_alpha(const GdkPixbuf* picture, int from, int to)
{
    const int stride = gdk_pixbuf_get_rowstride(picture);
    long count = 0;
    for (int y = 0; y < gdk_pixbuf_get_height(picture); ++y)
        for (int x = 0; x < gdk_pixbuf_get_width(picture); ++x) {
            const int alpha = gdk_pixbuf_read_pixels(picture)[y * stride + 4 * x + 3];
            count += alpha >= from && alpha <= to ? 1 : 0;
        }
    return count;
}

} // namespace

TEST_P(ControlImageTest, IsAPngOfItsPixelsWithEightBitsOfRedGreenBlueAndAlpha)
{
    const std::span<const unsigned char> bytes = GetParam().bytes;
    ASSERT_GT(bytes.size(), 26U);
    // The IHDR chunk (PNG specification, section 11.2.2) follows the signature: width and height of four bytes each,
    // the bit depth and the colour type.
    EXPECT_EQ(std::string(bytes.begin() + 12, bytes.begin() + 16), "IHDR");
    EXPECT_EQ(bytes[24], 8) << "bits a channel";
    EXPECT_EQ(bytes[25], 6) << "red, green, blue and alpha";

    GdkPixbufLoader* loader = gdk_pixbuf_loader_new_with_type("png", nullptr);
    ASSERT_TRUE(gdk_pixbuf_loader_write(loader, bytes.data(), bytes.size(), nullptr));
    ASSERT_TRUE(gdk_pixbuf_loader_close(loader, nullptr));
    const GdkPixbuf* picture = gdk_pixbuf_loader_get_pixbuf(loader);
    ASSERT_TRUE(picture);
    EXPECT_EQ(gdk_pixbuf_get_width(picture), GetParam().width);
    EXPECT_EQ(gdk_pixbuf_get_height(picture), GetParam().height);
    EXPECT_EQ(gdk_pixbuf_get_bits_per_sample(picture), 8);
    ASSERT_TRUE(gdk_pixbuf_get_has_alpha(picture));
    EXPECT_GT(pixels_of_alpha(picture, 128, 255), 0) << "something is to be seen";
    EXPECT_GT(pixels_of_alpha(picture, 0, 127), 0) << "and the video beneath it";
    g_object_unref(loader);
}

TEST_P(ControlImageTest, IsPassedWithItsExactBytesAndEndsWithTheLastOne)
{
    BarePlatform platform;
    GdkImages decoder;
    platform.image_decoder = &decoder;
    const PlatformScope scope(platform);

    const UIImage image = GetParam().embedded();

    ASSERT_TRUE(image);
    EXPECT_EQ(image.data().bytes(), GetParam().bytes.data());
    EXPECT_EQ(image.data().length(), GetParam().count);
    EXPECT_TRUE(image.data().view().ends_with(std::string_view("\0\0\0\0IEND\xae\x42\x60\x82", 12)));
}

INSTANTIATE_TEST_SUITE_P(All, ControlImageTest, testing::ValuesIn(ControlImages),
                         [](const auto& image) { return std::string(image.param.name); });

} // namespace qoro::test
