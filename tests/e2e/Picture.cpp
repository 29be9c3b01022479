#include "tests/e2e/Picture.h"

#include <gdk-pixbuf/gdk-pixbuf.h>

#include <cstdlib>
#include <stdexcept>

namespace qoro::test
{

struct Picture::Pixels {
    GdkPixbuf* buffer = nullptr;
};

bool alike(Colour a, Colour b)
{
    constexpr int tolerance = 14;
    return std::abs(a.red - b.red) <= tolerance && std::abs(a.green - b.green) <= tolerance &&
           std::abs(a.blue - b.blue) <= tolerance;
}

Picture::Picture(const std::string& png) : pixels_(std::make_unique<Pixels>())
{
    pixels_->buffer = gdk_pixbuf_new_from_file(png.c_str(), nullptr);
    if (!pixels_->buffer)
        throw std::runtime_error("no picture: " + png);
}

Picture::~Picture()
{
    g_object_unref(pixels_->buffer);
}

int Picture::width() const
{
    return gdk_pixbuf_get_width(pixels_->buffer);
}

int Picture::height() const
{
    return gdk_pixbuf_get_height(pixels_->buffer);
}

Colour Picture::at(int x, int y) const
{
    if (x < 0 || y < 0 || x >= width() || y >= height())
        throw std::out_of_range("no such pixel");
    const guchar* pixel = gdk_pixbuf_read_pixels(pixels_->buffer) + y * gdk_pixbuf_get_rowstride(pixels_->buffer) +
                          x * gdk_pixbuf_get_n_channels(pixels_->buffer);
    return {pixel[0], pixel[1], pixel[2]};
}

double Picture::share_of(Colour colour, int x, int y, int width, int height) const
{
    int like = 0;
    for (int row = y; row < y + height; ++row)
        for (int column = x; column < x + width; ++column)
            like += alike(at(column, row), colour) ? 1 : 0;
    return static_cast<double>(like) / (width * height);
}

double share_changed(const Picture& a, const Picture& b, int x, int y, int width, int height)
{
    int changed = 0;
    for (int row = y; row < y + height; ++row)
        for (int column = x; column < x + width; ++column)
            changed += alike(a.at(column, row), b.at(column, row)) ? 0 : 1;
    return static_cast<double>(changed) / (width * height);
}

} // namespace qoro::test
