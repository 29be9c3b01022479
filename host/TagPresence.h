#pragma once

namespace qoro
{

/// Whether a platform is a tag's (Platform::shared), so that no ad opens beside the tag's own.
struct TagPresence {
    bool is_open = false;
    /// The tag is opening an ad.
    bool opens_ad = false;
};

} // namespace qoro
