#pragma once

#include "desktop/glib/Owned.h"
#include "platform/Ports.h"

#include <utility>

typedef struct _GdkTexture GdkTexture;

namespace qoro
{

/// A decoded image as a GTK texture.
class GdkDecodedImage : public DecodedImage
{
public:
    explicit GdkDecodedImage(ObjectRef<GdkTexture> texture) : texture_(std::move(texture)) {}

    /// Owned by the image.
    GdkTexture* texture() const { return texture_.get(); }
    /// Pixels.
    int width() const;
    int height() const;

private:
    const ObjectRef<GdkTexture> texture_;
};

/// Decodes PNG and JPEG. Returns null for other formats, for broken or truncated files, and above 64 million pixels.
class GdkImages : public ImageDecoder
{
public:
    std::shared_ptr<const DecodedImage> decode(const NSData& bytes) override;
};

} // namespace qoro
