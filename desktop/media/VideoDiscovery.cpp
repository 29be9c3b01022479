#include "desktop/media/VideoDiscovery.h"

#include "desktop/glib/Owned.h"
#include "desktop/media/MediaFramework.h"

#include <gst/pbutils/pbutils.h>

#include <filesystem>
#include <string_view>
#include <utility>

namespace qoro
{

namespace
{

constexpr GstClockTime Patience = 10 * GST_SECOND;

void free_streams(GList* streams)
{
    gst_discoverer_stream_info_list_free(streams);
}
using StreamList = Owned<GList, free_streams>;

/// Whether a file is displayed with width and height exchanged.
bool is_on_its_side(const GstTagList* tags)
{
    const gchar* text = nullptr;
    if (!tags || !gst_tag_list_peek_string_index(tags, GST_TAG_IMAGE_ORIENTATION, 0, &text))
        return false;
    const std::string_view orientation(text);
    return orientation.ends_with("rotate-90") || orientation.ends_with("rotate-270");
}

} // namespace

std::optional<DiscoveredVideo> discover_video(const std::string& path)
{
    start_media_framework();
    Error error;
    const auto discoverer = adopt(gst_discoverer_new(Patience, error.out()));
    const Owned<char, g_free> address(g_filename_to_uri(std::filesystem::absolute(path).c_str(), nullptr, nullptr));
    if (!discoverer || !address)
        return std::nullopt;
    const auto info = adopt(gst_discoverer_discover_uri(discoverer.get(), address.get(), nullptr));
    if (!info || gst_discoverer_info_get_result(info.get()) != GST_DISCOVERER_OK)
        return std::nullopt;
    const StreamList videos(gst_discoverer_info_get_video_streams(info.get()));
    if (!videos)
        return std::nullopt;
    auto* const video = static_cast<GstDiscovererVideoInfo*>(videos->data);
    const double wide = gst_discoverer_video_info_get_par_num(video);
    const double high = gst_discoverer_video_info_get_par_denom(video);
    DiscoveredVideo found;
    const GstClockTime duration = gst_discoverer_info_get_duration(info.get());
    if (GST_CLOCK_TIME_IS_VALID(duration))
        found.duration = static_cast<double>(duration) / GST_SECOND;
    found.size.width = gst_discoverer_video_info_get_width(video) * (wide > 0 && high > 0 ? wide / high : 1);
    found.size.height = gst_discoverer_video_info_get_height(video);
    if (is_on_its_side(gst_discoverer_stream_info_get_tags(GST_DISCOVERER_STREAM_INFO(video))))
        std::swap(found.size.width, found.size.height);
    return found;
}

} // namespace qoro
