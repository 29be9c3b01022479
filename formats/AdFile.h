#pragma once

#include "Base/VideoPlayer/QoroVideoAd.h"
#include "platform/Export.h"

#include <memory>
#include <string>
#include <string_view>

namespace QORO_EXPORT qoro
{

/// How to treat a value that is not of its property's type. An unknown property name or enumerator name is an error in
/// either mode.
enum class AdTypes {
    /// The value is an error.
    Strict,
    /// The value reads as absent; where a whole number is expected, a number is truncated toward zero. Entries of lists
    /// and mappings are taken unchecked.
    Lenient,
};

/// Reads an ad: a JSON object of QoroVideoAd's properties by name, with enumerations as numbers or names. A missing or
/// null property is absent.
/// @param text of the object
/// @param file name for error messages
/// @param types how to treat a value of the wrong type
/// @throws InputError
std::shared_ptr<QoroVideoAd> read_ad(std::string_view text, const std::string& file, AdTypes types);

/// A copy whose changes do not affect the original.
std::shared_ptr<QoroVideoAd> copy_of(const QoroVideoAd& ad);

/// Rejects an ad that cannot be shown: a video without a positive size where the portrait layout divides by it, or
/// content or a tracker at an address that is neither relative nor http or https.
/// @throws InputError
void require_playable(const QoroVideoAd& ad, const std::string& file);

/// Reads an ad from a file, strictly, and checks it with require_playable().
/// @param file path; "-" for standard input
/// @throws InputError
std::shared_ptr<QoroVideoAd> read_ad_file(const std::string& file);

} // namespace qoro
