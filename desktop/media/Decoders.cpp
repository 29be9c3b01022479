#include "desktop/media/Decoders.h"

#include "desktop/glib/Owned.h"
#include "desktop/media/LibavElements.h"
#include "desktop/media/MediaFramework.h"

#include <gst/gst.h>

namespace qoro
{

namespace
{

void unref_features(GList* features)
{
    gst_plugin_feature_list_free(features);
}
using Factories = Owned<GList, unref_features>;

bool has_element(GstElementFactoryListType type, const std::string& format)
{
    start_media_framework();
    const Owned<GstCaps, gst_caps_unref> caps(gst_caps_from_string(format.c_str()));
    if (!caps)
        return false;
    const Factories all(gst_element_factory_list_get_elements(type, GST_RANK_MARGINAL));
    const Factories fitting(gst_element_factory_list_filter(all.get(), caps.get(), GST_PAD_SINK, FALSE));
    for (const GList* each = fitting.get(); each; each = each->next)
        if (!lacks_libav(GST_ELEMENT_FACTORY(each->data)))
            return true;
    return false;
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
