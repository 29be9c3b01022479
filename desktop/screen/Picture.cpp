#include "desktop/screen/Picture.h"

#include "desktop/images/GdkImages.h"

#include <gtk/gtk.h>

namespace qoro
{

void PictureEnd::operator()(cairo_surface_t* picture) const
{
    cairo_surface_destroy(picture);
}

Picture picture_of(const VideoFrame& frame)
{
    if (!frame)
        return nullptr;
    // const_cast: Cairo only reads the pixels, because nothing draws into a picture.
    auto* pixels = static_cast<unsigned char*>(const_cast<void*>(g_bytes_get_data(frame.pixels.get(), nullptr)));
    Picture picture(cairo_image_surface_create_for_data(pixels, CAIRO_FORMAT_ARGB32, frame.width, frame.height,
                                                        static_cast<int>(frame.stride)));
    static cairo_user_data_key_t held_pixels;
    cairo_surface_set_user_data(picture.get(), &held_pixels, new std::shared_ptr(frame.pixels),
                                [](void* held) { delete static_cast<std::shared_ptr<GBytes>*>(held); });
    return picture;
}

Picture picture_of(const GdkDecodedImage& image)
{
    Picture picture(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, image.width(), image.height()));
    gdk_texture_download(image.texture(), cairo_image_surface_get_data(picture.get()),
                         static_cast<gsize>(cairo_image_surface_get_stride(picture.get())));
    cairo_surface_mark_dirty(picture.get());
    return picture;
}

CGSize picture_size(const Picture& picture)
{
    if (!picture)
        return {};
    return {static_cast<double>(cairo_image_surface_get_width(picture.get())),
            static_cast<double>(cairo_image_surface_get_height(picture.get()))};
}

} // namespace qoro
