#pragma once

#include "platform/Export.h"
#include "platform/Foundation.h"
#include "platform/Geometry.h"
#include "platform/UIKit.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace QORO_EXPORT qoro
{

/// A vector symbol, drawn by the display at any scale.
enum class Symbol : std::uint8_t { Blank, Close, CloseOnDisc, Back, Forward, Reload, Lock, OpenLock };

/// A view in the tree: the state common to all views, and that of each kind. The complete interface between views and
/// displays; views do not depend on a display. A parent owns its subviews; a view without an owner is destroyed.
struct ViewNode : std::enable_shared_from_this<ViewNode> {
    /// The handle's class: View for UIView, Video for a player's view, CountDown and Spinner for views of the kit.
    enum class Kind { View, Button, Label, ImageView, Window, Slider, VolumeView, WebView, Video, CountDown, Spinner };

    /// Creates a node on the current platform. A window is created hidden.
    explicit ViewNode(Kind of_kind);
    ~ViewNode();
    ViewNode(const ViewNode&) = delete;
    ViewNode& operator=(const ViewNode&) = delete;

    /// Decides which members of the state below are used.
    const Kind kind;
    /// The platform that was current at creation.
    Platform& platform;
    /// Unique per platform, in order of creation.
    const std::uint64_t serial;
    /// Incremented by every change of the view itself, but not of its subviews. A display compares it to detect
    /// changes.
    std::uint64_t revision = 1;

    // ------------------------------------------------------------------------------------------------- Geometry

    /// The view's own size before rotation, in points.
    CGSize bounds;
    /// The middle of the frame, in the parent's coordinates, in points.
    CGPoint center;
    /// Rotation about the centre: radians in (−π, π], clockwise.
    double angle = 0;
    /// The frame in the parent's coordinates. At quarter turns it is exactly the frame that was set, until another
    /// setter moves the view.
    CGRect frame;
    /// The view takes the size of its parent and follows it, unless the parent is a window that fills the screen.
    bool fills_parent = false;
    /// Called after a change of the size; may be empty.
    std::function<void()> on_resize;

    // ----------------------------------------------------------------------------------------------- Appearance

    /// Hides the view with its subviews; a parent can hide it too.
    bool hidden = false;
    /// Opacity of the view with its subviews, 0 to 1.
    double alpha = 1;
    /// Null for a view without a background.
    UIColor background;
    /// Web and video views: see UIView::setOpaque.
    bool opaque = true;
    /// Points.
    double corner_radius = 0;
    /// Stored only; does not affect layout.
    int autoresizing_mask = 0;
    /// Image views: UIViewContentModeScaleAspectFit, or any other value to stretch the picture.
    int content_mode = 0;
    /// Accessible name; null derives it from the view's text, picture or action.
    NSString accessibility_label;
    /// Whether it receives touches. Off by default for labels, image views, spinners and the countdown.
    bool takes_touches = true;

    // ------------------------------------------------------------------------------------------------- Hierarchy

    /// Null for a window, and for a view without a parent.
    ViewNode* parent = nullptr;
    /// Presented: stays above siblings that are not, regardless of the order of addition.
    bool stays_on_top = false;
    /// From bottom to top.
    std::vector<std::shared_ptr<ViewNode>> subviews;

    // ------------------------------------------------------------------------------------- State of each kind

    /// Buttons and labels; null when not set.
    NSString text;
    /// Image views, and the background of buttons; null for none.
    UIImage image;
    /// Labels: the font.
    FontSpec font;
    /// Labels: the text's colour. Elsewhere the symbol's. Null is black, or white in a button's title label.
    UIColor text_color;
    /// Buttons and image views: drawn centred.
    Symbol symbol{};
    /// Labels: as UILabel describes them.
    /// @{
    UIColor text_shadow_color;
    CGSize text_shadow_offset;
    int line_break_mode = 0;
    int text_alignment = 0;
    int number_of_lines = 1;
    bool highlighted = false;
    /// @}
    /// Buttons: as UIButton describes them.
    /// @{
    UIColor title_shadow_color;
    bool shows_touch = false;
    /// @}
    /// Buttons: the label that determines the title's font, colour and shadow offset. It has no parent.
    std::shared_ptr<ViewNode> title_label;
    /// Buttons: what a touch runs, in order.
    std::vector<Action> targets;

    /// Windows: one of a higher level covers those of lower levels.
    double window_level = 0;
    /// Windows: whether it is the platform's key window.
    bool key_window = false;
    /// Windows: order of the last makeKeyAndVisible on the platform; 0 before the first.
    std::uint64_t shown_serial = 0;
    /// Windows: the root view controller, which the window retains; null without one.
    std::shared_ptr<UIViewController> window_root;

    double seconds_full = 0; ///< Countdown: seconds of a full ring.
    double seconds = 0;      ///< Countdown: seconds shown.
    double ring_width = 0;   ///< Countdown: line width in points.

    /// Volume views: stored only.
    /// @{
    bool shows_volume_slider = true;
    bool shows_route_button = true;
    /// @}
    /// Web views: the engine; null once its listener has destroyed it.
    std::unique_ptr<WebEngine> web;
    /// Web views: whether a page wider than the view is shrunk to fit.
    bool scales_page_to_fit = false;
    /// Web views: time of the viewer's last touch of the page, in seconds of the main loop; absent before the first
    /// touch, or when the page has consumed it.
    std::optional<double> page_touched;
    /// Video views: the engine that supplies the picture. Owned by the player, which clears the pointer before
    /// destroying it. Null without a player.
    PlayerEngine* player = nullptr;
    /// Video views: how the picture fills the view.
    MPMovieScalingMode scaling_mode = MPMovieScalingModeAspectFit;

    /// Increments revision and reports a visible change.
    void changed();
};

/// The windows of a platform.
struct WindowList {
    /// In order of creation; may contain windows that no longer exist.
    std::vector<std::weak_ptr<ViewNode>> windows;
    /// ViewNode::shown_serial of the next makeKeyAndVisible.
    std::uint64_t next_shown_serial = 1;
    /// ViewNode::serial of the next view, of any kind.
    std::uint64_t next_view_serial = 1;
    /// Number of hit tests so far, as a measure of their cost.
    std::uint64_t hit_tests = 0;

    /// All windows that still exist, in order of creation.
    std::vector<std::shared_ptr<ViewNode>> all();
    /// The windows that are not hidden, from bottom to top: by level, then by the last makeKeyAndVisible.
    std::vector<std::shared_ptr<ViewNode>> visible_from_below();
};

/// Position and rotation of a view on the screen.
struct Placement {
    /// Centre of the view, in screen points.
    CGPoint center;
    /// The view's own size before rotation, in points.
    CGSize bounds;
    /// Sum of its own and its ancestors' angles: radians in (−π, π], clockwise.
    double angle = 0;
};

/// Placement of a view on the screen, including its window's position. For a view outside any window it is relative to
/// the coordinates that its topmost ancestor is placed in.
Placement placement_on_screen(const ViewNode& view);

/// The view that receives a touch at a point of the screen; null without one. A web view receives touches that its
/// subviews do not.
std::shared_ptr<ViewNode> hit_test(Platform& platform, CGPoint point);

/// A point of the screen at which a touch reaches the view. Absent when the view is hidden, covered, off screen or
/// takes no touches. Only a few points are sampled, so a view that is covered except for a sliver counts as covered.
std::optional<CGPoint> touchable_point(const ViewNode& view);

/// Whether a window fills the screen because it was never given a frame.
inline bool fills_screen(const ViewNode& window)
{
    return window.bounds == CGSize{} && window.center == CGPoint{};
}

/// Resizes a view with fills_parent to its parent's current size.
void fill_parent(ViewNode& view);

/// Presents a view above everything in the presenter's window. No effect when the presenter is in no window.
void present_over(const UIView& view, const UIView& presenter);
/// Removes a presented view from the screen.
void end_presentation_of(const UIView& view);

/// Delivers a touch and release at a point of the screen: runs a button's targets, or records a touch of the page.
/// @return the view touched; null without one
std::shared_ptr<ViewNode> touch(Platform& platform, CGPoint point);
/// As touch(), to the view that a hit test has found; null has no effect.
void touch_view(Platform& platform, const std::shared_ptr<ViewNode>& view);

} // namespace qoro
