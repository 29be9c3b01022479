#pragma once

#include "platform/Platform.h"
#include "platform/QoroPhoneGapViewController.h"

#include <string_view>

namespace qoro
{

/// The ad controller that opened the ad. Only reports the calls it receives.
class ParentController final : public QoroPhoneGapViewController
{
public:
    void clickRequester() override;
    void closeVideoAdUnit(bool close) override;
    void setBIsSendImpression(bool sent) override;
};

/// A delegate of the host. Reports the failures it is notified of.
class HostDelegate final : public QoroAdDelegate
{
public:
    /// @param name which of the delegates this is; outlives it
    explicit HostDelegate(std::string_view name) : platform_(Platform::current()), name_(name) {}
    bool responds_to_ad_failed() const override { return true; }
    void onZulixAdFailed(const UIView& ad_view, const NSError& error) override;

private:
    Platform& platform_;
    const std::string_view name_;
};

} // namespace qoro
