#include "workbench/explore/StateReader.h"

#include <algorithm>

namespace qoro
{

void StateReader::windows()
{
    auto& list = platform_.shared<WindowList>();
    auto all = list.all();
    out_.add("windows", all.size());
    for (const auto& window : all)
        view("window", window.get());
    // The order in which they were made key, as places.
    std::ranges::stable_sort(all, {}, [](const auto& window) { return window->shown_serial; });
    for (const auto& window : all) {
        out_.add("window.shown", window->shown_serial != 0);
        view("window.shown", window.get());
    }
}

void StateReader::view(std::string_view name, const ViewNode* node)
{
    if (!node) {
        out_.add(name, -1);
        return;
    }
    const auto [known, is_new] = numbers_.try_emplace(node, numbers_.size());
    out_.add(name, known->second);
    if (is_new)
        node_state(*node);
}

void StateReader::node_state(const ViewNode& node)
{
    out_.add("kind", node.kind);
    out_.add("hidden", node.hidden);
    // Its clock shows the time.
    const bool shows_time = node.kind == ViewNode::Kind::Label || node.kind == ViewNode::Kind::CountDown;
    if (whole_ || !shows_time) {
        out_.add("bounds", node.bounds);
        out_.add("center", node.center);
        out_.add("frame", node.frame);
        out_.add("text", node.text);
        out_.add("seconds", node.seconds);
    }
    out_.add("angle", node.angle);
    out_.add("fillsParent", node.fills_parent);
    out_.add("onResize", static_cast<bool>(node.on_resize));
    out_.add("alpha", node.alpha);
    out_.add("background", node.background);
    out_.add("opaque", node.opaque);
    out_.add("cornerRadius", node.corner_radius);
    out_.add("autoresizing", node.autoresizing_mask);
    out_.add("contentMode", node.content_mode);
    out_.add("label", node.accessibility_label);
    out_.add("takesTouches", node.takes_touches);
    out_.add("staysOnTop", node.stays_on_top);
    out_.add("image", static_cast<bool>(node.image));
    out_.add("image", node.image.accessibilityIdentifier());
    out_.add("font", std::string_view(node.font.family));
    out_.add("font", node.font.size);
    out_.add("textColor", node.text_color);
    out_.add("symbol", node.symbol);
    out_.add("shadow", node.text_shadow_color);
    out_.add("shadow", node.text_shadow_offset);
    out_.add("lineBreak", node.line_break_mode);
    out_.add("alignment", node.text_alignment);
    out_.add("lines", node.number_of_lines);
    out_.add("highlighted", node.highlighted);
    out_.add("titleShadow", node.title_shadow_color);
    out_.add("showsTouch", node.shows_touch);
    out_.add("targets", node.targets.size());
    for (const Action& target : node.targets)
        action("targets", target);
    out_.add("level", node.window_level);
    out_.add("key", node.key_window);
    out_.add("root", type_name(node.window_root.get()));
    out_.add("secondsFull", node.seconds_full);
    out_.add("ringWidth", node.ring_width);
    out_.add("volumeSlider", node.shows_volume_slider);
    out_.add("routeButton", node.shows_route_button);
    out_.add("fitsPage", node.scales_page_to_fit);
    out_.add("touched", node.page_touched);
    if (node.page_touched)
        time_counts();
    out_.add("scaling", node.scaling_mode);
    out_.add("web", place(static_cast<SimulatedWebEngine*>(node.web.get()), pages_));
    out_.add("video", place(static_cast<SimulatedPlayer*>(node.player), players_));
    if (node.window_root)
        screen("root", node.window_root.get());
    view("titleLabel", node.title_label.get());
    view("parent", node.parent);
    out_.add("subviews", node.subviews.size());
    for (const auto& subview : node.subviews)
        view("subview", subview.get());
}

void StateReader::action(std::string_view name, const Action& action)
{
    const auto target = action.target();
    out_.add(name, action.name());
    out_.add(name, target == nullptr ? "gone" : target == ad_ ? "ad" : type_name(target.get()));
}

void StateReader::screen(std::string_view name, const UIViewController* screen)
{
    out_.add(name, type_name(screen));
    if (!screen)
        return;
    view("screen.view", screen->view().node().get());
    out_.add("screen.presents", type_name(screen->presenting_.get()));
    out_.add("screen.presenter", type_name(screen->presenter_.lock().get()));
}

} // namespace qoro
