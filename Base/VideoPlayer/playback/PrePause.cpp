#include "Base/VideoPlayer/QoroVideoWebViewController.h"

#include <string>
#include <vector>

namespace qoro
{

bool QoroVideoWebViewController::prePauseStatusAtLocation(std::int32_t location)
{
    if (!prePauseStatusDict)
        prePauseStatusDict = NSMutableDictionary::dictionary();
    return prePauseStatusDict[std::to_string(location)].boolValue();
}

void QoroVideoWebViewController::setPrePauseStatusWithStatus(bool status, std::int32_t atLocation)
{
    if (prePauseStatusDict)
        prePauseStatusDict.setObject(status, std::to_string(atLocation));
}

void QoroVideoWebViewController::resetPrePauseStatus()
{
    for (const std::string& location : prePauseStatusDict.allKeys())
        prePauseStatusDict.setObject(false, location);
}

void QoroVideoWebViewController::clearPrePauseStatus()
{
    prePauseStatusDict = nullptr;
}

void QoroVideoWebViewController::cancelPrePauseLocations()
{
    clearPrePauseStatus();
    ad().setArrayPrePauseLocations(nullptr);
    // Empty, not null: keeps the 0.1 s tick.
    ad().setArrayPrePauseLocations(NSArray(std::vector<Value>{}));
}

} // namespace qoro
