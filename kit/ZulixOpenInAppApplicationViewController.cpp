#include "platform/ZulixOpenInAppApplicationViewController.h"

#include "kit/StandIn.h"
#include "kit/WebText.h"
#include "platform/QoroPhoneGapViewController.h"
#include "views/ViewNode.h"

#include <string>

namespace qoro
{

std::shared_ptr<ZulixOpenInAppApplicationViewController> ZulixOpenInAppApplicationViewController::create()
{
    Platform::current().emit(event::ApplicationScreenCreated{});
    return std::make_shared<ZulixOpenInAppApplicationViewController>();
}

void ZulixOpenInAppApplicationViewController::sendSmsMsg(const NSString& number, const NSString& smsBody)
{
    Platform::current().emit(event::MessageSent{number, smsBody});
    wait_for(message_address(number, smsBody));
}

void ZulixOpenInAppApplicationViewController::open_store(const NSString& url, std::int64_t downloadId)
{
    Platform::current().emit(event::StoreOpened{url, downloadId});
    const NSURL address = NSURL::URLWithString(url);
    const NSString product = appstream_id_of(address);
    if (url && !(product && !Platform::current().device().can_open(address)))
        wait_for(address);
    else if (product || downloadId == 0)
        show_store_page(product);
    else
        show_store_page(std::to_string(downloadId));
}

void ZulixOpenInAppApplicationViewController::wait_for(const NSURL& address)
{
    const auto self = std::static_pointer_cast<ZulixOpenInAppApplicationViewController>(shared_from_this());
    Platform::current().device().open_and_wait(address, [weak = std::weak_ptr(self)] {
        if (const auto screen = weak.lock())
            screen->returned();
    });
}

void ZulixOpenInAppApplicationViewController::returned()
{
    has_returned_ = true;
    if (covered_)
        return;
    // Another sheet may have opened meanwhile, or the ad may have closed; then this one is obsolete.
    const auto parent = parent_.lock();
    if (parent && parent->openInAppApplicationViewController.get() == this && parent->dicEventListener)
        finished();
}

void ZulixOpenInAppApplicationViewController::set_covered(bool covered)
{
    covered_ = covered;
    if (!covered && has_returned_)
        returned();
}

void ZulixOpenInAppApplicationViewController::show_store_page(const NSString& item)
{
    screen_ = nullptr;
    loadView();
    view().setBackgroundColor(UIColor::whiteColor());
    view().node()->fills_parent = true;
    const auto self = std::static_pointer_cast<ZulixOpenInAppApplicationViewController>(shared_from_this());
    screen_ = store_screen(view(), {item, nullptr, nullptr, nullptr}, [weak = std::weak_ptr(self)] {
        if (const auto screen = weak.lock())
            screen->finished();
    });
    const auto parent = parent_.lock();
    if (!parent)
        return;
    present_over(view(), parent->view());
    // If the ad's view is in no window, the default window shows the page; an invisible page could never be closed.
    if (!view().superview())
        present_over(view(), parent->windowDefaultWindow);
}

void ZulixOpenInAppApplicationViewController::finished()
{
    const std::shared_ptr<Object> held = weak_from_this().lock();
    leave();
    if (const auto parent = parent_.lock())
        parent->closeInAppApplication();
}

void ZulixOpenInAppApplicationViewController::leave()
{
    screen_ = nullptr;
    end_presentation_of(view());
}

} // namespace qoro
