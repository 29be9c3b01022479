#include "desktop/media/VideoPictures.h"

#include "FrameColour.h"
#include "RawFrame.h"

#include <gtest/gtest.h>

namespace qoro::test
{
namespace
{

DecodedSample plain(Yuv colour)
{
    return frame_of(160, 90, [colour](int, int) { return colour; });
}

/// The same frame with pixels twice as wide as high: its picture is half as high, unless it was made from the original.
DecodedSample stretched(const DecodedSample& frame)
{
    GstCaps* caps = gst_caps_copy(gst_sample_get_caps(frame.get()));
    gst_caps_set_simple(caps, "pixel-aspect-ratio", GST_TYPE_FRACTION, 2, 1, nullptr);
    DecodedSample sample(gst_sample_new(gst_sample_get_buffer(frame.get()), caps, nullptr, nullptr), gst_sample_unref);
    gst_caps_unref(caps);
    return sample;
}

struct VideoPicturesTest : testing::Test {
    VideoPicturesTest() { pictures.set_box(80, 80); }
    std::string shown() const { return colour_of(pictures.latest()); }

    int announced = 0;
    VideoPictures pictures{[this] { ++announced; }};
    const DecodedSample red = plain(Red709);
    const DecodedSample white = plain(WhiteYuv);
};

TEST_F(VideoPicturesTest, APreparedPictureIsShownWhenItsFrameIsDue)
{
    pictures.prepare(red.get());
    EXPECT_EQ(shown(), "none");
    EXPECT_EQ(announced, 0);
    pictures.put(red.get());
    EXPECT_EQ(shown(), "red");
    EXPECT_EQ(announced, 1);
    pictures.fetched();
    pictures.prepare(white.get());
    EXPECT_EQ(shown(), "red");
    EXPECT_EQ(announced, 1);
    pictures.put(white.get());
    EXPECT_EQ(shown(), "white");
    EXPECT_EQ(announced, 2);
}

TEST_F(VideoPicturesTest, APreparedPictureIsNotMadeAgain)
{
    pictures.prepare(red.get());
    EXPECT_TRUE(pictures.put(stretched(red).get()));
    EXPECT_EQ(pictures.latest().height, 45);
}

TEST_F(VideoPicturesTest, AfterADroppedFrameNoPictureIsMadeUntilAFrameIsDue)
{
    const DecodedSample black = plain(BlackYuv);
    pictures.prepare(black.get());
    pictures.prepare(white.get());
    pictures.prepare(red.get());
    pictures.put(stretched(red).get());
    EXPECT_LT(pictures.latest().height, 25);
    pictures.prepare(white.get());
    pictures.put(stretched(white).get());
    EXPECT_EQ(pictures.latest().height, 45);
}

TEST_F(VideoPicturesTest, AFrameThatWasNotPreparedIsShown)
{
    pictures.put(red.get());
    EXPECT_EQ(shown(), "red");
}

TEST_F(VideoPicturesTest, ADroppedFrameIsNeverShown)
{
    const DecodedSample black = plain(BlackYuv);
    pictures.prepare(red.get());
    pictures.prepare(white.get());
    pictures.put(white.get());
    EXPECT_EQ(shown(), "white");
    pictures.prepare(red.get());
    pictures.put(black.get());
    EXPECT_EQ(shown(), "0 0 0");
    pictures.prepare(white.get());
    pictures.put(white.get());
    EXPECT_EQ(shown(), "white");
}

TEST_F(VideoPicturesTest, AFrameThatIsPutAgainIsNotAnnouncedAgain)
{
    pictures.prepare(red.get());
    pictures.put(red.get());
    pictures.fetched();
    pictures.prepare(red.get());
    EXPECT_FALSE(pictures.put(red.get()));
    EXPECT_EQ(announced, 1);
    EXPECT_EQ(shown(), "red");
}

TEST_F(VideoPicturesTest, APreparedPictureTakesTheSizeOfTheBoxThatItIsShownIn)
{
    pictures.prepare(red.get());
    pictures.set_box(40, 40);
    pictures.put(red.get());
    EXPECT_EQ(shown(), "red");
    EXPECT_EQ(pictures.latest().width, 40);
    pictures.prepare(white.get());
    pictures.set_scaling_mode(MPMovieScalingModeFill);
    pictures.put(white.get());
    EXPECT_EQ(shown(), "white");
    EXPECT_EQ(pictures.latest().height, 40);
}

TEST_F(VideoPicturesTest, WithoutABoxThereIsNoPicture)
{
    pictures.set_box(0, 0);
    pictures.prepare(red.get());
    pictures.put(red.get());
    EXPECT_EQ(shown(), "none");
    EXPECT_EQ(announced, 0);
    pictures.set_box(80, 80);
    EXPECT_EQ(shown(), "red");
    EXPECT_EQ(announced, 1);
}

} // namespace
} // namespace qoro::test
