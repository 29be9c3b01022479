#pragma once

#include "platform/Value.h"

namespace qoro
{

/// The kit's cache of video files.
class ZulixVideoCacheManager
{
public:
    static ZulixVideoCacheManager& sharedInstance();
    /// Whether a complete copy of an address exists; false for null.
    bool checkFileExist(const NSString& address) const;
    /// Path of the copy; null without one.
    NSString getFilePathWithUrl(const NSString& address) const;
};

} // namespace qoro
