#pragma once

#include "Base/VideoPlayer/QoroVideoAd.h"

#include <memory>
#include <string>
#include <string_view>

namespace qoro
{

/// What happens to a value that is not of its property's type. A name that is no property is always refused, and so is
/// an enumerator's name that is none.
enum class AdTypes {
    /// It is refused.
    Strict,
    /// It reads as absent, a number as the nearest whole one toward zero where that is wanted; what stands in lists and
    /// mappings is taken as it is.
    Lenient,
};

/// Reads an ad: a JSON object with QoroVideoAd's properties under their own names, enumerations as numbers or names.
/// What is left out, or null, is absent.
/// @param file what to call it in an error
/// @throws InputError
std::shared_ptr<QoroVideoAd> read_ad(std::string_view text, const std::string& file, AdTypes types);

/// Refuses an ad that cannot be shown: a video without a positive size where the portrait layout divides by it, and an
/// address that is neither relative nor http or https.
/// @throws InputError
void require_playable(const QoroVideoAd& ad, const std::string& file);

/// Reads a file, strictly, that holds an ad to be shown.
/// @param file its path; "-" for standard input
/// @throws InputError
std::shared_ptr<QoroVideoAd> read_ad_file(const std::string& file);

} // namespace qoro
