#pragma once

#include "Base/VideoPlayer/QoroVideoAd.h"
#include "desktop/net/AdServer.h"
#include "desktop/net/Reach.h"

#include <memory>
#include <optional>
#include <string>

namespace qoro
{

/// An ad whose folder is served: its relative addresses lead to a server of its own. What it names itself can be
/// reached wherever it lies, also in a private network or on this machine, as long as this object lives.
class ServedAd
{
public:
    /// @param ad its relative addresses are replaced
    /// @param folder what they are relative to
    /// @param on_hit as AdServer's
    /// @throws std::runtime_error when there can be no server
    ServedAd(std::shared_ptr<QoroVideoAd> ad, const std::string& folder, AdServer::OnHit on_hit = nullptr);
    /// Reads the ad from a file, whose folder is served.
    /// @throws InputError for a file that can't be read, or holds no ad that could be shown
    /// @throws std::runtime_error when there can be no server
    explicit ServedAd(const std::string& file, AdServer::OnHit on_hit = nullptr);

    const std::shared_ptr<QoroVideoAd>& ad() const { return ad_; }
    const AdServer& server() const { return *server_; }

private:
    const std::shared_ptr<QoroVideoAd> ad_;
    std::unique_ptr<AdServer> server_;
    std::optional<NamedHosts> named_;
};

} // namespace qoro
