#pragma once

#include "host/OpenedTag.h"
#include "platform/Export.h"

#include <memory>

namespace QORO_EXPORT qoro
{

/// What a VAST tag needs on the desktop: this machine's decoders choose the media file, and, while this object exists,
/// the hosts that documents of this machine name are reachable, as for a ServedAd. A document is of this machine if it
/// is a file, or at an address in a private network or on this machine. An ad of which a part is from a public server
/// may not lead inside. It must outlive the opened tag.
class DesktopTag final : public TagObserver
{
public:
    /// @param tag the tag to be opened; not kept
    explicit DesktopTag(const OpenedTag::Tag& tag);
    ~DesktopTag() override;
    DesktopTag(const DesktopTag&) = delete;
    DesktopTag& operator=(const DesktopTag&) = delete;

    /// Options for OpenedTag. The observer and the function of requests that are given are called as well.
    TagOptions options(TagOptions options = {});

private:
    struct Hosts;

    void ad_begins(const vast::ResolvedAd& ad, std::size_t n, std::size_t of) override;
    void ad_failed(const vast::FailedAd& failed) override;
    void ad_ended(std::size_t n, const AdOutcome& outcome) override;

    const std::unique_ptr<Hosts> hosts_;
    const std::unique_ptr<const vast::MediaSupport> support_;
    TagObserver* next_ = nullptr;
};

} // namespace qoro
