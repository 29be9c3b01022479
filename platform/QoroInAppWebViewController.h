#pragma once

#include "platform/UIKit.h"

namespace qoro
{

class PageScreen;
class QoroPhoneGapViewController;
class QoroAdDelegate;

/// The kit's in-app browser: a landing page over the ad.
class QoroInAppWebViewController : public UIViewController
{
public:
    static std::shared_ptr<QoroInAppWebViewController> create();
    ~QoroInAppWebViewController() override;

    /// Closes the browser without notifying its delegate.
    void closeAction();
    /// Clears the delegate: the ad that opened the browser is about to be destroyed.
    void removeParentViewController();

    void setStrMRAID2Expanded(const NSString& path) { strMRAID2Expanded = path; }
    void setQoroDelegate(const std::weak_ptr<QoroAdDelegate>& delegate) { qoroDelegate = delegate; }
    void setUseAutoRotate(bool rotates) { bUseAutoRotate = rotates; }
    void setBIsUseNavigationBar(bool uses) { bIsUseNavigationBar = uses; }
    void setBIsUseProgressbar(bool uses) { bIsUseProgressbar = uses; }
    void setBIsUseCustomClose(bool uses) { bIsUseCustomClose = uses; }
    void setSessionId(double session) { dSessionId = session; }
    void setSeqNo(std::int32_t number) { iSeqNo = number; }
    void setTheRootView(const std::shared_ptr<UIViewController>& root) { rootViewController = root; }

    /// Opens a page and shows it over the ad, at the given size in points.
    /// @param url the page's address; null when withHtml is given
    /// @param withHtml the page's source, used when url is null; null for none
    /// @param customClose the page draws its own close control; a tap on its top right corner closes the browser as
    ///                    well
    /// @param Delegate notified when the viewer closes the browser (closeInAppWebView); held weakly, may be null
    void expand(const NSString& url, const NSString& withHtml, bool customClose, double customHeight,
                double customWidth, const std::shared_ptr<QoroPhoneGapViewController>& Delegate,
                const UIColor& backgroundColor);
    /// Handles the viewer closing the browser: removes it from the screen and notifies the delegate.
    void closed_by_viewer();

    NSString strMRAID2Expanded;
    std::weak_ptr<QoroAdDelegate> qoroDelegate;
    bool bUseAutoRotate = false;
    bool bIsUseNavigationBar = false;
    bool bIsUseProgressbar = false;
    bool bIsUseCustomClose = false;
    double dSessionId = 0;
    std::int32_t iSeqNo = 0;
    std::shared_ptr<UIViewController> rootViewController;

private:
    friend class StateReader; // workbench/explore/StateHash.cpp
    void leave();

    std::weak_ptr<QoroPhoneGapViewController> opener_;
    std::shared_ptr<PageScreen> screen_;
};

} // namespace qoro
