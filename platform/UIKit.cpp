#include "platform/UIKit.h"

// The parts that need no view; the rest is implemented in views/.

namespace qoro
{

UIColor UIColor::colorWithRed(double red, double green, double blue, double alpha)
{
    return {red, green, blue, alpha, true};
}

UIColor UIColor::colorWithAlphaComponent(double of_alpha) const
{
    if (!present)
        return {};
    return colorWithRed(red, green, blue, of_alpha);
}

UIImage UIImage::imageWithData(const NSData& bytes)
{
    UIImage image;
    if (!bytes)
        return image;
    image.decoded_ = Platform::current().images().decode(bytes);
    if (image.decoded_)
        image.data_ = bytes;
    return image;
}

std::optional<CGSize> UIScreen::mainScreenBounds()
{
    return Platform::current().device().facts().screen;
}

UIApplication& UIApplication::sharedApplication()
{
    return Platform::current().shared<UIApplication>();
}

UIInterfaceOrientation UIApplication::statusBarOrientation() const
{
    return platform_.device().status_bar_orientation();
}

bool UIApplication::isStatusBarHidden() const
{
    return platform_.device().status_bar_hidden();
}

bool UIApplication::canOpenURL(const NSURL& address) const
{
    return address && platform_.device().can_open(address);
}

void UIApplication::openURL(const NSURL& address) const
{
    if (!address)
        return;
    platform_.emit(event::AddressOpened{address.absoluteString()});
    platform_.device().open(address);
}

UIDeviceOrientation UIDevice::orientation()
{
    return Platform::current().device().orientation();
}

void UIDevice::forceOrientation(UIDeviceOrientation orientation)
{
    Platform& platform = Platform::current();
    platform.emit(event::OrientationForced{orientation});
    const bool turns = platform.device().orientation() != orientation;
    platform.device().force_orientation(orientation);
    if (turns)
        platform.device_orientation_changed();
}

bool MFMessageComposeViewController::available()
{
    return Platform::current().device().facts().can_send_text.has_value();
}

bool MFMessageComposeViewController::canSendText()
{
    return Platform::current().device().facts().can_send_text.value_or(false);
}

CGSize sizeWithFont(const NSString& text, const UIFont& font, CGSize constrainedToSize)
{
    return Platform::current().text().measure(text, font, constrainedToSize);
}

} // namespace qoro
