#include "views/NodeAccess.h"
#include "views/Turns.h"

#include <cmath>

namespace qoro
{

namespace
{

bool is_upright(double angle)
{
    return angle == 0 || std::fabs(angle) == HalfTurn;
}

CGRect around(CGPoint center, CGSize size)
{
    return {center.x - size.width / 2, center.y - size.height / 2, size.width, size.height};
}

CGPoint middle(const CGRect& rect)
{
    return {rect.x + rect.width / 2, rect.y + rect.height / 2};
}

void place(ViewNode& node, CGSize bounds, CGPoint center, double angle, const CGRect& frame)
{
    if (node.bounds == bounds && node.center == center && node.angle == angle && node.frame == frame)
        return;
    const bool resized = node.bounds != bounds;
    node.bounds = bounds;
    node.center = center;
    node.angle = angle;
    node.frame = frame;
    node.changed();
    if (!resized)
        return;
    for (const auto& subview : node.subviews)
        fill_parent(*subview);
    if (node.on_resize)
        node.on_resize();
}

} // namespace

void fill_parent(ViewNode& view)
{
    if (!view.fills_parent || !view.parent || fills_screen(*view.parent))
        return;
    const CGSize size = view.parent->bounds;
    UIView(view.shared_from_this()).setFrame({0, 0, size.width, size.height});
}

bool is_whole_turn(double angle)
{
    return is_upright(angle) || std::fabs(angle) == QuarterTurn;
}

CGPoint turned(CGPoint vector, double angle)
{
    if (angle == 0)
        return vector;
    if (angle == QuarterTurn)
        return {-vector.y, vector.x};
    if (angle == -QuarterTurn)
        return {vector.y, -vector.x};
    if (std::fabs(angle) == HalfTurn)
        return {-vector.x, -vector.y};
    const double cosine = std::cos(angle);
    const double sine = std::sin(angle);
    return {vector.x * cosine - vector.y * sine, vector.x * sine + vector.y * cosine};
}

CGSize turned_extents(CGSize size, double angle)
{
    if (is_upright(angle))
        return size;
    if (is_whole_turn(angle))
        return {size.height, size.width};
    const double cosine = std::fabs(std::cos(angle));
    const double sine = std::fabs(std::sin(angle));
    return {size.width * cosine + size.height * sine, size.width * sine + size.height * cosine};
}

CGRect UIView::frame() const
{
    return read(node_, &ViewNode::frame);
}

void UIView::setFrame(const CGRect& frame) const
{
    if (!node_)
        return;
    const CGSize bounds = turned_extents({frame.width, frame.height}, node_->angle);
    const CGPoint center = middle(frame);
    const bool exact = is_whole_turn(node_->angle);
    place(*node_, bounds, center, node_->angle, exact ? frame : around(center, turned_extents(bounds, node_->angle)));
}

CGSize UIView::bounds() const
{
    return read(node_, &ViewNode::bounds);
}

CGPoint UIView::center() const
{
    return read(node_, &ViewNode::center);
}

void UIView::setCenter(CGPoint center) const
{
    if (!node_ || node_->center == center)
        return;
    place(*node_, node_->bounds, center, node_->angle, around(center, turned_extents(node_->bounds, node_->angle)));
}

CGAffineTransform UIView::transform() const
{
    return {read(node_, &ViewNode::angle)};
}

void UIView::setTransform(CGAffineTransform transform) const
{
    if (!node_ || node_->angle == transform.angle)
        return;
    place(*node_, node_->bounds, node_->center, transform.angle,
          around(node_->center, turned_extents(node_->bounds, transform.angle)));
}

void UILabel::sizeToFit() const
{
    if (!node_)
        return;
    // Larger than any screen, yet within the integer range of text engines.
    constexpr CGSize unbounded{1e6, 1e6};
    const CGSize size = node_->platform.text().measure(node_->text, node_->font, unbounded);
    const CGSize extents = turned_extents(size, node_->angle);
    const CGRect frame{node_->frame.x, node_->frame.y, extents.width, extents.height};
    place(*node_, size, middle(frame), node_->angle, frame);
}

Placement placement_on_screen(const ViewNode& view)
{
    Placement placement{view.center, view.bounds, view.angle};
    for (const ViewNode* parent = view.parent; parent; parent = parent->parent) {
        const CGPoint from_middle{placement.center.x - parent->bounds.width / 2,
                                  placement.center.y - parent->bounds.height / 2};
        const CGPoint offset = turned(from_middle, parent->angle);
        placement.center = {parent->center.x + offset.x, parent->center.y + offset.y};
        placement.angle = CGAffineTransformMakeRotation(placement.angle + parent->angle).angle;
    }
    return placement;
}

} // namespace qoro
