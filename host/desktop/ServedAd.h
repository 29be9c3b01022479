#pragma once

#include "Base/VideoPlayer/QoroVideoAd.h"
#include "desktop/net/AdServerHit.h"
#include "platform/Export.h"

#include <functional>
#include <memory>
#include <string>

namespace QORO_EXPORT qoro
{

/// Serves an ad's folder on a server of its own and makes the ad's relative addresses absolute on it. While this object
/// exists, every host that the ad itself names is reachable, also in a private network or on this machine. It must
/// outlive the opened ad.
class ServedAd
{
public:
    /// Called for every request once its status is known, on the server's thread.
    using OnHit = std::function<void(const AdServerHit&)>;

    /// @param ad not null; its relative addresses are replaced
    /// @param folder base of relative addresses
    /// @param on_hit may be empty
    /// @throws std::runtime_error when the server cannot be started
    ServedAd(std::shared_ptr<QoroVideoAd> ad, const std::string& folder, OnHit on_hit = {});
    /// Reads the ad from a file and serves that file's folder.
    /// @throws InputError when the file cannot be read, or holds no playable ad
    /// @throws std::runtime_error when the server cannot be started
    explicit ServedAd(const std::string& file, OnHit on_hit = {});
    ~ServedAd();
    ServedAd(const ServedAd&) = delete;
    ServedAd& operator=(const ServedAd&) = delete;

    /// The ad with absolute addresses.
    const std::shared_ptr<QoroVideoAd>& ad() const { return ad_; }
    /// Address of the server, without a trailing slash: "http://127.0.0.1:41234".
    std::string base() const;

private:
    struct Serving;

    const std::shared_ptr<QoroVideoAd> ad_;
    std::unique_ptr<Serving> serving_;
};

} // namespace qoro
