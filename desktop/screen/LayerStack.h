#pragma once

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

typedef struct _GdkSnapshot GtkSnapshot;
typedef struct _GtkWidget GtkWidget;

namespace qoro
{

/// A view on the screen.
struct Layer {
    std::weak_ptr<ViewNode> view;
    GtkWidget* widget = nullptr;
    bool shown = false;
    WidgetPlace place;
    double opacity = 1;
    /// Stacking position of its window, and its own among all views.
    std::size_t window = 0;
    std::size_t height = 0;
    /// Clip rectangle of its window in window points; only used if it does not cover the screen.
    bool clipped = false;
    CGRect clip;
};

/// The views of a platform as layers: one widget for each view, all of them children of one surface, each with its
/// complete placement. Rotations that cancel each other cause no resampling, and moving a view in the tree does not
/// reparent its widget. Main thread only.
class LayerStack
{
public:
    /// Callbacks of the layers, while the stack exists.
    struct News {
        /// A video has a new picture, which the next frame will show.
        std::function<void()> picture;
        /// Assistive technology has activated a control.
        std::function<void(const std::shared_ptr<ViewNode>& view)> activated;
    };

    /// @param platform its device supplies screen size and orientation
    /// @param surface parent of the widgets, which it releases at its own end; must outlive the stack
    LayerStack(Platform& platform, GtkWidget* surface, News news);
    LayerStack(const LayerStack&) = delete;
    LayerStack& operator=(const LayerStack&) = delete;

    /// Visits the view tree: creates, updates, orders and retires the widgets. A size or rotation of the device that
    /// has changed resizes the surface.
    void walk();
    /// Places the layers in a surface of a new size.
    void allocate(int width, int height);
    /// Draws the device with its layers.
    void draw(GtkSnapshot* snapshot) const;
    /// Calls a function while the device is placed unscaled at the surface's origin, independent of the monitor's size.
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
    void follow_device();
    void add(const std::shared_ptr<ViewNode>& view, double opacity, const ViewNode& in_window,
             std::size_t window_number);
    void find_reach();
    NodeReach reach_of(const Layer& layer);
    void retire();
    void order_widgets();
    void place_all();
    void place(const Layer& layer);

    Platform& platform_;
    GtkWidget* const surface_;
    const News news_;
    Viewport viewport_;
    std::unordered_map<std::uint64_t, Layer> layers_; // keyed by ViewNode::serial
    std::vector<Layer*> from_below_;
};

} // namespace qoro
