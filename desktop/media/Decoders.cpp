#include "desktop/media/Decoders.h"

#include "desktop/glib/Owned.h"

#include <gst/gst.h>

namespace qoro
{

namespace
{

bool has_element(GstElementFactoryListType type, const std::string& format)
{
    gst_init(nullptr, nullptr);
    const Owned<GstCaps, gst_caps_unref> caps(gst_caps_from_string(format.c_str()));
    if (!caps)
        return false;
    GList* const all = gst_element_factory_list_get_elements(type, GST_RANK_MARGINAL);
    GList* const fitting = gst_element_factory_list_filter(all, caps.get(), GST_PAD_SINK, FALSE);
    const bool found = fitting != nullptr;
    gst_plugin_feature_list_free(fitting);
    gst_plugin_feature_list_free(all);
    return found;
}

} // namespace

bool has_demuxer(const std::string& caps)
{
    return has_element(GST_ELEMENT_FACTORY_TYPE_DEMUXER, caps);
}

bool has_video_decoder(const std::string& caps)
{
    return has_element(GST_ELEMENT_FACTORY_TYPE_DECODER | GST_ELEMENT_FACTORY_TYPE_MEDIA_VIDEO, caps);
}

} // namespace qoro
