#pragma once

#include "platform/UIKit.h"

#include <cstddef>

namespace qoro
{

/// A compiled-in picture, decoded anew from exactly the array's bytes.
template <std::size_t Count>
UIImage embeddedImage(const unsigned char (&bytes)[Count])
{
    return UIImage::imageWithData(NSData::dataWithBytesNoCopy(bytes, Count));
}

} // namespace qoro
