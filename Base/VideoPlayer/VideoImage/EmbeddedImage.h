#pragma once

#include "Base/VideoPlayer/VideoImage/ImageName.h"
#include "platform/UIKit.h"

#include <cstddef>

namespace qoro
{

/// Decodes a compiled-in picture from the whole array, on every call. The array's name becomes the picture's
/// accessibility identifier.
template <std::size_t Count>
UIImage embeddedImage(const unsigned char (&bytes)[Count])
{
    UIImage image = UIImage::imageWithData(NSData::dataWithBytesNoCopy(bytes, Count));
    image.setAccessibilityIdentifier(embeddedImageName(bytes));
    return image;
}

} // namespace qoro
