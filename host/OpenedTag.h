#pragma once

#include "formats/HostSetup.h"
#include "host/AdOutcome.h"
#include "platform/Export.h"
#include "platform/Platform.h"
#include "vast/Macros.h"
#include "vast/Resolver.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace QORO_EXPORT qoro
{

struct Rehearsal;

/// How a tag's session ended.
struct TagOutcome {
    /// Of each ad that was opened, in order.
    std::vector<AdOutcome> ads;
    /// When no ad was opened: the standard's error code (VAST 4.3, section 2.3.6). Absent if the host closed the tag.
    std::optional<int> error;
    /// With an error: why, one line.
    std::string why;
};

/// Follows a tag's session. A host overrides what it needs. Its functions are called as events of the platform's loop,
/// on the platform's thread; they may close and destroy the OpenedTag, after which no call follows, and they may throw.
class TagObserver
{
public:
    virtual ~TagObserver() = default;
    /// An ad of the tag is about to open.
    /// @param ad what the tag says of it; valid during the call
    /// @param n its index, from 0
    /// @param of number of ads that are planned; a stand-alone ad that replaces one that has failed adds to it
    virtual void ad_begins(const vast::ResolvedAd& ad, std::size_t n, std::size_t of)
    {
        static_cast<void>(ad);
        static_cast<void>(n);
        static_cast<void>(of);
    }
    /// An ad of the tag is not opened, because it cannot be played; or, the last call then, the tag leads to no ad.
    /// @param failed what failed, with the error trackers that are about to be requested: those of the ad and its
    ///        wrappers if another ad plays, else at last those of every document. Valid during the call.
    ///        A pod that the host ends early has such ads as well, also when the OpenedTag is destroyed.
    virtual void ad_failed(const vast::FailedAd& failed) { static_cast<void>(failed); }
    /// An ad of the tag that was opened has ended.
    /// @param n its index, from 0
    /// @param outcome AdEnd::Failed for an ad that could not be played
    virtual void ad_ended(std::size_t n, const AdOutcome& outcome)
    {
        static_cast<void>(n);
        static_cast<void>(outcome);
    }
};

/// How a tag is resolved and played.
struct TagOptions {
    /// Wrappers, times and permissions. expand, requests and band.width of 0 are set by OpenedTag: the macros, a trace
    /// line, and the screen's width.
    vast::ResolverOptions resolver = {.band = {.width = 0}};
    /// What can be decoded; outlives the tag. Null: vast::CommonMediaSupport.
    const vast::MediaSupport* support = nullptr;
    /// Values of macros that only the host knows. What the ad and the player give is replaced.
    vast::MacroValues macros = {};
    /// Seconds since 1970-01-01 UTC, for [TIMESTAMP]; null: the machine's clock.
    std::function<double()> clock = {};
    /// Random bits for [CACHEBUSTING]; null: the machine's random numbers.
    std::function<std::uint32_t()> random = {};
    /// Outlives the tag; may be null.
    TagObserver* observer = nullptr;
};

/// A VAST tag that a host application has opened, on any platform: it is resolved, and its ads play one after the
/// other, each as an OpenedAd with a controller of its own. At most one at a time on a platform; the platform outlives
/// it. Only the platform's thread may use it.
///
/// Until its end has been reported, it is the platform's event sink and forwards every event to the previous one, if
/// any, which must outlive it.
///
/// Functions of the host that the options hold may throw: the exception is reported as for OpenedAd, and the kit's own
/// value takes the place of the result; what permits or can_play cannot say is refused.
class OpenedTag
{
public:
    /// Receives the outcome once, when the last ad has ended, as a separate event of the platform's loop; it may
    /// destroy the OpenedTag, and may open another.
    using OnEnd = std::function<void(const TagOutcome& outcome)>;

    /// A tag: an address, or a document.
    struct Tag {
        /// Where the document is; of a document that is given, where it is from, or empty.
        std::string address = {};
        /// The document; absent: it is fetched.
        std::optional<std::string> text = {};
    };

    /// Opens a tag.
    /// @param platform the platform that shows its ads
    /// @param tag where the tag is, or what it is
    /// @param on_end called once with the outcome; may be empty
    /// @param host the surroundings of each ad. Its close guard shows its button at the latest after 15 seconds in
    /// which
    ///        the video does not move
    /// @param options how the tag is resolved
    /// @throws std::logic_error while another tag is open on the platform whose end has not been reported
    /// @throws vast::DocumentError for a document that is given and is no VAST document
    OpenedTag(Platform& platform, const Tag& tag, OnEnd on_end, HostSetup host = {}, TagOptions options = {});
    /// Opens a tag and performs steps, for programs that test ads. The first OpenStep opens the first ad, once it is
    /// known; without an OpenStep it opens as soon as it is known.
    /// @throws vast::DocumentError for a document that is given and is no VAST document
    OpenedTag(Platform& platform, const Tag& tag, OnEnd on_end, HostSetup host, TagOptions options,
              Rehearsal rehearsal);
    /// Ends the session. on_end is not called afterwards.
    ~OpenedTag();
    OpenedTag(const OpenedTag&) = delete;
    OpenedTag& operator=(const OpenedTag&) = delete;

    /// Ends the session: closes the ad that plays, and opens no other. No effect after the end.
    /// @param closer as for OpenedAd::close(). A viewer who closes an ad with its own button goes on to the next one.
    void close(ClosedBy closer = ClosedBy::Host);
    /// As OpenedAd::leave_screen().
    bool leave_screen();

private:
    class Run;

    const std::shared_ptr<Run> run_;
};

} // namespace qoro
