#include "platform/UIKit.h"
#include "platform/MediaPlayer.h"
#include "tests/support/RecordingPlatform.h"
#include "tests/support/Views.h"

#include <gtest/gtest.h>

using namespace qoro;
using qoro::test::RecordingPlatform;

namespace
{

using Lines = std::vector<std::string>;

struct System : testing::Test {
    RecordingPlatform platform;
};

std::string hex(const std::string& bytes)
{
    std::string text;
    for (const char byte : bytes) {
        text += "0123456789abcdef"[static_cast<unsigned char>(byte) / 16];
        text += "0123456789abcdef"[static_cast<unsigned char>(byte) % 16];
    }
    return text;
}

} // namespace

TEST_F(System, OpensAddressesAndReportsIt)
{
    UIApplication::sharedApplication().openURL(NSURL::URLWithString("tel:123"));
    UIApplication::sharedApplication().openURL(nullptr);

    EXPECT_EQ(platform.opened, Lines{"tel:123"});
    EXPECT_EQ(platform.transcript, Lines{"openURL url=tel:123"});
}

TEST_F(System, CannotOpenAnInvalidAddress)
{
    EXPECT_TRUE(UIApplication::sharedApplication().canOpenURL(NSURL::URLWithString("http://ad/")));
    EXPECT_FALSE(UIApplication::sharedApplication().canOpenURL(NSURL::URLWithString("tel:1")));
    EXPECT_FALSE(UIApplication::sharedApplication().canOpenURL(nullptr));
}

TEST_F(System, ForcesTheDevicesOrientationAndReportsIt)
{
    UIDevice::forceOrientation(UIDeviceOrientationLandscapeLeft);

    EXPECT_EQ(UIDevice::orientation(), 3);
    EXPECT_EQ(platform.transcript, Lines{"device orientation=3"});
}

TEST_F(System, ReportsTheStatusBar)
{
    platform.bar_orientation = 4;
    platform.bar_hidden = true;

    EXPECT_EQ(UIApplication::sharedApplication().statusBarOrientation(), 4);
    EXPECT_TRUE(UIApplication::sharedApplication().isStatusBarHidden());
}

TEST_F(System, MayHaveNoMainScreen)
{
    EXPECT_EQ(UIScreen::mainScreenBounds(), (CGSize{375, 812}));
    platform.device_facts.screen.reset();

    EXPECT_FALSE(UIScreen::mainScreenBounds());
}

TEST_F(System, MayHaveNoMessageComposer)
{
    EXPECT_TRUE(MFMessageComposeViewController::available());
    EXPECT_TRUE(MFMessageComposeViewController::canSendText());
    platform.device_facts.can_send_text = false;
    EXPECT_TRUE(MFMessageComposeViewController::available());
    EXPECT_FALSE(MFMessageComposeViewController::canSendText());
    platform.device_facts.can_send_text.reset();

    EXPECT_FALSE(MFMessageComposeViewController::available());
    EXPECT_FALSE(MFMessageComposeViewController::canSendText());
}

TEST_F(System, NamesTheHostApplicationWhenItHasAName)
{
    EXPECT_EQ(bundleDisplayName(), "Host App");
    platform.device_facts.display_name = nullptr;

    EXPECT_FALSE(bundleDisplayName());
}

TEST_F(System, ReportsConsoleOutput)
{
    NSLog("playback finished");

    EXPECT_EQ(platform.transcript, Lines{"console message=playback finished"});
}

TEST_F(System, ReadsTheOutputVolume)
{
    platform.output_volume = 0.25F;

    EXPECT_EQ(AVAudioSession::outputVolume(), 0.25F);
}

TEST_F(System, CutsATextToItsBox)
{
    EXPECT_EQ(sizeWithFont("Buy now!", {"Arial", 17}, {296, 9999}), (CGSize{56, 16}));
    EXPECT_EQ(sizeWithFont("Buy now!", {"Arial", 17}, {20, 10}), (CGSize{20, 10}));
    EXPECT_EQ(sizeWithFont(nullptr, {"Arial", 17}, {296, 9999}), (CGSize{0, 0}));
}

TEST_F(System, DecodesAnImageAtEachCall)
{
    const NSData bytes(std::string("PNG picture"));

    const UIImage once = UIImage::imageWithData(bytes);
    const UIImage again = UIImage::imageWithData(bytes);

    EXPECT_TRUE(once);
    EXPECT_NE(once.decoded(), again.decoded());
    EXPECT_EQ(platform.decodings, 2);
}

TEST_F(System, MakesNoImageOfUndecodableData)
{
    EXPECT_FALSE(UIImage::imageWithData(NSData(std::string("text"))));
    EXPECT_FALSE(UIImage::imageWithData(nullptr));
    EXPECT_EQ(platform.decodings, 1);
}

TEST(AColor, KeepsItsPartsUnderAnotherAlpha)
{
    const UIColor red = UIColor::colorWithRed(1, 0, 0, 1);

    EXPECT_EQ(red.colorWithAlphaComponent(0.5), UIColor::colorWithRed(1, 0, 0, 0.5));
    EXPECT_FALSE(UIColor().colorWithAlphaComponent(0.5));
}

TEST(Md5, MatchesItsPublishedExamples)
{
    EXPECT_EQ(hex(CC_MD5("")), "d41d8cd98f00b204e9800998ecf8427e");
    EXPECT_EQ(hex(CC_MD5("message digest")), "f96b697d7cb7938d525a2f31aaf161d0");
}

TEST(AnOrientation, IsLandscapeByItsNumberAlone)
{
    EXPECT_TRUE(isLandscape(3));
    EXPECT_TRUE(isLandscape(4));
    EXPECT_FALSE(isLandscape(2));
    EXPECT_FALSE(isLandscape(5));
    EXPECT_FALSE(isLandscape(0));
}
