#include "platform/QoroInAppWebViewController.h"

#include "platform/QoroAdManager.h"
#include "platform/QoroPhoneGapViewController.h"

namespace qoro
{

std::shared_ptr<QoroInAppWebViewController> QoroInAppWebViewController::create()
{
    Platform::current().tell("kit", {{"do", "browser.create"}});
    return std::make_shared<QoroInAppWebViewController>();
}

void QoroInAppWebViewController::closeAction()
{
    Platform::current().tell("kit", {{"do", "browser.close"}});
    leave();
}

void QoroInAppWebViewController::removeParentViewController()
{
    opener_.reset();
}

void QoroInAppWebViewController::expand(const NSString& url, const NSString&, bool customClose, double customHeight,
                                        double customWidth, const std::shared_ptr<QoroPhoneGapViewController>& Delegate,
                                        const UIColor& backgroundColor)
{
    const Value background =
        backgroundColor
            ? Value(NSArray{backgroundColor.red, backgroundColor.green, backgroundColor.blue, backgroundColor.alpha})
            : Value();
    Platform::current().tell("kit", {{"do", "browser.expand"},
                                     {"url", url},
                                     {"customClose", customClose},
                                     {"navBar", bIsUseNavigationBar},
                                     {"progressBar", bIsUseProgressbar},
                                     {"height", customHeight},
                                     {"width", customWidth},
                                     {"background", background},
                                     {"session", dSessionId},
                                     {"sequence", iSeqNo}});
    opener_ = Delegate;
    loadView();
    view().setFrame({0, 0, customWidth, customHeight});
    view().setBackgroundColor(backgroundColor);
    if (Delegate)
        Delegate->windowTempWindow.addSubview(view());
}

void QoroInAppWebViewController::closed_by_viewer()
{
    const std::shared_ptr<Object> held = weak_from_this().lock();
    leave();
    if (const auto opener = opener_.lock())
        opener->closeInAppWebView();
}

void QoroInAppWebViewController::leave()
{
    view().removeFromSuperview();
    QoroAdManager::sharedInstance().forget_extra_view(this);
}

} // namespace qoro
