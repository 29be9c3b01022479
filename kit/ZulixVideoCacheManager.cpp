#include "platform/ZulixVideoCacheManager.h"

#include "platform/Platform.h"

namespace qoro
{

ZulixVideoCacheManager& ZulixVideoCacheManager::sharedInstance()
{
    return Platform::current().shared<ZulixVideoCacheManager>();
}

bool ZulixVideoCacheManager::checkFileExist(const NSString& address) const
{
    return static_cast<bool>(getFilePathWithUrl(address));
}

NSString ZulixVideoCacheManager::getFilePathWithUrl(const NSString& address) const
{
    return address ? Platform::current().video_cache().path_for(address) : NSString();
}

} // namespace qoro
