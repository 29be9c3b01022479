#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "Base/VideoPlayer/SharedFrom.h"
#include "platform/QoroAdManager.h"

#include <algorithm>
#include <vector>

namespace qoro
{

namespace
{

constexpr std::size_t MostButtons = 2;

bool deviceSupports(const NSDictionary& button)
{
    const NSString action = button["action"].string();
    // Checks the unchanged value; checkLaunchType turns it into a "tel:" address.
    if (action.isEqualToString("place_call"))
        return UIApplication::sharedApplication().canOpenURL(
            NSURL::URLWithString(button["data"].dictionary()["tel"].string()));
    if (action.isEqualToString("send_sms"))
        return MFMessageComposeViewController::available() && MFMessageComposeViewController::canSendText();
    return true;
}

/// The buttons that have a title and work on this device.
std::vector<NSDictionary> usableButtons(const NSArray& buttons)
{
    std::vector<NSDictionary> usable;
    for (const Value& entry : buttons) {
        const NSDictionary button = entry.dictionary();
        if (button["btn_text"].string().length() > 0 && deviceSupports(button))
            usable.push_back(button);
    }
    return usable;
}

} // namespace

void QoroVideoWebViewController::addActionButton()
{
    btnActionOne.removeFromSuperview();
    btnActionTwo.removeFromSuperview();

    const std::vector<NSDictionary> buttons = usableButtons(ad().arrayButtonsInfo);
    buttonPosMode = static_cast<ButtonPositionMode>(std::min(buttons.size(), MostButtons));
    if (buttons.empty())
        return;
    viewButtonBackground.setFrame({0, 0, fScreenHeight, fScreenHeight});

    dicButtonOneActionInfo = buttons[0];
    setButtonText(btnActionOne, dicButtonOneActionInfo["btn_text"].string());
    if (buttonPosMode == ButtonPositionMode_TwoButton) {
        dicButtonTwoActionInfo = buttons[1];
        setButtonText(btnActionTwo, dicButtonTwoActionInfo["btn_text"].string());
        btnActionTwo.setBackgroundColor(UIColor::clearColor());
        btnActionTwo.addTarget(action<&QoroVideoWebViewController::doButtonTwoAction>(this, "doButtonTwoAction"));
        viewButtonBackground.addSubview(btnActionTwo);
    }
    btnActionOne.addTarget(action<&QoroVideoWebViewController::doButtonOneAction>(this, "doButtonOneAction"));
    btnActionOne.setBackgroundColor(UIColor::clearColor());
    viewButtonBackground.addSubview(btnActionOne);
}

void QoroVideoWebViewController::doButtonOneAction()
{
    checkLaunchType(dicButtonOneActionInfo);
}

void QoroVideoWebViewController::doButtonTwoAction()
{
    checkLaunchType(dicButtonTwoActionInfo);
}

void QoroVideoWebViewController::setAbilityButtonImage(const UIButton& button, const NSString& fromUrl)
{
    // A failed fetch or an undecodable picture clears the background.
    button.setBackgroundImage(
        UIImage::imageWithData(dataWithContentsOfURL(NSURL::URLWithString(fromUrl), FetchPurpose::ButtonImage)));
}

void QoroVideoWebViewController::showAdActionView()
{
    view().removeFromSuperview();
    if (!windowTempWindow) {
        const CGSize screen = UIScreen::mainScreenBounds().value_or(CGSize{});
        windowTempWindow = UIWindow::create({0, 0, screen.width, screen.height});
    }
    windowDefaultWindow.resignKeyWindow();
    windowTempWindow.setWindowLevel(UIWindowLevelStatusBar + 1.0);
    windowTempWindow.makeKeyAndVisible();
    windowTempWindow.addSubview(view());
    bIsAddOnWindow = true;
    windowTempWindow.setRootViewController(sharedFrom(this));
    QoroAdManager::showLog("Ad view add on custom window", ZulixLogTagOfInfo);
}

} // namespace qoro
