#include "tests/support/AdSession.h"
#include "tests/support/Views.h"
#include "views/ViewNode.h"

#include <gmock/gmock.h>

namespace qoro
{
namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* PngSignature = "\x89PNG\r\n\x1a\n";

World without_texting()
{
    World world = AdSession::manual_world();
    world.device.facts.can_send_text = false;
    return world;
}

World without_message_composer()
{
    World world = AdSession::manual_world();
    world.device.facts.can_send_text = std::nullopt;
    return world;
}

NSDictionary link_button(const char* title)
{
    return {{"btn_text", title}, {"data", NSDictionary{{"u", "http://l/"}}}};
}

NSDictionary sms_button(const char* title)
{
    return {{"btn_text", title}, {"action", "send_sms"}};
}

NSDictionary call_button(const char* title, const char* number)
{
    return {{"btn_text", title}, {"action", "place_call"}, {"data", NSDictionary{{"tel", number}}}};
}

TEST(ActionButtons, AButtonThatTextsIsDroppedWhereTextsCannotBeSent)
{
    AdSession session(without_texting());
    session.ad().arrayButtonsInfo = {sms_button("Text"), link_button("Visit")};

    session.open();

    EXPECT_EQ(session->buttonPosMode, ButtonPositionMode_OneButton);
    EXPECT_EQ(session->btnActionOne.title(), "Visit");
    EXPECT_FALSE(session->btnActionTwo.superview());
}

TEST(ActionButtons, AButtonThatTextsIsDroppedWithoutAComposer)
{
    AdSession session(without_message_composer());
    session.ad().arrayButtonsInfo = {sms_button("Text")};

    session.open();

    EXPECT_EQ(session->buttonPosMode, 0);
}

TEST(ActionButtons, AButtonThatTextsStaysWhereTextsCanBeSent)
{
    AdSession session;
    session.ad().arrayButtonsInfo = {sms_button("Text")};

    session.open();

    EXPECT_EQ(session->buttonPosMode, ButtonPositionMode_OneButton);
}

TEST(ActionButtons, ACallToABareNumberIsDropped)
{
    AdSession session;
    session.ad().arrayButtonsInfo = {call_button("Call", "12345")};

    session.open();

    EXPECT_EQ(session->buttonPosMode, 0);
}

TEST(ActionButtons, ACallToATelephoneAddressStays)
{
    AdSession session;
    session.ad().arrayButtonsInfo = {call_button("Call", "tel:12345")};

    session.open();

    EXPECT_EQ(session->buttonPosMode, ButtonPositionMode_OneButton);
}

TEST(ActionButtons, ACallWithoutANumberIsDropped)
{
    AdSession session;
    session.ad().arrayButtonsInfo = {NSDictionary{{"btn_text", "Call"}, {"action", "place_call"}}};

    session.open();

    EXPECT_EQ(session->buttonPosMode, 0);
}

TEST(ActionButtons, OtherActionsAreNotChecked)
{
    AdSession session(without_message_composer());
    session.ad().arrayButtonsInfo = {NSDictionary{{"btn_text", "Store"}, {"action", "open_store"}}};

    session.open();

    EXPECT_EQ(session->buttonPosMode, ButtonPositionMode_OneButton);
}

TEST(ActionButtons, OfThreeTheFirstTwoAreShown)
{
    AdSession session;
    session.ad().arrayButtonsInfo = {link_button("One"), link_button("Two"), link_button("Three")};

    session.open();

    EXPECT_EQ(session->buttonPosMode, ButtonPositionMode_TwoButton);
    EXPECT_EQ(session->dicButtonOneActionInfo["btn_text"], "One");
    EXPECT_EQ(session->dicButtonTwoActionInfo["btn_text"], "Two");
    EXPECT_EQ(session->btnActionOne.title(), "One");
    EXPECT_EQ(session->btnActionTwo.title(), "Two");
}

TEST(ActionButtons, UnusableOnesBetweenAreSkipped)
{
    AdSession session;
    session.ad().arrayButtonsInfo = {link_button(""), link_button("One"), call_button("Call", "1"), "no button",
                                     link_button("Two")};

    session.open();

    EXPECT_EQ(session->buttonPosMode, ButtonPositionMode_TwoButton);
    EXPECT_EQ(session->btnActionOne.title(), "One");
    EXPECT_EQ(session->btnActionTwo.title(), "Two");
}

TEST(ActionButtons, DroppedOnesStayInTheAd)
{
    AdSession session;
    session.ad().arrayButtonsInfo = {link_button(""), link_button("One"), link_button("Two"), link_button("Three")};

    session.open();

    EXPECT_EQ(session.ad().arrayButtonsInfo.count(), 4U);
}

TEST(ActionButtons, OneWithoutATitleOrWithAnEmptyOneIsDropped)
{
    AdSession session;
    session.ad().arrayButtonsInfo = {NSDictionary{{"action", "open_store"}}, call_button("", "tel:12345"),
                                     link_button("")};

    session.open();

    EXPECT_EQ(session->buttonPosMode, 0);
}

TEST(ActionButtons, AnAbsentListShowsNoButtons)
{
    AdSession session;
    session->buttonPosMode = ButtonPositionMode_TwoButton;

    session.open();

    EXPECT_EQ(session->buttonPosMode, 0);
    EXPECT_FALSE(session->btnActionOne.superview());
    EXPECT_FALSE(session->btnActionTwo.superview());
}

TEST(ActionButtons, RemovedOnesLeaveTheScreenButKeepTheirActions)
{
    AdSession session;
    session.ad().arrayButtonsInfo = {link_button("One"), link_button("Two")};
    session.open();
    session->viewButtonBackground.setFrame({1, 2, 3, 4});

    for (const NSArray& none : {NSArray(nullptr), NSArray({link_button("")})}) {
        session.ad().arrayButtonsInfo = none;
        session->addActionButton();

        EXPECT_FALSE(session->btnActionOne.superview());
        EXPECT_FALSE(session->btnActionTwo.superview());
        EXPECT_EQ(session->dicButtonOneActionInfo["btn_text"], "One");
        EXPECT_EQ(session->dicButtonTwoActionInfo["btn_text"], "Two");
        EXPECT_EQ(session->viewButtonBackground.frame(), (CGRect{1, 2, 3, 4}));
    }
}

TEST(ActionButtons, ARemovedSecondButtonLeavesTheScreen)
{
    AdSession session;
    session.ad().arrayButtonsInfo = {link_button("One"), link_button("Two")};
    session.open();
    session.ad().arrayButtonsInfo = {link_button("Three")};

    session->addActionButton();

    EXPECT_EQ(session->buttonPosMode, ButtonPositionMode_OneButton);
    EXPECT_EQ(session->dicButtonOneActionInfo["btn_text"], "Three");
    EXPECT_THAT(session->viewButtonBackground.subviews(), ElementsAre(UIView(session->btnActionOne)));
}

TEST(ActionButtons, AreInThePanelTheSecondBelowTheFirst)
{
    AdSession session;
    session.ad().arrayButtonsInfo = {link_button("One"), link_button("Two")};

    session.open();

    EXPECT_THAT(session->viewButtonBackground.subviews(),
                ElementsAre(UIView(session->btnActionTwo), UIView(session->btnActionOne)));
    EXPECT_EQ(session->btnActionOne.backgroundColor(), UIColor::clearColor());
    EXPECT_EQ(session->btnActionTwo.backgroundColor(), UIColor::clearColor());
}

TEST(ActionButtons, ThePanelBeginsAsASquareOnTheScreensHeight)
{
    AdSession session;
    session.ad().arrayButtonsInfo = {link_button("One")};
    session.open();

    session->addActionButton();

    EXPECT_EQ(session->viewButtonBackground.frame(), (CGRect{0, 0, 812, 812}));
}

TEST(ActionButtons, BuiltAgainTheyActOncePerTap)
{
    AdSession session;
    session.ad().arrayButtonsInfo = {link_button("One")};
    session.open();
    session->addActionButton();
    session.forget();

    session.tap(session->btnActionOne);

    EXPECT_THAT(session.lines("openURL"), ElementsAre("http://l/"));
}

TEST(ActionButtons, EachTapGoesToItsOwnButtonsAction)
{
    AdSession session;
    session.ad().arrayButtonsInfo = {link_button("One"),
                                     NSDictionary{{"btn_text", "Two"}, {"data", NSDictionary{{"u", "http://two/"}}}}};
    session.open();
    session.forget();

    session.tap(session->btnActionTwo);
    session.tap(session->btnActionOne);

    EXPECT_THAT(session.lines("openURL"), ElementsAre("http://two/", "http://l/"));
}

// ------------------------------------------------------------------------------------------------------ fetched images

TEST(AbilityButtonImage, IsFetchedAtOnce)
{
    World world = AdSession::manual_world();
    world.net["http://ad/b.png"].body = PngSignature;
    AdSession session(world);

    session->setAbilityButtonImage(session->btnActionOne, "http://ad/b.png");

    EXPECT_THAT(session.lines("fetch"), ElementsAre("http://ad/b.png buttonImage"));
    EXPECT_TRUE(session->btnActionOne.backgroundImage());
}

TEST(AbilityButtonImage, WithoutAnAddressIsClearedUnfetched)
{
    AdSession session;

    session->setAbilityButtonImage(session->btnMute, nullptr);
    session->setAbilityButtonImage(session->btnReplay, "");

    EXPECT_THAT(session.lines("fetch"), IsEmpty());
    EXPECT_FALSE(session->btnMute.backgroundImage());
    EXPECT_FALSE(session->btnReplay.backgroundImage());
}

TEST(AbilityButtonImage, ThatIsNoImageIsCleared)
{
    World world = AdSession::manual_world();
    world.net["http://ad/b.png"].body = "<html>";
    AdSession session(world);

    session->setAbilityButtonImage(session->btnMute, "http://ad/b.png");

    EXPECT_FALSE(session->btnMute.backgroundImage());
}

// ------------------------------------------------------------------------------------------------------ action window

TEST(AdActionView, IsInAWindowOfItsOwnAboveTheStatusBar)
{
    AdSession session;
    session.forget();

    session->showAdActionView();

    EXPECT_EQ(session->windowTempWindow.frame(), (CGRect{0, 0, 375, 812}));
    EXPECT_EQ(session->windowTempWindow.windowLevel(), 1001.0);
    EXPECT_TRUE(session->windowTempWindow.isKeyWindow());
    EXPECT_FALSE(session->windowTempWindow.isHidden());
    EXPECT_FALSE(session->windowDefaultWindow.isKeyWindow());
    EXPECT_TRUE(session->view().superview() == session->windowTempWindow);
    EXPECT_TRUE(session->windowTempWindow.rootViewController().get() == &session.controller());
    EXPECT_TRUE(session->bIsAddOnWindow);
    EXPECT_THAT(session.transcript(), ElementsAre("log 1 Ad view add on custom window"));

    session->removeTempWindow();
}

TEST(AdActionView, ReusesAnExistingWindow)
{
    AdSession session;
    session.open();
    const UIWindow window = session->windowTempWindow;

    session->showAdActionView();

    EXPECT_TRUE(session->windowTempWindow == window);
}

TEST(AdActionView, WithoutAScreenTheWindowHasNoSize)
{
    World world = AdSession::manual_world();
    world.device.facts.screen = std::nullopt;
    AdSession session(world);

    session->showAdActionView();

    EXPECT_EQ(session->windowTempWindow.frame(), CGRect{});

    session->removeTempWindow();
}

TEST(ActionButtons, ATitleOfOneLetterIsATitle)
{
    AdSession session;
    session.ad().arrayButtonsInfo = {NSDictionary{{"btn_text", "X"}}};
    session.open();

    EXPECT_EQ(session->btnActionOne.title(), "X");
}

TEST(ButtonTitle, IsDecodedAndStyled)
{
    AdSession session;
    const UIButton button = UIButton::create();
    button.titleLabel().setFont({"Times", 1.0});
    button.titleLabel().setNumberOfLines(3);

    session->setButtonText(button, "Buy+now%21%20");

    EXPECT_EQ(button.title(), "Buy now!");
    EXPECT_EQ(button.titleLabel().font(), (UIFont{"Arial", 17.0}));
    EXPECT_EQ(button.titleLabel().textColor(), UIColor::whiteColor());
    EXPECT_EQ(button.titleLabel().lineBreakMode(), NSLineBreakByCharWrapping);
    EXPECT_EQ(button.titleLabel().textAlignment(), NSTextAlignmentRight);
    const ViewNode& label = *button.node()->title_label;
    EXPECT_EQ(label.number_of_lines, 1);
    EXPECT_TRUE(label.highlighted);
    EXPECT_EQ(label.text_shadow_offset, (CGSize{0.5, 0.5}));
    EXPECT_EQ(button.node()->title_shadow_color, UIColor::colorWithRed(0, 0, 0, 0.3));
    EXPECT_TRUE(button.node()->shows_touch);
}

} // namespace
} // namespace qoro
