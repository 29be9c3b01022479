#pragma once

#include "platform/Ports.h"

typedef struct _GdkTexture GdkTexture;

namespace qoro
{

/// A picture as GTK draws it.
class GdkDecodedImage : public DecodedImage
{
public:
    /// @param texture taken over
    explicit GdkDecodedImage(GdkTexture* texture) : texture_(texture) {}
    ~GdkDecodedImage() override;

    GdkTexture* texture() const { return texture_; }
    /// Pixels.
    int width() const;
    int height() const;

private:
    GdkTexture* const texture_;
};

/// Decodes PNG and JPEG; anything else, a broken or cut picture, and one of more than 64 million pixels is none.
class GdkImages : public ImageDecoder
{
public:
    std::shared_ptr<const DecodedImage> decode(const NSData& bytes) override;
};

} // namespace qoro
