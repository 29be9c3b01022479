#include "views/NodeAccess.h"

#include <algorithm>

namespace qoro
{

namespace
{

bool takes_touches_by_default(ViewNode::Kind kind)
{
    using enum ViewNode::Kind;
    return kind != Label && kind != ImageView && kind != CountDown && kind != Spinner;
}

bool stands_in_or_is(const ViewNode* view, const ViewNode* ancestor)
{
    while (view && view != ancestor)
        view = view->parent;
    return view == ancestor;
}

/// Insertion position of a view added on top: below presented views, unless it is presented itself.
std::vector<std::shared_ptr<ViewNode>>::iterator top_for(const ViewNode& added, ViewNode& parent)
{
    auto top = parent.subviews.end();
    while (!added.stays_on_top && top != parent.subviews.begin() && (*std::prev(top))->stays_on_top)
        --top;
    return top;
}

/// Removes a view from its parent, which may hold the last reference to it.
void detach(ViewNode& view)
{
    ViewNode* parent = std::exchange(view.parent, nullptr);
    if (!parent)
        return;
    // From the end: a view that moves to the front is often there already.
    const auto place = std::find_if(parent->subviews.rbegin(), parent->subviews.rend(),
                                    [&](const auto& each) { return each.get() == &view; });
    std::shared_ptr<ViewNode> held;
    if (place != parent->subviews.rend()) {
        held = std::move(*place);
        parent->subviews.erase(std::prev(place.base()));
    }
    parent->changed();
}

} // namespace

ViewNode::ViewNode(Kind of_kind)
    : kind(of_kind), platform(Platform::current()), serial(platform.shared<WindowList>().next_view_serial++),
      hidden(of_kind == Kind::Window), takes_touches(takes_touches_by_default(of_kind))
{
}

ViewNode::~ViewNode()
{
    for (const auto& subview : subviews)
        subview->parent = nullptr;
    // Any other view leaves the screen through a change of its parent, which is reported there.
    if (kind == Kind::Window && !hidden)
        platform.views_changed();
}

void ViewNode::changed()
{
    ++revision;
    platform.views_changed();
}

UIView UIView::create()
{
    return UIView(std::make_shared<ViewNode>(ViewNode::Kind::View));
}

// -------------------------------------------------------------------------------------------------------- Appearance

bool UIView::isHidden() const
{
    return read(node_, &ViewNode::hidden);
}

void UIView::setHidden(bool hidden) const
{
    assign(node_, &ViewNode::hidden, hidden);
}

double UIView::alpha() const
{
    return read(node_, &ViewNode::alpha);
}

void UIView::setAlpha(double alpha) const
{
    assign(node_, &ViewNode::alpha, alpha);
}

UIColor UIView::backgroundColor() const
{
    return read(node_, &ViewNode::background);
}

void UIView::setBackgroundColor(const UIColor& color) const
{
    assign(node_, &ViewNode::background, color);
}

bool UIView::isOpaque() const
{
    return read(node_, &ViewNode::opaque);
}

void UIView::setOpaque(bool opaque) const
{
    assign(node_, &ViewNode::opaque, opaque);
}

int UIView::autoresizingMask() const
{
    return read(node_, &ViewNode::autoresizing_mask);
}

void UIView::setAutoresizingMask(int mask) const
{
    assign(node_, &ViewNode::autoresizing_mask, mask);
}

bool UIView::isUserInteractionEnabled() const
{
    return read(node_, &ViewNode::takes_touches);
}

void UIView::setUserInteractionEnabled(bool enabled) const
{
    assign(node_, &ViewNode::takes_touches, enabled);
}

int UIView::contentMode() const
{
    return read(node_, &ViewNode::content_mode);
}

void UIView::setContentMode(int mode) const
{
    assign(node_, &ViewNode::content_mode, mode);
}

NSString UIView::accessibilityLabel() const
{
    return read(node_, &ViewNode::accessibility_label);
}

void UIView::setAccessibilityLabel(const NSString& label) const
{
    assign(node_, &ViewNode::accessibility_label, label);
}

// --------------------------------------------------------------------------------------------------------- Hierarchy

UIView UIView::superview() const
{
    return node_ && node_->parent ? UIView(node_->parent->shared_from_this()) : UIView();
}

std::vector<UIView> UIView::subviews() const
{
    if (!node_)
        return {};
    std::vector<UIView> views;
    views.reserve(node_->subviews.size());
    for (const auto& subview : node_->subviews)
        views.emplace_back(subview);
    return views;
}

void UIView::addSubview(const UIView& child) const
{
    // A copy: the handle passed in may be owned by the old parent, which releases the child.
    const std::shared_ptr<ViewNode> added = child.node_;
    if (!node_ || !added || stands_in_or_is(node_.get(), added.get()))
        return;
    if (added->parent == node_.get() && *std::prev(top_for(*added, *node_)) == added)
        return;
    detach(*added);
    node_->subviews.insert(top_for(*added, *node_), added);
    added->parent = node_.get();
    node_->changed();
    added->changed();
    fill_parent(*added);
}

void UIView::removeFromSuperview() const
{
    if (node_)
        detach(*node_);
}

void present_over(const UIView& view, const UIView& presenter)
{
    ViewNode* top = presenter.node().get();
    while (top && top->parent)
        top = top->parent;
    if (!view || !top || top->kind != ViewNode::Kind::Window)
        return;
    view.node()->stays_on_top = true;
    UIView(top->shared_from_this()).addSubview(view);
}

void end_presentation_of(const UIView& view)
{
    view.removeFromSuperview();
    if (view)
        view.node()->stays_on_top = false;
}

void UIView::bringSubviewToFront(const UIView& child) const
{
    if (child && child.node_->parent == node_.get())
        addSubview(child);
}

} // namespace qoro
