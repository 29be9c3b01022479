#pragma once

#include "Base/VideoPlayer/QoroVideoAd.h"
#include "desktop/net/AdServer.h"
#include "desktop/net/Reach.h"

#include <memory>
#include <optional>
#include <string>

namespace qoro
{

/// Serves an ad's folder on a server of its own and makes the ad's relative addresses absolute on it. While this object
/// exists, every host that the ad itself names is reachable, also in a private network or on this machine (NamedHosts).
class ServedAd
{
public:
    /// @param ad its relative addresses are replaced
    /// @param folder base of relative addresses
    /// @param on_hit as for AdServer
    /// @throws std::runtime_error when the server cannot be started
    ServedAd(std::shared_ptr<QoroVideoAd> ad, const std::string& folder, AdServer::OnHit on_hit = nullptr);
    /// Reads the ad from a file and serves that file's folder.
    /// @throws InputError when the file cannot be read, or holds no playable ad
    /// @throws std::runtime_error when the server cannot be started
    explicit ServedAd(const std::string& file, AdServer::OnHit on_hit = nullptr);

    const std::shared_ptr<QoroVideoAd>& ad() const { return ad_; }
    const AdServer& server() const { return *server_; }

private:
    const std::shared_ptr<QoroVideoAd> ad_;
    std::unique_ptr<AdServer> server_;
    std::optional<NamedHosts> named_;
};

} // namespace qoro
