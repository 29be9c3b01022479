#include "desktop/screen/HeldScreen.h"

#include "views/Turns.h"

#include <algorithm>
#include <cmath>

namespace qoro
{

namespace
{

double whole(double coordinate)
{
    return std::floor(coordinate + 0.5);
}

int whole_length(double length)
{
    return static_cast<int>(std::clamp(whole(length), 0.0, 32767.0));
}

} // namespace

CGSize HeldScreen::extents() const
{
    return turned_extents(screen, turn);
}

CGPoint HeldScreen::to_window(CGPoint on_screen) const
{
    const CGPoint offset = turned({on_screen.x - screen.width / 2, on_screen.y - screen.height / 2}, turn);
    return {extents().width / 2 + offset.x, extents().height / 2 + offset.y};
}

CGPoint HeldScreen::to_screen(CGPoint in_window) const
{
    const CGPoint offset = turned({in_window.x - extents().width / 2, in_window.y - extents().height / 2}, -turn);
    return {screen.width / 2 + offset.x, screen.height / 2 + offset.y};
}

CGRect WidgetPlace::around() const
{
    const CGSize size = turned_extents({static_cast<double>(width), static_cast<double>(height)}, angle);
    return {center.x - size.width / 2, center.y - size.height / 2, size.width, size.height};
}

WidgetPlace place_in_window(const Placement& on_screen, const HeldScreen& held)
{
    const CGPoint center = held.to_window(on_screen.center);
    const double angle = CGAffineTransformMakeRotation(on_screen.angle + held.turn).angle;
    if (!is_whole_turn(angle))
        return {center, whole_length(on_screen.bounds.width), whole_length(on_screen.bounds.height), angle};
    const CGSize exact = turned_extents(on_screen.bounds, angle);
    const double left = whole(center.x - exact.width / 2);
    const double top = whole(center.y - exact.height / 2);
    const int across = whole_length(whole(center.x + exact.width / 2) - left);
    const int down = whole_length(whole(center.y + exact.height / 2) - top);
    const CGSize size = turned_extents({static_cast<double>(across), static_cast<double>(down)}, angle);
    return {{left + across / 2.0, top + down / 2.0}, whole_length(size.width), whole_length(size.height), angle};
}

} // namespace qoro
