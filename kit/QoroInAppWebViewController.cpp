#include "platform/QoroInAppWebViewController.h"

#include "kit/PageScreen.h"
#include "platform/QoroAdManager.h"
#include "platform/QoroPhoneGapViewController.h"
#include "platform/ZulixOpenInAppApplicationViewController.h"

namespace qoro
{

std::shared_ptr<QoroInAppWebViewController> QoroInAppWebViewController::create()
{
    Platform::current().emit(event::BrowserCreated{});
    return std::make_shared<QoroInAppWebViewController>();
}

QoroInAppWebViewController::~QoroInAppWebViewController()
{
    // Without its controller the view could not be closed.
    view().removeFromSuperview();
}

void QoroInAppWebViewController::closeAction()
{
    Platform::current().emit(event::BrowserClosed{});
    leave();
}

void QoroInAppWebViewController::removeParentViewController()
{
    opener_.reset();
}

void QoroInAppWebViewController::expand(const NSString& url, const NSString& withHtml, bool customClose,
                                        double customHeight, double customWidth,
                                        const std::shared_ptr<QoroPhoneGapViewController>& Delegate,
                                        const UIColor& backgroundColor)
{
    const Value background =
        backgroundColor
            ? Value(NSArray{backgroundColor.red, backgroundColor.green, backgroundColor.blue, backgroundColor.alpha})
            : Value();
    Platform::current().emit(event::BrowserExpanded{.url = url,
                                                    .custom_close = customClose,
                                                    .navigation_bar = bIsUseNavigationBar,
                                                    .progress_bar = bIsUseProgressbar,
                                                    .height = customHeight,
                                                    .width = customWidth,
                                                    .background = &background,
                                                    .session = dSessionId,
                                                    .sequence = iSeqNo});
    opener_ = Delegate;
    screen_ = nullptr;
    loadView();
    view().setFrame({0, 0, customWidth, customHeight});
    view().setBackgroundColor(backgroundColor);
    if (Delegate) {
        Delegate->windowTempWindow.addSubview(view());
        if (Delegate->openInAppApplicationViewController)
            Delegate->openInAppApplicationViewController->set_covered(true);
    }

    const PageScreen::Style style{.bar = bIsUseNavigationBar ? PageScreen::Bar::Navigation : PageScreen::Bar::None,
                                  .progress = bIsUseProgressbar,
                                  .close_unseen = customClose};
    const auto self = std::static_pointer_cast<QoroInAppWebViewController>(shared_from_this());
    screen_ = PageScreen::create(view(), style, [weak = std::weak_ptr(self)] {
        if (const auto browser = weak.lock())
            browser->closed_by_viewer();
    });
    if (withHtml && !url)
        screen_->show_html(withHtml);
    else
        screen_->show_address(NSURL::URLWithString(url));
}

void QoroInAppWebViewController::closed_by_viewer()
{
    const std::shared_ptr<Object> held = weak_from_this().lock();
    leave();
    const auto opener = opener_.lock();
    if (!opener)
        return;
    opener->closeInAppWebView();
    if (opener->openInAppApplicationViewController)
        opener->openInAppApplicationViewController->set_covered(false);
}

void QoroInAppWebViewController::leave()
{
    screen_ = nullptr;
    view().removeFromSuperview();
    QoroAdManager::sharedInstance().forget_extra_view(this);
}

} // namespace qoro
