#pragma once

#include "Base/VideoPlayer/VideoImage/ImageName.h"
#include "platform/UIKit.h"

#include <cstddef>

namespace qoro
{

/// A compiled-in picture, decoded anew from exactly the array's bytes; it knows its name.
template <std::size_t Count>
UIImage embeddedImage(const unsigned char (&bytes)[Count])
{
    UIImage image = UIImage::imageWithData(NSData::dataWithBytesNoCopy(bytes, Count));
    image.setAccessibilityIdentifier(embeddedImageName(bytes));
    return image;
}

} // namespace qoro
