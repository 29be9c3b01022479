#pragma once

#include "platform/Ports.h"

typedef struct _GdkTexture GdkTexture;

namespace qoro
{

/// A decoded image as a GTK texture.
class GdkDecodedImage : public DecodedImage
{
public:
    /// @param texture taken over
    explicit GdkDecodedImage(GdkTexture* texture) : texture_(texture) {}
    ~GdkDecodedImage() override;

    /// Owned by the image.
    GdkTexture* texture() const { return texture_; }
    /// Pixels.
    int width() const;
    int height() const;

private:
    GdkTexture* const texture_;
};

/// Decodes PNG and JPEG. Returns null for other formats, for broken or truncated files, and above 64 million pixels.
class GdkImages : public ImageDecoder
{
public:
    std::shared_ptr<const DecodedImage> decode(const NSData& bytes) override;
};

} // namespace qoro
