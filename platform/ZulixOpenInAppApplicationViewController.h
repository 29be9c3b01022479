#pragma once

#include "platform/UIKit.h"

namespace qoro
{

class PageScreen;
class QoroPhoneGapViewController;

/// The kit's host of system sheets: the message composer and the store page.
class ZulixOpenInAppApplicationViewController : public UIViewController
{
public:
    static std::shared_ptr<ZulixOpenInAppApplicationViewController> create();

    /// Who is told when a sheet ends (closeInAppApplication); null for nobody. Held weakly.
    void setParentViewController(const std::shared_ptr<QoroPhoneGapViewController>& parent) { parent_ = parent; }
    /// Composes a message, in the system's own program for that.
    /// @param number the address to send to, "tel:" and digits; null for none
    /// @param smsBody the text; null for none
    void sendSmsMsg(const NSString& number, const NSString& smsBody);
    /// Shows a store page: in the system's own program when there is an address, else in a page over the ad; so too a
    /// product that is named by its AppStream identifier where no program knows such.
    /// @param url the store's address, or "appstream:" and an identifier; null for none
    /// @param downloadId the item; 0 for none
    void open_store(const NSString& url, std::int32_t downloadId);
    /// The sheet has ended: who opened it is told.
    void finished();
    /// Takes what it shows off the screen, telling nobody.
    void leave();
    /// Whether the ad's browser lies over it: the end of a sheet waits until that has closed.
    void set_covered(bool covered);

private:
    void wait_for(const NSURL& address);
    void returned();
    void show_store_page(const NSString& item);

    std::shared_ptr<PageScreen> screen_;
    bool covered_ = false;
    /// The viewer is back, and something still lies over it.
    bool has_returned_ = false;
    std::weak_ptr<QoroPhoneGapViewController> parent_;
};

} // namespace qoro
