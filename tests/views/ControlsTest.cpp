#include "tests/support/RecordingPlatform.h"
#include "tests/support/Views.h"
#include "views/ViewNode.h"

#include <gtest/gtest.h>

using namespace qoro;
using qoro::test::RecordingPlatform;

namespace
{

using Lines = std::vector<std::string>;

struct Hand : Object {
    void first() { done.push_back("first"); }
    void second() { done.push_back("second"); }
    void third(const UIButton& sender)
    {
        done.push_back("third");
        sender.setTitle("touched");
    }
    void change_targets()
    {
        done.push_back("change");
        button.removeAllTargets();
        button.addTarget(action<&Hand::second>(this, "second"));
        button.addTarget(action<&Hand::second>(this, "second again"));
    }

    UIButton button = UIButton::create();
    Lines done;
};

struct Controls : testing::Test {
    RecordingPlatform platform;
    std::shared_ptr<Hand> hand = std::make_shared<Hand>();
    UIButton& button = hand->button;
};

const unsigned char sound_on[] = {'P', 'N', 'G', '1'};
const unsigned char sound_off[] = {'P', 'N', 'G', '2'};

UIImage image_of(const unsigned char (&bytes)[4])
{
    return UIImage::imageWithData(NSData::dataWithBytesNoCopy(bytes, 4));
}

} // namespace

TEST_F(Controls, RunTheirTargetsInTheOrderOfAddition)
{
    button.addTarget(action<&Hand::second>(hand.get(), "second"));
    button.addTarget(action<&Hand::first>(hand.get(), "first"));

    button.sendTouchUpInside();

    EXPECT_EQ(hand->done, (Lines{"second", "first"}));
}

TEST_F(Controls, KeepAnEqualTargetAndActionOnce)
{
    button.addTarget(action<&Hand::first>(hand.get(), "first"));
    button.addTarget(action<&Hand::first>(hand.get(), "first"));

    button.sendTouchUpInside();

    EXPECT_EQ(hand->done, Lines{"first"});
    EXPECT_EQ(button.targets().size(), 1U);
}

TEST_F(Controls, RunTheTargetsThatTheyHadWhenTheyWereTouched)
{
    button.addTarget(action<&Hand::change_targets>(hand.get(), "change"));
    button.addTarget(action<&Hand::first>(hand.get(), "first"));

    button.sendTouchUpInside();
    EXPECT_EQ(hand->done, (Lines{"change", "first"}));
    button.sendTouchUpInside();

    EXPECT_EQ(hand->done, (Lines{"change", "first", "second", "second"}));
}

TEST_F(Controls, PassTheTouchedControlToTheirTarget)
{
    button.addTarget(action<&Hand::third>(hand.get(), "third:"));

    button.sendTouchUpInside();

    EXPECT_EQ(button.title(), "touched");
}

TEST_F(Controls, AreTouchedEvenWhenHidden)
{
    button.setHidden(true);
    button.addTarget(action<&Hand::first>(hand.get(), "first"));

    button.sendTouchUpInside();

    EXPECT_EQ(hand->done, Lines{"first"});
}

TEST_F(Controls, DoNotRetainTheirTargets)
{
    const UIButton kept = button;
    const std::weak_ptr<Hand> target = hand;
    kept.addTarget(action<&Hand::first>(hand.get(), "first"));

    hand.reset();
    kept.sendTouchUpInside();

    EXPECT_TRUE(target.expired());
}

TEST_F(Controls, DrawTheirTitleWithALabelInNoParent)
{
    EXPECT_FALSE(button.title());
    button.setTitle("Buy now!");
    button.titleLabel().setFont({"Arial", 12});

    EXPECT_EQ(button.title(), "Buy now!");
    EXPECT_EQ(button.titleLabel().text(), "Buy now!");
    EXPECT_EQ(button.titleLabel().font(), (UIFont{"Arial", 12}));
    EXPECT_FALSE(button.titleLabel().superview());
}

TEST_F(Controls, AreUnchangedByTheSamePictureDecodedAgain)
{
    button.setBackgroundImage(image_of(sound_on));
    const std::uint64_t revision = button.node()->revision;

    button.setBackgroundImage(image_of(sound_on));
    EXPECT_EQ(button.node()->revision, revision);
    button.setBackgroundImage(image_of(sound_off));

    EXPECT_EQ(button.node()->revision, revision + 1);
    EXPECT_EQ(button.backgroundImage().data().bytes(), sound_off);
}

TEST_F(Controls, LoseTheirPictureToANullOne)
{
    button.setBackgroundImage(image_of(sound_on));

    button.setBackgroundImage(nullptr);

    EXPECT_FALSE(button.backgroundImage());
}

TEST_F(Controls, OfANullHandleDoNothing)
{
    const UIButton none;

    none.addTarget(action<&Hand::first>(hand.get(), "first"));
    none.setTitle("title");
    none.setBackgroundImage(image_of(sound_on));
    none.sendTouchUpInside();
    none.removeAllTargets();

    EXPECT_FALSE(none.title());
    EXPECT_FALSE(none.titleLabel());
    EXPECT_FALSE(none.backgroundImage());
    EXPECT_TRUE(none.targets().empty());
    EXPECT_EQ(hand->done, Lines{});
}

TEST_F(Controls, OfTextStoreTheirProperties)
{
    const UILabel label = UILabel::create();
    EXPECT_FALSE(label.text());

    label.setText("00:12");
    label.setTextColor(UIColor::whiteColor());
    label.setTextAlignment(NSTextAlignmentRight);
    label.setLineBreakMode(NSLineBreakByCharWrapping);

    EXPECT_EQ(label.text(), "00:12");
    EXPECT_EQ(label.textColor(), UIColor::whiteColor());
    EXPECT_EQ(label.textAlignment(), 2);
    EXPECT_EQ(label.lineBreakMode(), 1);
}

TEST_F(Controls, OfTextAreUnchangedByAnEqualText)
{
    const UILabel label = UILabel::create();
    label.setText("00:12");
    const std::uint64_t revision = label.node()->revision;

    label.setText("00:12");
    EXPECT_EQ(label.node()->revision, revision);
    label.setText(nullptr);

    EXPECT_EQ(label.node()->revision, revision + 1);
}

TEST_F(Controls, OfImagesShowTheirImage)
{
    const UIImageView view = UIImageView::create();

    view.setImage(image_of(sound_on));

    EXPECT_EQ(view.image().data().bytes(), sound_on);
}

TEST(TheVolumeView, ContainsTheOutputVolumesSlider)
{
    RecordingPlatform platform;
    const MPVolumeView view = MPVolumeView::create({20, 100, 335, 50});

    view.firstSlider().setValue(0.25F);

    EXPECT_EQ(view.frame(), (CGRect{20, 100, 335, 50}));
    EXPECT_EQ(platform.output_volume, 0.25F);
    EXPECT_EQ(view.firstSlider().value(), 0.25F);
}

TEST(TheVolumeView, ReportsEachChangeOfItsSlider)
{
    RecordingPlatform platform;
    const UISlider slider = MPVolumeView::create({}).firstSlider();

    slider.setValue(0.6F);
    slider.setValue(0.6F);

    EXPECT_EQ(platform.transcript, (Lines{"volume value=0.6", "volume value=0.6"}));
}

TEST(TheVolumeView, FollowsTheVolumeThatTheViewerSets)
{
    RecordingPlatform platform;
    const UISlider slider = MPVolumeView::create({}).firstSlider();

    platform.output_volume = 0;

    EXPECT_EQ(slider.value(), 0);
}

TEST(TheVolumeView, HasNoSliderOnADeviceWithoutOne)
{
    RecordingPlatform platform;
    platform.slider = false;

    const UISlider slider = MPVolumeView::create({}).firstSlider();
    slider.setValue(0.1F);

    EXPECT_FALSE(slider);
    EXPECT_EQ(slider.value(), 0);
    EXPECT_EQ(platform.output_volume, 0.6F);
    EXPECT_EQ(platform.transcript, Lines{});
}
