#pragma once

#include "platform/Platform.h"
#include "platform/QoroPhoneGapViewController.h"

#include <string_view>

namespace qoro
{

/// The ad controller that opened the ad. Emits an event for each call that it receives, and does nothing else.
class ParentController final : public QoroPhoneGapViewController
{
public:
    void clickRequester() override;
    void closeVideoAdUnit(bool close) override;
    void setBIsSendImpression(bool sent) override;
};

/// A delegate of the host. Emits an event for each failure of which it is notified, on the platform that was current
/// when it was created.
class HostDelegate final : public QoroAdDelegate
{
public:
    /// @param name which of the ad's delegates this is, for the events; outlives the delegate
    explicit HostDelegate(std::string_view name) : platform_(Platform::current()), name_(name) {}
    bool responds_to_ad_failed() const override { return true; }
    void onZulixAdFailed(const UIView& ad_view, const NSError& error) override;

private:
    Platform& platform_;
    const std::string_view name_;
};

} // namespace qoro
