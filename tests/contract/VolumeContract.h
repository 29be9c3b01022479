#pragma once

#include "platform/Foundation.h"
#include "tests/contract/ContractPlatform.h"

namespace qoro::test
{

/// The output volume and an observer of its changes.
class VolumeContract : public ContractTest
{
protected:
    VolumeContract() : ContractTest({.volume = true})
    {
        const PlatformScope scope(platform());
        NSNotificationCenter::defaultCenter().addObserver(action<&Observer::heard>(observer_.get(), "heard:"),
                                                          SystemVolumeDidChangeNotification);
    }

    OutputVolume& volume() { return platform().volume(); }
    int changes() const { return observer_->changes; }

private:
    struct Observer : Object {
        void heard(const NSNotification&) { ++changes; }
        int changes = 0;
    };
    const std::shared_ptr<Observer> observer_ = std::make_shared<Observer>();
};

} // namespace qoro::test
