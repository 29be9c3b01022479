// A VAST tag and the documents that its wrappers lead to. The input's documents are separated by lines "=="; the first
// is the tag's, the others are at http://d/1, http://d/2, ….

#include "simulator/SimulatedPlatform.h"
#include "tests/fuzz/FuzzSession.h"
#include "tests/fuzz/FuzzTarget.h"
#include "vast/Describe.h"
#include "vast/Reader.h"
#include "vast/Resolver.h"

#include <algorithm>
#include <string>

namespace qoro
{

namespace
{

constexpr std::string_view Separator = "\n==\n";
/// Seconds between the answers, so that a long chain takes longer than a tag may take.
constexpr double Delay = 1.5;
/// Seconds. After the last time-out, a second result would show.
constexpr double Long = 100;

std::string take_document(std::string_view& rest)
{
    const std::size_t end = std::min(rest.find(Separator), rest.size());
    std::string document(rest.substr(0, end));
    rest.remove_prefix(std::min(end + Separator.size(), rest.size()));
    return document;
}

void require_explanation(const std::string& text)
{
    fuzz::require(!text.empty() && text.find('\n') == std::string::npos, "an explanation is one line");
}

void require_sound(const vast::Resolution& resolution)
{
    fuzz::require(resolution.ads.empty() == resolution.error.has_value(),
                  "without an ad there is an error, and only then");
    fuzz::require(resolution.wrappers.size() <= vast::ResolverOptions().documents, "few documents are requested");
    for (const vast::ResolvedAd& ad : resolution.ads) {
        fuzz::require(ad.ad.linear && ad.media.chosen && *ad.media.chosen < ad.ad.linear->media_files.size(),
                      "an ad that plays has a file");
        fuzz::require(ad.wrappers <= vast::ResolverOptions().wrappers, "few wrappers are around an ad");
    }
    fuzz::require_json(vast::describe(resolution));
}

} // namespace

void fuzz::run_input(std::string_view input)
{
    const std::string tag = take_document(input);
    World world;
    for (int n = 1; !input.empty(); ++n) {
        NetAnswer& answer = world.net["http://d/" + std::to_string(n)];
        answer.body = take_document(input);
        answer.after = n * Delay;
    }
    SimulatedPlatform platform(world);
    const vast::CommonMediaSupport support;
    vast::Resolver resolver(platform.fetcher(), platform.loop(), support);
    int results = 0;
    try {
        resolver.resolve_text(tag, "", [&](const vast::Resolution& resolution) {
            ++results;
            require_sound(resolution);
        });
    } catch (const vast::DocumentError& error) {
        require_explanation(error.what());
        require(error.code >= 100 && error.code <= 102, "a refused document has a code of the standard");
        return;
    }
    platform.run_until(Long);
    require(results == 1, "a tag has one result");
}

} // namespace qoro
