#include "views/NodeAccess.h"

#include <algorithm>

namespace qoro
{

namespace
{

/// Whether two images were decoded from the same bytes. Compared by bytes because the compiled-in images are decoded
/// anew for every assignment.
bool same_picture(const UIImage& a, const UIImage& b)
{
    if (!a || !b)
        return !a && !b;
    return a.data().bytes() == b.data().bytes() && a.data().length() == b.data().length();
}

const NSString& text_of(const std::shared_ptr<ViewNode>& node)
{
    static const NSString null;
    return node ? node->text : null;
}

void assign_image(const std::shared_ptr<ViewNode>& node, const UIImage& image)
{
    if (!node || same_picture(node->image, image))
        return;
    node->image = image;
    node->changed();
}

} // namespace

// ---------------------------------------------------------------------------------------------------------- UIButton

UIButton UIButton::create()
{
    UIButton button(std::make_shared<ViewNode>(ViewNode::Kind::Button));
    button.node_->title_label = std::make_shared<ViewNode>(ViewNode::Kind::Label);
    return button;
}

void UIButton::setBackgroundImage(const UIImage& image) const
{
    assign_image(node_, image);
}

UIImage UIButton::backgroundImage() const
{
    return read(node_, &ViewNode::image);
}

void UIButton::setTitle(const NSString& title) const
{
    assign(node_, &ViewNode::text, title);
    titleLabel().setText(title);
}

const NSString& UIButton::title() const
{
    return text_of(node_);
}

void UIButton::setTitleShadowColor(const UIColor& color) const
{
    assign(node_, &ViewNode::title_shadow_color, color);
}

void UIButton::setShowsTouchWhenHighlighted(bool shows) const
{
    assign(node_, &ViewNode::shows_touch, shows);
}

UILabel UIButton::titleLabel() const
{
    return UILabel(read(node_, &ViewNode::title_label));
}

void UIButton::addTarget(const Action& action) const
{
    if (!node_ || std::ranges::find(node_->targets, action) != node_->targets.end())
        return;
    node_->targets.push_back(action);
}

void UIButton::removeAllTargets() const
{
    if (node_)
        node_->targets.clear();
}

const std::vector<Action>& UIButton::targets() const
{
    static const std::vector<Action> none;
    return node_ ? node_->targets : none;
}

void UIButton::sendTouchUpInside() const
{
    // Copies: a target may change the list of targets and destroy the owner of this handle.
    const UIButton button = *this;
    const std::vector<Action> run = targets();
    Cause cause;
    cause.sender = &button;
    for (const Action& action : run)
        action(cause);
}

// ----------------------------------------------------------------------------------------------------------- UILabel

UILabel UILabel::create()
{
    return UILabel(std::make_shared<ViewNode>(ViewNode::Kind::Label));
}

const NSString& UILabel::text() const
{
    return text_of(node_);
}

void UILabel::setText(const NSString& text) const
{
    assign(node_, &ViewNode::text, text);
}

const UIFont& UILabel::font() const
{
    static const UIFont none{"", 0};
    return node_ ? node_->font : none;
}

void UILabel::setFont(const UIFont& font) const
{
    assign(node_, &ViewNode::font, font);
}

UIColor UILabel::textColor() const
{
    return read(node_, &ViewNode::text_color);
}

void UILabel::setTextColor(const UIColor& color) const
{
    assign(node_, &ViewNode::text_color, color);
}

int UILabel::lineBreakMode() const
{
    return read(node_, &ViewNode::line_break_mode);
}

void UILabel::setLineBreakMode(int mode) const
{
    assign(node_, &ViewNode::line_break_mode, mode);
}

int UILabel::textAlignment() const
{
    return read(node_, &ViewNode::text_alignment);
}

void UILabel::setTextAlignment(int alignment) const
{
    assign(node_, &ViewNode::text_alignment, alignment);
}

void UILabel::setNumberOfLines(int lines) const
{
    assign(node_, &ViewNode::number_of_lines, lines);
}

void UILabel::setHighlighted(bool highlighted) const
{
    assign(node_, &ViewNode::highlighted, highlighted);
}

void UILabel::setShadowOffset(CGSize offset) const
{
    assign(node_, &ViewNode::text_shadow_offset, offset);
}

void UILabel::setShadowColor(const UIColor& color) const
{
    assign(node_, &ViewNode::text_shadow_color, color);
}

// ------------------------------------------------------------------------------------------------------- UIImageView

UIImageView UIImageView::create()
{
    return UIImageView(std::make_shared<ViewNode>(ViewNode::Kind::ImageView));
}

void UIImageView::setImage(const UIImage& image) const
{
    assign_image(node_, image);
}

UIImage UIImageView::image() const
{
    return read(node_, &ViewNode::image);
}

// ----------------------------------------------------------------------------------------------------- Output volume

float UISlider::value() const
{
    return node_ ? node_->platform.volume().value() : 0;
}

void UISlider::setValue(float value) const
{
    if (!node_)
        return;
    node_->platform.emit(event::VolumeSet{value});
    node_->platform.volume().set_value(value);
}

MPVolumeView MPVolumeView::create(const CGRect& frame)
{
    MPVolumeView view(std::make_shared<ViewNode>(ViewNode::Kind::VolumeView));
    view.setFrame(frame);
    if (view.node_->platform.volume().has_slider())
        view.addSubview(UISlider(std::make_shared<ViewNode>(ViewNode::Kind::Slider)));
    return view;
}

void MPVolumeView::setShowsVolumeSlider(bool shows) const
{
    assign(node_, &ViewNode::shows_volume_slider, shows);
}

void MPVolumeView::setShowsRouteButton(bool shows) const
{
    assign(node_, &ViewNode::shows_route_button, shows);
}

UISlider MPVolumeView::firstSlider() const
{
    if (node_)
        for (const auto& subview : node_->subviews)
            if (subview->kind == ViewNode::Kind::Slider)
                return UISlider(subview);
    return {};
}

} // namespace qoro
