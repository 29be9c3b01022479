#include "simulator/Simulator.h"

#include "simulator/SimulatedPlatform.h"

namespace qoro
{

Simulator::Simulator(const World& world) : platform_(std::make_unique<SimulatedPlatform>(world))
{
}

Simulator::~Simulator() = default;

Platform& Simulator::platform()
{
    return *platform_;
}

double Simulator::now() const
{
    return platform_->loop().now();
}

void Simulator::run_until(double seconds)
{
    platform_->run_until(seconds);
}

} // namespace qoro
