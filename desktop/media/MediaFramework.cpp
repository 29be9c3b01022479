#include "desktop/media/MediaFramework.h"

#include "desktop/media/LibavElements.h"

#include <gst/gst.h>

#include <mutex>

namespace qoro
{

void start_media_framework()
{
    static std::once_flag once;
    std::call_once(once, [] {
        gst_init(nullptr, nullptr);
        register_libav_elements();
    });
}

} // namespace qoro
