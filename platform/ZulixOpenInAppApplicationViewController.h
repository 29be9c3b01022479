#pragma once

#include "platform/UIKit.h"

namespace qoro
{

class PageScreen;
class QoroPhoneGapViewController;

/// Hosts the system's sheets: the message composer and the store page.
class ZulixOpenInAppApplicationViewController : public UIViewController
{
public:
    static std::shared_ptr<ZulixOpenInAppApplicationViewController> create();

    /// Sets the controller that is notified when a sheet ends (closeInAppApplication); null for none. Held weakly.
    void setParentViewController(const std::shared_ptr<QoroPhoneGapViewController>& parent) { parent_ = parent; }
    /// Composes a message in the system's message program.
    /// @param number the recipient as "tel:" and digits; null for none
    /// @param smsBody the text; null for none
    void sendSmsMsg(const NSString& number, const NSString& smsBody);
    /// Shows a store page. With an address the system's store program opens it; otherwise the page is shown over the
    /// ad, as is a product named by its AppStream identifier when no program handles such addresses.
    /// @param url the store's address, or "appstream:" and an identifier; null for none
    /// @param downloadId the item, used when url is null; 0 for none
    void open_store(const NSString& url, std::int64_t downloadId);
    /// Handles the end of a sheet: removes it from the screen and notifies the parent.
    void finished();
    /// Removes its page from the screen without notifying the parent.
    void leave();
    /// Sets whether the ad's browser covers it; the end of a sheet is deferred while it does.
    void set_covered(bool covered);

private:
    friend class StateReader; // workbench/explore/StateHash.cpp
    void wait_for(const NSURL& address);
    void returned();
    void show_store_page(const NSString& item);

    std::shared_ptr<PageScreen> screen_;
    bool covered_ = false;
    /// The viewer has returned while it was covered.
    bool has_returned_ = false;
    std::weak_ptr<QoroPhoneGapViewController> parent_;
};

} // namespace qoro
