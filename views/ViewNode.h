#pragma once

#include "platform/Foundation.h"
#include "platform/Geometry.h"
#include "platform/UIKit.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qoro
{

/// A drawing in lines, crisp at every scale.
enum class Symbol : std::uint8_t { None, Close, CloseOnDisc, Back, Forward, Reload, Lock, OpenLock };

/// One view of the tree: what every view has, and what its kind adds. No display knows more than this, and nothing here
/// knows a display. A parent holds its subviews; a view that nothing holds is gone.
struct ViewNode : std::enable_shared_from_this<ViewNode> {
    enum class Kind { View, Button, Label, ImageView, Window, Slider, VolumeView, WebView, Video, CountDown, Spinner };

    explicit ViewNode(Kind of_kind);
    ~ViewNode();
    ViewNode(const ViewNode&) = delete;
    ViewNode& operator=(const ViewNode&) = delete;

    const Kind kind;
    /// The platform that it was made on.
    Platform& platform;
    /// Distinct for every view of a platform, in the order of their making.
    const std::uint64_t serial;
    /// Grows with every change of this view itself (its subviews' own changes apart); a display compares it.
    std::uint64_t revision = 1;

    // ------------------------------------------------------------------------------------------------- geometry

    CGSize bounds;
    CGPoint center;
    /// Radians in (−π, π]; clockwise.
    double angle = 0;
    /// What reading the frame gives: at whole quarter turns exactly what was set, as long as nothing else moved the
    /// view.
    CGRect frame;
    /// It is as large as its parent, and stays so; a window that fills the screen leaves it as it is.
    bool fills_parent = false;
    /// Called when the size has changed; may be empty.
    std::function<void()> on_resize;

    // ----------------------------------------------------------------------------------------------- appearance

    bool hidden = false;
    double alpha = 1;
    UIColor background;
    bool opaque = true;
    /// Points.
    double corner_radius = 0;
    int autoresizing_mask = 0;
    int content_mode = 0;
    /// What it is called for whoever can't see it; null where its look says it.
    NSString accessibility_label;
    /// Whether touches reach it. Labels, image views, spinners and the countdown take none by default.
    bool takes_touches = true;

    // ------------------------------------------------------------------------------------------------------ tree

    ViewNode* parent = nullptr;
    /// Presented: it stays above those of its siblings that are not, whichever came later.
    bool stays_on_top = false;
    /// From the lowest to the topmost.
    std::vector<std::shared_ptr<ViewNode>> subviews;

    // ------------------------------------------------------------------------------------- what the kinds add

    /// Buttons and labels; null when none was set.
    NSString text;
    UIImage image;              // image views, and the background of buttons
    FontSpec font;              // labels
    UIColor text_color;         // labels, and the symbols of the others
    Symbol symbol{};            // buttons and image views; in the middle
    UIColor text_shadow_color;  // labels
    CGSize text_shadow_offset;  // labels
    int line_break_mode = 0;    // labels
    int text_alignment = 0;     // labels
    int number_of_lines = 1;    // labels
    bool highlighted = false;   // labels
    UIColor title_shadow_color; // buttons
    bool shows_touch = false;   // buttons
    /// Buttons: the label that draws the title. It stands in no parent.
    std::shared_ptr<ViewNode> title_label;
    std::vector<Action> targets; // buttons

    double window_level = 0;                       // windows
    bool key_window = false;                       // windows
    std::uint64_t shown_serial = 0;                // windows: grows with each makeKeyAndVisible on the platform
    std::shared_ptr<UIViewController> window_root; // windows

    double seconds_full = 0; // countdown: what a full ring stands for
    double seconds = 0;      // countdown: what it shows
    double ring_width = 0;   // countdown: points

    bool shows_volume_slider = true; // volume views
    bool shows_route_button = true;  // volume views
    std::unique_ptr<WebEngine> web;  // web views
    bool scales_page_to_fit = false; // web views
    /// Web views: when the viewer last touched the page, in seconds of the main loop; absent when nobody has, or the
    /// page has made use of it.
    std::optional<double> page_touched;
    /// Video views: the engine whose picture is shown, owned by the player, which outlives or clears it; and how.
    PlayerEngine* player = nullptr;
    int scaling_mode = MPMovieScalingModeAspectFit;

    /// Says that something to be seen has changed.
    void changed();
};

/// The windows of a platform.
struct WindowList {
    std::vector<std::weak_ptr<ViewNode>> windows; // in the order of their making
    std::uint64_t next_shown_serial = 1;
    std::uint64_t next_view_serial = 1;

    /// Those that something still holds, oldest first.
    std::vector<std::shared_ptr<ViewNode>> all();
    /// Those that are not hidden, from the lowest to the topmost: by level, then by the last makeKeyAndVisible.
    std::vector<std::shared_ptr<ViewNode>> visible_from_below();
};

/// Position and rotation of a view on the screen: where its bounds' top left corner lies, turned by an angle.
struct Placement {
    /// The middle of the view in screen points.
    CGPoint center;
    CGSize bounds;
    /// Radians, clockwise, summed over its parents, in (−π, π].
    double angle = 0;
};

/// Where a view stands on the screen, its window's own place included; for a view in no window, in its topmost parent's
/// surroundings.
Placement placement_on_screen(const ViewNode& view);

/// What a finger at a point of the screen reaches: the topmost view, by the rules of touch; null when nothing does. A
/// web view takes what its own subviews do not.
std::shared_ptr<ViewNode> hit_test(Platform& platform, CGPoint point);

/// A point of the screen at which a finger reaches a view; absent where it reaches it nowhere: it is hidden, covered,
/// away from the screen, or takes no touches. What is covered but for a sliver counts as covered.
std::optional<CGPoint> touchable_point(const ViewNode& view);

/// Whether a window is as large as the screen because nobody ever said how large it is.
inline bool fills_screen(const ViewNode& window)
{
    return window.bounds == CGSize{} && window.center == CGPoint{};
}

/// Gives a view that fills its parent the size that it is to have now.
void fill_parent(ViewNode& view);

/// Presents a view: over everything in the window that another view stands in. Nothing while that stands in none.
void present_over(const UIView& view, const UIView& presenter);
/// Takes a presented view off the screen.
void end_presentation_of(const UIView& view);

/// A touch and release at a point of the screen: a button's targets run, a page is touched. Tells what was reached;
/// null for nothing.
std::shared_ptr<ViewNode> touch(Platform& platform, CGPoint point);

} // namespace qoro
