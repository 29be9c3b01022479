#include "platform/ZulixOpenInAppApplicationViewController.h"

#include "platform/QoroPhoneGapViewController.h"

namespace qoro
{

std::shared_ptr<ZulixOpenInAppApplicationViewController> ZulixOpenInAppApplicationViewController::create()
{
    Platform::current().tell("kit", {{"do", "application.create"}});
    return std::make_shared<ZulixOpenInAppApplicationViewController>();
}

void ZulixOpenInAppApplicationViewController::sendSmsMsg(const NSString& number, const NSString& smsBody)
{
    Platform::current().tell("kit", {{"do", "sendSms"}, {"number", number}, {"body", smsBody}});
}

void ZulixOpenInAppApplicationViewController::open_store(const NSString& url, std::int32_t downloadId)
{
    Platform::current().tell("kit", {{"do", "openStore"}, {"url", url}, {"id", downloadId}});
}

void ZulixOpenInAppApplicationViewController::finished()
{
    const std::shared_ptr<Object> held = weak_from_this().lock();
    if (const auto parent = parent_.lock())
        parent->closeInAppApplication();
}

} // namespace qoro
