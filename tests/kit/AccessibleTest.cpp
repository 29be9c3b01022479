#include "kit/Accessible.h"

#include "host/ControlNames.h"
#include "platform/QoroCountDownView.h"
#include "tests/support/RecordingPlatform.h"
#include "views/ViewNode.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>

namespace qoro
{
namespace
{

using Role = Accessible::Role;

struct Target : Object {
    void setMute() {}
    void doButtonOneAction() {}
};

/// Translates a text by converting it to capitals.
struct Loud : test::RecordingPlatform, private Translation {
    Translation& translation() override { return *this; }
    std::string translate(const char* text) override
    {
        std::string loud = text;
        std::ranges::transform(loud, loud.begin(), [](unsigned char each) { return std::toupper(each); });
        return loud;
    }
    std::string translate(const CountedText& text, unsigned long number) override
    {
        return translate(number == 1 ? text.one : text.many);
    }
};

struct AccessibleTest : testing::Test {
    AccessibleTest() { set_control_names(platform); }

    static UIButton button(const UIImage& picture = nullptr)
    {
        const UIButton made = UIButton::create();
        made.setBackgroundImage(picture);
        return made;
    }
    UIButton control(const UIImage& picture = nullptr)
    {
        const UIButton made = button(picture);
        made.addTarget(action<&Target::setMute>(target.get(), "setMute"));
        return made;
    }
    /// A compiled-in image by its name.
    static UIImage picture(std::string_view name)
    {
        UIImage image =
            UIImage::imageWithData(NSData::dataWithBytesNoCopy(reinterpret_cast<const unsigned char*>("PNG"), 3));
        image.setAccessibilityIdentifier(name);
        return image;
    }
    static Accessible of(const UIView& view) { return accessible(*view.node()); }

    test::RecordingPlatform platform;
    std::shared_ptr<Target> target = std::make_shared<Target>();
};

TEST_F(AccessibleTest, AControlIsNamedAfterItsPicture)
{
    EXPECT_EQ(of(control(picture("arrayVideoPlayButton"))).role, Role::Button);
    EXPECT_EQ(of(control(picture("arrayVideoPlayButton"))).name, "Play");
    EXPECT_EQ(of(control(picture("arrayVideoPauseButton"))).name, "Pause");
    EXPECT_EQ(of(control(picture("arrayVideoReplayButton"))).name, "Play again");
    EXPECT_EQ(of(control(picture("arrayVideoCloseButton"))).name, "Close");
    EXPECT_EQ(of(control(picture("arrayVideoBigCloseButton"))).name, "Close");
    EXPECT_EQ(of(control(picture("arrayVideoFullscreenButton"))).name, "Full screen");
    EXPECT_EQ(of(control(picture("arrayVideoScaleToPortraitButton"))).name, "Leave full screen");
    EXPECT_EQ(of(control(picture("arrayHideVideo"))).name, "Hide the video");
    EXPECT_EQ(of(control(picture("arrayShowVideo"))).name, "Show the video");
}

TEST_F(AccessibleTest, MuteIsOnWhileTheSoundIsOff)
{
    const Accessible off = of(control(picture("arrayVideoSoundOffButton")));
    const Accessible on = of(control(picture("arrayVideoSounOnButton")));
    EXPECT_EQ(off.name, "Mute");
    EXPECT_EQ(off.on, true);
    EXPECT_EQ(on.name, "Mute");
    EXPECT_EQ(on.on, false);
    EXPECT_EQ(of(control(picture("arrayVideoPlayButton"))).on, std::nullopt);
}

TEST_F(AccessibleTest, AControlsLabelComesBeforeItsTitleAndItsTitleBeforeItsPicture)
{
    const UIButton made = control(picture("arrayVideoPlayButton"));
    made.setTitle("See all lamps");
    EXPECT_EQ(of(made).name, "See all lamps");
    made.setAccessibilityLabel("Lamps");
    EXPECT_EQ(of(made).name, "Lamps");
}

TEST_F(AccessibleTest, AControlWithoutTextOrAKnownPictureIsNamedAfterItsAction)
{
    const UIButton made = UIButton::create();
    made.addTarget(action<&Target::doButtonOneAction>(target.get(), "doButtonOneAction"));
    EXPECT_EQ(of(made).name, "Learn more");
}

TEST_F(AccessibleTest, AButtonWithoutAnActionIsNotExposed)
{
    EXPECT_EQ(of(button(picture("arrayVideoPlayButton"))).role, Role::Unexposed);
}

TEST_F(AccessibleTest, AControlThatTakesNoTouchesCannotBeUsed)
{
    const UIButton made = control();
    EXPECT_TRUE(of(made).usable);
    made.setUserInteractionEnabled(false);
    EXPECT_FALSE(of(made).usable);
}

TEST_F(AccessibleTest, ACountdownReportsTheSecondsLeft)
{
    const auto countdown = QoroCountDownView::initWithFrame({0, 0, 50, 50}, 5, 3);
    EXPECT_EQ(of(countdown).role, Role::Timer);
    EXPECT_EQ(of(countdown).name, "Can be closed in 5 seconds");
    countdown.updateWithSeconds(4.1);
    EXPECT_EQ(of(countdown).name, "Can be closed in 5 seconds");
    countdown.updateWithSeconds(0.1);
    EXPECT_EQ(of(countdown).name, "Can be closed in 1 second");
}

TEST_F(AccessibleTest, ALabelExposesItsTextAndAnEmptyOneNothing)
{
    const UILabel label = UILabel::create();
    EXPECT_EQ(of(label).role, Role::Unexposed);
    label.setText("lumo");
    EXPECT_EQ(of(label).role, Role::Text);
    EXPECT_EQ(of(label).name, "lumo");
}

TEST_F(AccessibleTest, APictureWithoutALabelIsDecoration)
{
    const UIImageView view = UIImageView::create();
    view.setImage(picture("arrayTopBackGround"));
    EXPECT_EQ(of(view).role, Role::Unexposed);
    view.setAccessibilityLabel("A lamp");
    EXPECT_EQ(of(view).role, Role::Image);
}

TEST(AccessibleInAnotherLanguage, BuiltInNamesAreTranslatedAndTheAdsTextsAreNot)
{
    Loud platform;
    set_control_names(platform);
    const auto target = std::make_shared<Target>();
    const UIButton offer = UIButton::create();
    offer.addTarget(action<&Target::doButtonOneAction>(target.get(), "doButtonOneAction"));

    EXPECT_EQ(accessible(*offer.node()).name, "LEARN MORE");
    offer.setTitle("Close");
    EXPECT_EQ(accessible(*offer.node()).name, "Close");
    EXPECT_EQ(accessible(*UIWebView(std::make_shared<ViewNode>(ViewNode::Kind::WebView)).node()).name,
              "PAGE OF THE AD");
    EXPECT_EQ(accessible(*QoroCountDownView::initWithFrame({}, 5, 3).node()).name, "CAN BE CLOSED IN %D SECONDS");
}

TEST_F(AccessibleTest, BackgroundsAndWindowsAreNotExposed)
{
    EXPECT_EQ(of(UIView::create()).role, Role::Unexposed);
    EXPECT_EQ(of(UIWindow::create()).role, Role::Unexposed);
}

} // namespace
} // namespace qoro
