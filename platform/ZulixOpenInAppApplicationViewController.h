#pragma once

#include "platform/UIKit.h"

namespace qoro
{

class QoroPhoneGapViewController;

/// The kit's host of system sheets: the message composer and the store page.
class ZulixOpenInAppApplicationViewController : public UIViewController
{
public:
    static std::shared_ptr<ZulixOpenInAppApplicationViewController> create();

    /// Who is told when a sheet ends (closeInAppApplication); null for nobody. Held weakly.
    void setParentViewController(const std::shared_ptr<QoroPhoneGapViewController>& parent) { parent_ = parent; }
    /// Composes a message.
    /// @param number the address to send to, "tel:" and digits; null for none
    /// @param smsBody the text; null for none
    void sendSmsMsg(const NSString& number, const NSString& smsBody);
    /// Shows a store page.
    /// @param url the store's address; null for none
    /// @param downloadId the item; 0 for none
    void open_store(const NSString& url, std::int32_t downloadId);
    /// The sheet has ended: who opened it is told.
    void finished();

private:
    std::weak_ptr<QoroPhoneGapViewController> parent_;
};

} // namespace qoro
