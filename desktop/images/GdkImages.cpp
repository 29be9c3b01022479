#include "desktop/images/GdkImages.h"

#include <gdk/gdk.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

namespace qoro
{

namespace
{
using namespace std::string_view_literals;

/// A small file may declare a picture that would exhaust the memory.
constexpr std::int64_t MostPixels = 64'000'000;

struct Format {
    /// gdk-pixbuf's name of the format.
    const char* name;
    std::string_view begins_with;
    /// Found at the end of every complete picture. Of a truncated one, the loader would return uninitialised rows.
    std::string_view end_mark;
};
constexpr auto Formats = std::to_array<Format>({
    {"png", "\x89PNG\r\n\x1a\n"sv, "IEND"sv},
    {"jpeg", "\xff\xd8\xff"sv, "\xff\xd9"sv},
});

/// Null for another format or a truncated picture.
const Format* format_of(std::string_view bytes)
{
    const auto* format =
        std::ranges::find_if(Formats, [bytes](const Format& one) { return bytes.starts_with(one.begins_with); });
    const bool whole = format != Formats.end() && bytes.rfind(format->end_mark) != std::string_view::npos;
    return whole ? format : nullptr;
}

void refuse_giants(GdkPixbufLoader* loader, int width, int height, gpointer)
{
    if (static_cast<std::int64_t>(width) * height > MostPixels)
        gdk_pixbuf_loader_set_size(loader, 0, 0);
}
} // namespace

int GdkDecodedImage::width() const
{
    return gdk_texture_get_width(texture());
}

int GdkDecodedImage::height() const
{
    return gdk_texture_get_height(texture());
}

std::shared_ptr<const DecodedImage> GdkImages::decode(const NSData& bytes)
{
    const Format* format = format_of(bytes.view());
    if (!format)
        return nullptr;
    const auto owned = adopt(gdk_pixbuf_loader_new_with_type(format->name, nullptr));
    GdkPixbufLoader* loader = owned.get();
    if (!loader)
        return nullptr;
    g_signal_connect(loader, "size-prepared", G_CALLBACK(refuse_giants), nullptr);
    const bool written = gdk_pixbuf_loader_write(loader, bytes.bytes(), bytes.length(), nullptr);
    const bool whole = gdk_pixbuf_loader_close(loader, nullptr) && written;
    GdkPixbuf* pixels = whole ? gdk_pixbuf_loader_get_pixbuf(loader) : nullptr;
    if (!pixels)
        return nullptr;
    const auto upright = adopt(gdk_pixbuf_apply_embedded_orientation(pixels));
    return std::make_shared<GdkDecodedImage>(adopt(gdk_texture_new_for_pixbuf(upright.get())));
}

} // namespace qoro
