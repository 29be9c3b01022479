#include "workbench/Sight.h"

#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "formats/Fields.h"
#include "kit/PagePlace.h"
#include "kit/PageScreen.h"
#include "simulator/Simulation.h"
#include "views/Turns.h"
#include "views/ViewNode.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>
#include <tuple>

namespace qoro
{

namespace
{

using Kind = ViewNode::Kind;

CGRect rect_on_screen(const Placement& place)
{
    const CGSize extents = turned_extents(place.bounds, place.angle);
    return {place.center.x - extents.width / 2, place.center.y - extents.height / 2, extents.width, extents.height};
}

/// Whether the view and all its ancestors are shown, and the topmost is a window.
bool is_in_shown_window(const ViewNode& view)
{
    const ViewNode* each = &view;
    while (!each->hidden && each->parent)
        each = each->parent;
    return !each->hidden && each->kind == Kind::Window;
}

SeenControl seen(std::string_view name, const ViewNode& view, CGSize screen)
{
    const Placement place = placement_on_screen(view);
    const int turns = static_cast<int>(std::lround(place.angle / (std::numbers::pi / 2)));
    return {.name = name,
            .frame = rect_on_screen(place),
            .turns = (turns % 4 + 4) % 4,
            .visible = visible_part(view, screen),
            .touchable = touchable_point(view),
            .is_button = view.kind == Kind::Button,
            .text = view.text ? view.text.text() : std::string()};
}

/// Calls a function for each view of the shown windows that is not hidden.
template <typename Visit>
void visit_shown(const ViewNode& view, const Visit& visit)
{
    if (view.hidden)
        return;
    visit(view);
    for (const auto& subview : view.subviews)
        visit_shown(*subview, visit);
}

bool receives_touch_in_its_middle(Platform& platform, const ViewNode& view)
{
    return hit_test(platform, placement_on_screen(view).center).get() == &view;
}

/// Whether a button is the close guard's, which is in a window of its own.
bool is_guards(const ViewNode& view)
{
    return view.kind == Kind::Button && view.symbol == Symbol::CloseOnDisc;
}

bool has_picture(const ViewNode& video)
{
    return video.player && (video.player->load_state() & MPMovieLoadStatePlayable) != 0;
}

} // namespace

bool Sight::alike(const Sight& other) const
{
    const auto all = [](const Sight& sight) {
        return std::tie(sight.open, sight.controls, sight.close, sight.video, sight.page, sight.other_screen,
                        sight.sound);
    };
    return all(*this) == all(other);
}

Sight look_at(Simulation& simulation)
{
    SimulatedPlatform& platform = simulation.platform();
    Sight sight{.at = platform.loop().now_microseconds()};
    const CGSize screen = platform.device().facts().screen.value_or(CGSize{});
    sight.other_screen = PageScreen::topmost(platform) != nullptr;
    const auto host_window = simulation.host_window();
    for (const auto& window : platform.shared<WindowList>().visible_from_below()) {
        sight.open = sight.open || window != host_window;
        visit_shown(*window, [&](const ViewNode& view) {
            if (is_guards(view) && receives_touch_in_its_middle(platform, view))
                sight.close = true;
            if (view.kind == Kind::Video && has_picture(view) && visible_part(view, screen))
                sight.video = true;
            if (view.kind == Kind::WebView && view.web && view.web->page_state().has_content &&
                visible_part(view, screen))
                sight.page = true;
        });
    }
    const auto ad = simulation.living();
    if (!ad)
        return sight;
    for (const ViewField& field : view_fields()) {
        const auto node = field.get(*ad).node();
        if (!node || !is_in_shown_window(*node))
            continue;
        const bool shown = node->kind == Kind::Button || node->kind == Kind::Label || node->kind == Kind::CountDown ||
                           node->kind == Kind::Spinner;
        if (shown)
            sight.controls.push_back(seen(field.name, *node, screen));
    }
    const auto close = ad->btnClose.node();
    sight.close = sight.close || (close && !close->hidden && receives_touch_in_its_middle(platform, *close));
    sight.sound = ad->qoroMoviePlayer.playbackState() == MPMoviePlaybackStatePlaying && platform.volume().value() > 0;
    return sight;
}

} // namespace qoro
