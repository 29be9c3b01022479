#include "desktop/screen/FocusOrder.h"

#include <algorithm>
#include <numeric>
#include <tuple>

namespace qoro
{

namespace
{

/// The taller box counts, so that a large control, such as a whole video, is not in a row with the small ones on top of
/// it.
bool in_one_row(const FocusStop& a, const FocusStop& b)
{
    const double shared = std::min(CGRectGetMaxY(a.box), CGRectGetMaxY(b.box)) - std::max(a.box.y, b.box.y);
    return a.window == b.window && shared >= std::max(a.box.height, b.box.height) / 2;
}

} // namespace

std::vector<std::size_t> focus_order(const std::vector<FocusStop>& stops)
{
    std::vector<std::size_t> order(stops.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::ranges::stable_sort(order, {}, [&](std::size_t n) {
        return std::tuple(-static_cast<double>(stops[n].window), stops[n].box.y, stops[n].box.x);
    });
    for (auto row = order.begin(); row != order.end();) {
        // The first of a row is its topmost; those beside it join the row.
        const FocusStop& first = stops[*row];
        const auto rest =
            std::stable_partition(row + 1, order.end(), [&](std::size_t n) { return in_one_row(first, stops[n]); });
        std::stable_sort(row, rest, [&](std::size_t a, std::size_t b) { return stops[a].box.x < stops[b].box.x; });
        row = rest;
    }
    return order;
}

} // namespace qoro
