#include "vast/MediaChoice.h"

#include "vast/Texts.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <tuple>

namespace qoro::vast
{

namespace
{

/// Kilobits a second that a phone's connection carries without a stall.
constexpr int AmpleBitrate = 5000;

std::string type_of(const MediaFile& file)
{
    return lower(trimmed(std::string_view(file.type).substr(0, file.type.find(';'))));
}

std::string reason_against(const MediaFile& file, const MediaSupport& support)
{
    if (file.address.empty())
        return "it has no address";
    if (!is_address(file.address))
        return "its address is no http or https address";
    if (!file.api_framework.empty())
        return "it is interactive (" + file.api_framework + "), and interactive files are not executed";
    // The attribute is required; a file without it is taken as the usual one.
    if (!file.delivery.empty() && !equal_names(file.delivery, "progressive"))
        return "its delivery is " + file.delivery + ", not progressive";
    if (file.type.empty())
        return "it has no type";
    if (support.can_play(type_of(file), file.codec))
        return "";
    return file.codec.empty() || !support.can_play(type_of(file), "")
               ? "the type " + file.type + " cannot be decoded"
               : "the codec " + file.codec + " cannot be decoded";
}

/// Files in the order in which they are preferred compare less.
auto rank(const MediaFile& file, const Band& band)
{
    const double width = file.width.value_or(0);
    const bool fills = width >= band.width;
    const int bitrate = file.bitrate.value_or(file.max_bitrate.value_or(0));
    const bool ample = bitrate <= AmpleBitrate;
    return std::tuple(width == 0, !fills, fills ? width : -width, !ample, ample ? -bitrate : bitrate);
}

std::string why_chosen(const MediaFile& file, const Band& band)
{
    if (!file.width)
        return "no file with a size can be played";
    const std::string pixels = std::to_string(static_cast<int>(band.width)) + " pixels";
    return *file.width >= band.width ? "the narrowest that fills the band of " + pixels
                                     : "the widest; none fills the band of " + pixels;
}

} // namespace

bool CommonMediaSupport::can_play(const std::string& type, const std::string& codec) const
{
    if (type != "video/mp4" && type != "video/webm")
        return false;
    if (codec.empty())
        return true;
    // As in RFC 6381, or as people write them; several with commas.
    constexpr std::array<std::string_view, 11> Known{"avc",  "h264", "h.264", "vp8",    "vp9", "vp08",
                                                     "vp09", "mp4a", "aac",   "vorbis", "opus"};
    const std::string names = lower(codec);
    for (std::string_view rest = names; !rest.empty();) {
        const std::size_t comma = std::min(rest.find(','), rest.size());
        const std::string_view name = trimmed(rest.substr(0, comma));
        if (std::ranges::none_of(Known, [&](std::string_view known) { return name.starts_with(known); }))
            return false;
        rest.remove_prefix(std::min(comma + 1, rest.size()));
    }
    return true;
}

MediaChoice choose_media(const std::vector<MediaFile>& files, const MediaSupport& support, const Band& band)
{
    MediaChoice choice;
    for (std::size_t n = 0; n < files.size(); ++n) {
        choice.reasons.push_back(reason_against(files[n], support));
        if (!choice.reasons.back().empty())
            continue;
        if (!choice.chosen || rank(files[n], band) < rank(files[*choice.chosen], band))
            choice.chosen = n;
    }
    if (choice.chosen)
        choice.why = why_chosen(files[*choice.chosen], band);
    return choice;
}

} // namespace qoro::vast
