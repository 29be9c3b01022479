#include "workbench/Looks.h"

#include "simulator/Simulation.h"

#include <utility>

namespace qoro
{

Looks::Looks(Simulation& simulation, EventSink& next, std::function<void()> look)
    : simulation_(simulation), next_(next), look_(std::move(look)),
      watch_(simulation.platform(), [this] { look_later(); })
{
}

void Looks::receive(const Event& event)
{
    next_.receive(event);
    look_later();
}

void Looks::look_later()
{
    if (std::exchange(will_look_, true))
        return;
    simulation_.platform().loop().post([this] {
        will_look_ = false;
        look_();
    });
}

} // namespace qoro
