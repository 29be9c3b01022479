#include "host/HostObjects.h"

namespace qoro
{

void ParentController::clickRequester()
{
    platform().emit(event::ParentClicked{});
}

void ParentController::closeVideoAdUnit(bool close)
{
    platform().emit(event::ParentClosed{close});
}

void ParentController::setBIsSendImpression(bool)
{
    platform().emit(event::ParentImpression{});
}

void HostDelegate::onZulixAdFailed(const UIView&, const NSError& error)
{
    platform_.emit(event::AdFailed{name_, error.text});
}

} // namespace qoro
