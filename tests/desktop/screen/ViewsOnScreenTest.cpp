#include "tests/desktop/screen/ScreenTest.h"

namespace qoro::test
{
namespace
{

/// An image whose left half is red and right half blue.
UIImage two_colours(int width, int height)
{
    GdkPixbuf* pixels = gdk_pixbuf_new(GDK_COLORSPACE_RGB, TRUE, 8, width, height);
    gdk_pixbuf_fill(pixels, 0xff0000ff);
    GdkPixbuf* right = gdk_pixbuf_new_subpixbuf(pixels, width / 2, 0, width - width / 2, height);
    gdk_pixbuf_fill(right, 0x0000ffff);
    char* bytes = nullptr;
    gsize size = 0;
    gdk_pixbuf_save_to_buffer(pixels, &bytes, &size, "png", nullptr, nullptr);
    const UIImage image = UIImage::imageWithData(NSData(std::string(bytes, size)));
    g_free(bytes);
    g_object_unref(right);
    g_object_unref(pixels);
    return image;
}

TEST_F(ScreenTest, AButtonsImageIsStretchedOverIt)
{
    UIButton button = UIButton::create();
    button.setFrame({50, 50, 100, 40});
    button.setBackgroundImage(two_colours(20, 20));
    window.addSubview(button);
    open();
    const Shown picture = shown();
    EXPECT_EQ(picture.at(51, 51), Red);
    EXPECT_EQ(picture.at(148, 88), Blue);
    EXPECT_EQ(picture.at(49, 60), Black);
    EXPECT_EQ(picture.at(150, 60), Black);
}

TEST_F(ScreenTest, ANewImageReplacesTheOldOne)
{
    UIButton button = UIButton::create();
    button.setFrame({0, 0, 40, 40});
    button.setBackgroundImage(two_colours(40, 40));
    window.addSubview(button);
    open();
    EXPECT_EQ(shown().at(5, 5), Red);
    button.setBackgroundImage(nullptr);
    EXPECT_EQ(shown().at(5, 5), Black);
}

TEST_F(ScreenTest, AnImageViewThatKeepsTheAspectRatioCentresTheImage)
{
    UIImageView view = UIImageView::create();
    view.setFrame({0, 0, 100, 200});
    view.setContentMode(UIViewContentModeScaleAspectFit);
    view.setImage(two_colours(50, 50));
    window.addSubview(view);
    open();
    const Shown picture = shown();
    EXPECT_EQ(picture.at(2, 48), Black);
    EXPECT_EQ(picture.at(2, 52), Red);
    EXPECT_EQ(picture.at(98, 147), Blue);
    EXPECT_EQ(picture.at(98, 152), Black);
}

TEST_F(ScreenTest, ALabelDrawsItsTextInItsColourWithinItsBox)
{
    UILabel label = UILabel::create();
    label.setFrame({20, 40, 80, 30});
    label.setText("\u2588\u2588"); // full blocks
    label.setTextColor(color(Green));
    window.addSubview(label);
    open();
    const CGRect ink = shown().box_of(Green);
    EXPECT_GE(ink.x, 20);
    EXPECT_GE(ink.y, 40);
    EXPECT_GT(ink.width, 10);
    EXPECT_LE(ink.y + ink.height, 70);
}

TEST_F(ScreenTest, ALabelAlignedToTheRightEndsAtItsRightEdge)
{
    UILabel label = UILabel::create();
    label.setFrame({0, 0, 200, 30});
    label.setText("\u2588");
    label.setTextAlignment(NSTextAlignmentRight);
    label.setTextColor(color(Green));
    window.addSubview(label);
    open();
    const CGRect ink = shown().box_of(Green);
    EXPECT_GT(ink.x, 150);
    EXPECT_NEAR(ink.x + ink.width, 200, 3);
}

TEST_F(ScreenTest, ALabelOfManyLinesBreaksBetweenLetters)
{
    UILabel label = UILabel::create();
    label.setFrame({0, 0, 40, 200});
    label.setText("\u2588\u2588\u2588\u2588\u2588\u2588");
    label.setLineBreakMode(NSLineBreakByCharWrapping);
    label.setNumberOfLines(0);
    label.setTextColor(color(Green));
    window.addSubview(label);
    open();
    const CGRect ink = shown().box_of(Green);
    EXPECT_LE(ink.width, 40);
    EXPECT_GT(ink.height, 30);
}

TEST_F(ScreenTest, AButtonsTitleIsCentred)
{
    UIButton button = UIButton::create();
    button.setFrame({100, 100, 100, 60});
    button.setTitle("\u2588");
    button.titleLabel().setTextColor(color(Green));
    button.titleLabel().setTextAlignment(NSTextAlignmentRight);
    window.addSubview(button);
    open();
    const CGRect ink = shown().box_of(Green);
    EXPECT_NEAR(ink.x + ink.width / 2, 150, 2);
}

TEST_F(ScreenTest, ACountdownDrawsTheRemainingPartOfItsRing)
{
    const auto countdown = std::make_shared<ViewNode>(ViewNode::Kind::CountDown);
    countdown->seconds_full = 4;
    countdown->seconds = 1; // a quarter is left: the upper left one
    countdown->ring_width = 6;
    const UIView view(countdown);
    view.setFrame({100, 100, 100, 100});
    window.addSubview(view);
    open();
    const Shown picture = shown();
    EXPECT_EQ(picture.at(150 - 33, 150 - 32), White);
    EXPECT_NE(picture.at(150 + 33, 150 - 32), White);
    EXPECT_NE(picture.at(150 - 33, 150 + 32), White);
    EXPECT_EQ(picture.at(100, 100), Black); // beside the disc
}

TEST_F(ScreenTest, ACountdownOverWhiteHasAWhiteRingBetweenDarkRimAndDarkDisc)
{
    window.setBackgroundColor(color(White));
    const auto countdown = std::make_shared<ViewNode>(ViewNode::Kind::CountDown);
    countdown->seconds_full = 5;
    countdown->seconds = 5;
    countdown->ring_width = 3;
    const UIView view(countdown);
    view.setFrame({100, 100, 50, 50});
    window.addSubview(view);
    open();
    const Shown picture = shown();
    EXPECT_EQ(picture.at(99, 125), White); // beside it
    EXPECT_LT(picture.at(100, 125) & 0xff, 0x60U);
    EXPECT_EQ(picture.at(102, 125), White);
    EXPECT_EQ(picture.at(103, 125), White);
    EXPECT_LT(picture.at(106, 125) & 0xff, 0x60U);
    EXPECT_LT(picture.at(110, 125) & 0xff, 0x60U);
}

} // namespace
} // namespace qoro::test
