#pragma once

#include "platform/Export.h"
#include "platform/Ports.h"
#include "vast/MediaChoice.h"
#include "vast/Model.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace QORO_EXPORT qoro
{

namespace vast
{

/// A wrapper's onward address that was followed.
struct Hop {
    /// As the document gives it.
    std::string address;
    /// The standard's code; absent when the document could be read and has an ad.
    std::optional<int> error = {};
    /// Why, one line; empty without an error.
    std::string why = {};
};

/// An ad that can be played: the inline ad with what its wrappers add (VAST 4.3, section 3.19).
struct ResolvedAd {
    /// Trackers and the like: first the inline ad's, then each wrapper's, from the innermost to the outermost.
    Ad ad;
    /// Which of its media files plays.
    MediaChoice media;
    /// Number of wrappers around it.
    int wrappers = 0;
    /// Addresses of the documents that it is made of, the inline ad's first; empty for a document that is from no
    /// server.
    std::vector<std::string> documents = {};
};

/// An ad that cannot be played.
struct FailedAd {
    /// The standard's code (VAST 4.3, section 2.3.6).
    int code = 900;
    /// Why, one line.
    std::string why;
    /// Error addresses of the response without an ad to which it led, of the ad and of its wrappers, the innermost
    /// first.
    std::vector<std::string> errors;
    /// Of the ad; empty if it gives none.
    std::string id = {};
    /// With the code 403: its media files and the reason against each. Empty otherwise.
    /// @{
    std::vector<MediaFile> media_files = {};
    std::vector<std::string> reasons = {};
    /// @}
    /// Addresses of the documents that it is made of, as in ResolvedAd.
    std::vector<std::string> documents = {};
};

/// A stand-alone ad that was not tried, with the wrappers around it.
struct SpareAd;

/// What a tag leads to.
struct Resolution {
    /// Of the tag's own document; empty if it gives none.
    std::string version;
    /// Whether the tag's own document could be fetched, and is no VAST document.
    bool malformed = false;
    /// In the order in which they were followed.
    std::vector<Hop> wrappers;
    /// To be played in this order: a pod, or a single stand-alone ad.
    std::vector<ResolvedAd> ads;
    /// Stand-alone ads that can replace an ad that fails while it is played (VAST 4.3, section 3.3.1), in the order in
    /// which they are to be tried.
    std::vector<std::shared_ptr<const SpareAd>> spares;
    /// Of the tag's own document, outside its ads.
    std::vector<Ignored> ignored;
    /// Ads that were tried and cannot be played; of very many, the first.
    std::vector<FailedAd> failed;
    /// Without ads: the standard's code. Absent otherwise.
    std::optional<int> error;
    /// Without ads: why, one line.
    std::string why;
    /// Without ads: the error addresses of every document that was read, the innermost first.
    std::vector<std::string> errors;
    /// Addresses of the documents that were read; empty for one that is from no server.
    std::vector<std::string> documents;
};

/// How a tag is resolved. Times are seconds.
struct ResolverOptions {
    /// Most wrappers one inside the other.
    int wrappers = 5;
    /// Most wrappers that are followed, in all.
    std::size_t documents = 100;
    /// Most ads that play; further ones fail. Also the most of Resolution::failed.
    std::size_t ads = 100;
    /// For each document.
    double time_out = 5;
    /// For all documents of the tag.
    double whole_time_out = 10;
    /// Decides on the media file.
    Band band = {};
    /// Expands the macros of an address that is about to be requested. May be empty.
    std::function<std::string(const std::string&)> expand = {};
    /// Whether a document may lead to an address. May be empty: any.
    /// @param from address of the document; empty for a document that has none
    std::function<bool(const std::string& from, const std::string& to)> permits = {};
    /// Called before each request of a document. May be empty.
    std::function<void(const std::string& address)> requests = {};
};

/// Follows a tag through its wrappers. Any number of tags can be resolved at a time. The fetcher, the loop and the
/// media support outlive it. Destroying it ends what is under way, without a call. Only the loop's thread may use it.
class Resolver
{
public:
    /// Called once, as an event of the loop.
    using Done = std::function<void(Resolution)>;

    /// See ResolverOptions for how it resolves.
    Resolver(Fetcher& fetcher, MainLoop& loop, const MediaSupport& support, ResolverOptions options = {});
    ~Resolver();
    Resolver(const Resolver&) = delete;
    Resolver& operator=(const Resolver&) = delete;

    /// Fetches a tag. An address that cannot be fetched is error 301 for a time-out, else 900; an empty response is
    /// 303. A response that is no VAST document is an error, too.
    void resolve(const std::string& address, Done done);
    /// Resolves a tag from its text.
    /// @param text the document
    /// @param done as for resolve()
    /// @param address where the text is from; empty when it is from no server
    /// @throws DocumentError before anything is requested
    void resolve_text(const std::string& text, const std::string& address, Done done);
    /// Resolves a stand-alone ad of an earlier resolution.
    void resolve_spare(const SpareAd& spare, Done done);

private:
    class Run;

    Fetcher& fetcher_;
    MainLoop& loop_;
    const MediaSupport& support_;
    const ResolverOptions options_;
    std::vector<std::shared_ptr<Run>> runs_;
};

} // namespace vast

} // namespace qoro
