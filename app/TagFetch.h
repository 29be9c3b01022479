#pragma once

#include "formats/AdInput.h"
#include "formats/AdScenario.h"
#include "formats/DeviceModels.h"
#include "vast/Resolver.h"

#include <map>
#include <optional>
#include <string>

namespace qoro
{

/// A VAST tag, resolved over the network, and the documents on the way.
struct FetchedTag {
    vast::Resolution resolution = {};
    /// By address, as the documents give it, without the document that the user names.
    std::map<std::string, TagDocuments::Answer> answers = {};
    /// The document that the user names.
    TagDocuments::Answer document = {};
};

/// Resolves a tag as a player does, without requesting a tracker. What the user names may be anywhere; from there
/// nothing may lead further inside, neither a document nor a redirect.
/// @param device its screen decides on the media file; absent: a screen of vast::Band's width
/// @throws InputError for a tag that is no VAST document
FetchedTag fetch_tag(const AdInput& tag, const std::optional<DeviceModel>& device);

/// What a scenario of the tag needs.
/// @throws InputError as fetch_tag()
TagDocuments fetch_tag_documents(const AdInput& tag, const std::optional<DeviceModel>& device);

} // namespace qoro
