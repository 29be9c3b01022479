#pragma once

#include "desktop/screen/DrawnNode.h"
#include "desktop/screen/NodeWidget.h"
#include "desktop/screen/Viewport.h"
#include "platform/Platform.h"
#include "views/ViewNode.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <unordered_map>
#include <vector>

typedef struct _GtkWidget GtkWidget;

namespace qoro
{

/// Where a view is on the screen.
struct LayerPlace {
    /// In points of the held device.
    WidgetPlace place;
    /// Of the view and its parents together, 0 to 1.
    double opacity = 1;
    /// Whether its window clips it: not where the window covers the screen.
    bool clipped = false;
    /// Frame of its window, in points of the held device.
    CGRect clip;

    friend bool operator==(const LayerPlace&, const LayerPlace&) = default;
};

/// A view on the screen.
struct Layer : LayerPlace {
    std::weak_ptr<ViewNode> view;
    /// A child of the surface.
    GtkWidget* widget = nullptr;
    /// Whether the last walk found the view in a visible window, with neither it nor a parent hidden.
    bool shown = false;
    /// Stacking position of its window among the windows, and its own among all shown views; 0 is the bottom.
    std::size_t window = 0;
    std::size_t height = 0;
};

/// The views of a platform as layers: one widget for each view, all of them children of one surface, each with its
/// complete placement. Rotations that cancel each other cause no resampling, and moving a view in the tree does not
/// reparent its widget. Main thread only.
class LayerStack
{
public:
    /// Callbacks of the layers, while the stack exists.
    struct News {
        /// A video has a new picture. Returns whether it is on the screen; otherwise the next frame shows it.
        std::function<bool(const Layer& video)> picture;
        /// Assistive technology has activated a control.
        std::function<void(const std::shared_ptr<ViewNode>& view)> activated;
    };

    /// @param platform its device supplies screen size and orientation
    /// @param surface parent of the widgets, which it releases when it is destroyed; must outlive the stack
    /// @param max_scale surface points per point of the screen at most
    LayerStack(Platform& platform, GtkWidget* surface, double max_scale, News news);
    LayerStack(const LayerStack&) = delete;
    LayerStack& operator=(const LayerStack&) = delete;

    /// Visits the view tree: creates, updates, orders and hides the widgets, and removes those of destroyed views. If
    /// the device's size or rotation has changed, the surface is resized. Widgets whose views look different are drawn
    /// anew.
    /// @return whether views have come, gone or moved: the surface has to place and draw them
    bool walk();
    /// Places the layers in a surface of a new size, in surface points.
    void allocate(int width, int height);
    /// What each of from_below() draws; null for nothing.
    std::vector<DrawnNode> draw() const;
    /// Calls a function while the device is placed unscaled at the surface's origin, so that a picture of it does not
    /// depend on the monitor's size.
    void unscaled(const std::function<void()>& action);

    const Viewport& viewport() const { return viewport_; }
    /// The shown layers, bottom first. Valid until the next walk.
    const std::vector<Layer*>& from_below() const { return from_below_; }
    /// The layer of a view, shown or not; null if the view was never shown. Valid until the next walk.
    Layer* find(const ViewNode& view);
    /// Calls a function for each layer, shown or not.
    template <typename F>
    void for_each(F&& action)
    {
        for (auto& [serial, layer] : layers_)
            action(layer);
    }

private:
    bool follow_device();
    void add(const std::shared_ptr<ViewNode>& view, double opacity, const ViewNode& in_window,
             std::size_t window_number);
    void find_reach();
    NodeReach reach_of(const Layer& layer);
    void retire();
    void order_widgets();
    void place_all();
    void place(const Layer& layer);
    void tell_resolution(const Layer& layer);
    DrawnNode draw(const Layer& layer) const;

    Platform& platform_;
    GtkWidget* const surface_;
    const News news_;
    Viewport viewport_;
    std::unordered_map<std::uint64_t, Layer> layers_; // keyed by ViewNode::serial
    std::vector<Layer*> from_below_;
    /// Whether the appearance of a shown view has changed since the last walk began.
    bool repainted_ = false;
};

} // namespace qoro
