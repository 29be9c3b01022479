#pragma once

#include "platform/Export.h"
#include "vast/Model.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace QORO_EXPORT qoro
{

namespace vast
{

/// What a platform can decode.
class MediaSupport
{
public:
    virtual ~MediaSupport() = default;
    /// Whether files of a type can be played.
    /// @param type MIME type without parameters, in lower case
    /// @param codec as in MediaFile::codec; empty when unknown
    virtual bool can_play(const std::string& type, const std::string& codec) const = 0;
};

/// A fixed list, for platforms without a decoder: MP4 and WebM with H.264, VP8 or VP9, or with an unknown codec.
class CommonMediaSupport final : public MediaSupport
{
public:
    bool can_play(const std::string& type, const std::string& codec) const override;
};

/// Where the video is shown.
struct Band {
    /// Pixels.
    double width = 375;
};

/// Which file of a video plays.
struct MediaChoice {
    /// Per file, in order: why it cannot be played, one line; empty for one that can.
    std::vector<std::string> reasons;
    /// Index of the file; absent when none can be played.
    std::optional<std::size_t> chosen;
    /// Why this one, one line.
    std::string why;
};

/// Chooses among the files that can be played: progressive delivery, a type and codec that the platform decodes, an
/// http or https address, no interactive framework. Of these, the narrowest that fills the band, or else the widest; of
/// equal ones the highest bitrate up to 5,000 kbit/s, or else the lowest; of equal ones the first. A file of unknown
/// size comes last.
MediaChoice choose_media(const std::vector<MediaFile>& files, const MediaSupport& support, const Band& band);

} // namespace vast

} // namespace qoro
