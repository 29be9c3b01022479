#include "app/TagFetch.h"

#include "desktop/GlibLoop.h"
#include "desktop/net/Reach.h"
#include "desktop/net/SoupFetcher.h"
#include "formats/InputError.h"
#include "vast/CreativeChoice.h"
#include "vast/Macros.h"
#include "vast/Reader.h"
#include "vast/Texts.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <deque>
#include <limits>
#include <optional>
#include <random>
#include <utility>

namespace qoro
{

namespace
{

/// The macros of a request for a document, as far as this command knows their values.
std::string expand_macros(const std::string& address)
{
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    vast::MacroValues values;
    values.request.kind = vast::AddressKind::Document;
    values.request.random = [] { return std::uint32_t{std::random_device{}()}; };
    values.request.time = std::chrono::duration<double>(now).count();
    return vast::requestable(vast::expand(address, values));
}

/// Keeps every answer.
class KeepingFetcher final : public Fetcher
{
public:
    explicit KeepingFetcher(Fetcher& fetcher) : fetcher_(fetcher) {}

    void fetch(const std::string& address, FetchKind kind, std::function<void(FetchAnswer)> answer) override
    {
        TagDocuments::Answer& kept = answers[address];
        kept.failure = "no answer in time";
        fetcher_.fetch(address, kind, [&kept, answer = std::move(answer)](FetchAnswer received) {
            kept = {.body = received.body, .failure = received.ok ? "" : received.error};
            answer(std::move(received));
        });
    }
    FetchAnswer fetch_now(const std::string& address) override { return fetcher_.fetch_now(address); }

    /// By the address that was requested.
    std::map<std::string, TagDocuments::Answer> answers;

private:
    Fetcher& fetcher_;
};

} // namespace

FetchedTag fetch_tag(const AdInput& tag, const std::optional<DeviceModel>& device)
{
    const vast::Band band{.width = device ? device->screen.width * std::max(device->scale, 1.0) : vast::Band().width};
    GlibLoop loop;
    SoupFetcher soup(loop);
    KeepingFetcher fetcher(soup);
    const vast::CommonMediaSupport support;
    const ReachRule rule(NetworkZone::Public);
    std::deque<NamedHosts> named;
    /// Addresses as the documents give them, by the address that is requested.
    std::map<std::string, std::string> unexpanded;
    vast::Resolver resolver(
        fetcher, loop, support,
        {.band = band,
         .expand =
             [&](const std::string& address) {
                 const std::string expanded = expand_macros(address);
                 unexpanded[expanded] = address;
                 return expanded;
             },
         .permits = [](const std::string& from,
                       const std::string& to) { return from.empty() || !leads_inward(from, to); },
         .requests = [&named](const std::string& address) { named.emplace_back(std::vector<std::string>{address}); }});
    std::optional<vast::Resolution> result;
    const auto done = [&](vast::Resolution resolution) { result = std::move(resolution); };
    if (tag.is_address) {
        resolver.resolve(tag.name, done);
    } else {
        try {
            resolver.resolve_text(tag.text, "", done);
        } catch (const vast::DocumentError& error) {
            throw InputError(tag.name, "", error.what());
        }
    }
    loop.run_until([&] { return result.has_value(); }, std::numeric_limits<double>::infinity());
    if (result->malformed)
        throw InputError(tag.name, "", result->why);

    FetchedTag fetched{.resolution = std::move(*result), .document = {.body = tag.text}};
    for (auto& [address, answer] : fetcher.answers)
        if (tag.is_address && unexpanded[address] == tag.name)
            fetched.document = std::move(answer);
        else
            fetched.answers[unexpanded[address]] = std::move(answer);
    return fetched;
}

TagDocuments fetch_tag_documents(const AdInput& tag, const std::optional<DeviceModel>& device)
{
    FetchedTag fetched = fetch_tag(tag, device);
    // A file may lead anywhere, as a document of this machine may.
    TagDocuments documents{.address = tag.is_address ? tag.name : "http://localhost/tag.xml",
                           .document = std::move(fetched.document),
                           .answers = std::move(fetched.answers)};
    for (const vast::ResolvedAd& resolved : fetched.resolution.ads) {
        const vast::Linear& linear = *resolved.ad.linear;
        documents.videos.push_back({linear.media_files[*resolved.media.chosen].address, linear.duration});
        for (const vast::MediaFile& file : linear.media_files)
            documents.media_files.push_back({.address = file.address,
                                             .width = file.width,
                                             .height = file.height,
                                             .bitrate = file.bitrate,
                                             .max_bitrate = file.max_bitrate,
                                             .duration = linear.duration,
                                             .path = file.path});
        if (const vast::Icon* const icon = vast::choose_icon(linear.icons))
            documents.pictures.push_back(vast::picture_of(*icon)->text);
    }
    return documents;
}

} // namespace qoro
