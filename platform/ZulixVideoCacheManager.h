#pragma once

#include "platform/Value.h"

namespace qoro
{

/// The kit's cache of video files.
class ZulixVideoCacheManager
{
public:
    static ZulixVideoCacheManager& sharedInstance();
    /// Whether a complete copy of the address exists. False for null.
    bool checkFileExist(const NSString& address) const;
    /// The copy's path; null when there is none.
    NSString getFilePathWithUrl(const NSString& address) const;
};

} // namespace qoro
