#include "desktop/images/GdkImages.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <gdk/gdk.h>
#include <string>

using namespace qoro;

namespace
{
/// An image of one colour, encoded.
std::string picture(const char* format, int width, int height)
{
    GdkPixbuf* pixels = gdk_pixbuf_new(GDK_COLORSPACE_RGB, FALSE, 8, width, height);
    gdk_pixbuf_fill(pixels, 0x3366ccff);
    char* bytes = nullptr;
    gsize length = 0;
    EXPECT_TRUE(gdk_pixbuf_save_to_buffer(pixels, &bytes, &length, format, nullptr, nullptr));
    std::string encoded(bytes, length);
    g_free(bytes);
    g_object_unref(pixels);
    return encoded;
}

std::shared_ptr<const GdkDecodedImage> decode(const std::string& bytes)
{
    return std::dynamic_pointer_cast<const GdkDecodedImage>(GdkImages().decode(NSData(bytes)));
}
} // namespace

TEST(GdkImagesTest, DecodesPngAndJpegToTheirPixels)
{
    for (const char* format : {"png", "jpeg"}) {
        const auto image = decode(picture(format, 7, 5));
        ASSERT_TRUE(image) << format;
        EXPECT_EQ(image->width(), 7);
        EXPECT_EQ(image->height(), 5);
        std::array<unsigned char, 7 * 5 * 4> pixels{};
        gdk_texture_download(image->texture(), pixels.data(), 7 * 4);
        EXPECT_NEAR(pixels[0], 0xcc, 3) << format; // the byte order is BGRA
        EXPECT_NEAR(pixels[2], 0x33, 3) << format;
    }
}

TEST(GdkImagesTest, OtherFormatsAreNotDecoded)
{
    EXPECT_FALSE(decode(picture("bmp", 4, 4)));
    EXPECT_FALSE(decode("<svg xmlns='http://www.w3.org/2000/svg'/>"));
    EXPECT_FALSE(decode(""));
    EXPECT_FALSE(GdkImages().decode(NSData()));
}

TEST(GdkImagesTest, ABrokenPictureIsNotDecoded)
{
    const std::string png = picture("png", 40, 40);
    EXPECT_FALSE(decode(png.substr(0, png.size() / 2)));
    EXPECT_FALSE(decode(png.substr(0, 8) + "rubbish that is no chunk at all"));
    EXPECT_FALSE(decode("\xff\xd8\xff rubbish"));
}

TEST(GdkImagesTest, APictureThatClaimsAHugeSizeIsNotDecoded)
{
    // A valid header of 60000 by 60000 pixels: only the size is wrong.
    std::string png = picture("png", 4, 4);
    std::string header = png.substr(12, 17);
    header.replace(4, 8, std::string("\0\0\xea\x60\0\0\xea\x60", 8));
    std::uint32_t crc = 0xffffffff;
    for (const char c : header) {
        crc ^= static_cast<unsigned char>(c);
        for (int bit = 0; bit < 8; ++bit)
            crc = crc & 1 ? crc >> 1 ^ 0xedb88320 : crc >> 1;
    }
    crc = ~crc;
    png.replace(12, 17, header);
    for (int i = 0; i < 4; ++i)
        png[static_cast<std::size_t>(29 + i)] = static_cast<char>(crc >> (24 - 8 * i));
    EXPECT_FALSE(decode(png));
}
