#pragma once

#include "vast/Model.h"

#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace qoro::vast
{

struct Wrapping;
/// The wrappers around a document, from the innermost; null without one.
using Chain = std::shared_ptr<const Wrapping>;

/// A wrapper, and those around it.
struct Wrapping {
    /// @param wrapper has Ad::onward
    /// @param from address of the document that the wrapper is in; empty for one that is from no server
    Wrapping(std::shared_ptr<const Ad> wrapper, std::string from, Chain around);

    std::shared_ptr<const Ad> ad;
    std::string address;
    Chain outer;
    /// Code and authority, in lower case, of each category that it refuses.
    std::set<std::pair<std::string, std::string>> blocked;
};

int depth_of(const Chain& chain);
/// Whether one of the wrappers leads to an address.
bool leads_through(const Chain& chain, const std::string& address);
/// Whether the next ad may be a wrapper (followAdditionalWrappers).
bool permits_wrappers(const Chain& chain);
/// A category of an ad that one of its wrappers refuses (VAST 4.3, section 3.19.2); null without one. Codes of
/// different authorities differ; without an authority, only the code counts.
const Category* blocked_category(const Ad& ad, const Chain& chain);

/// An inline ad with what its wrappers add.
Ad merged(Ad ad, const Chain& chain);
/// Error addresses of an ad and its wrappers, the innermost first.
std::vector<std::string> errors_of(const Ad& ad, const Chain& chain);

} // namespace qoro::vast
