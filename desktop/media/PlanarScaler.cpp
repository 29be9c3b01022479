#include "desktop/media/PlanarScaler.h"

#include <algorithm>
#include <cmath>

namespace qoro
{

namespace
{

/// Bytes that PixelRows may read past the end of a row.
constexpr std::size_t Margin = 16;

/// Lengths after each halving of a row or column of samples.
std::vector<std::size_t> halvings(std::size_t length, std::size_t wanted)
{
    std::vector<std::size_t> lengths{length};
    while (wanted * 2 < lengths.back() && lengths.back() >= 4)
        lengths.push_back(lengths.back() / 2);
    return lengths;
}

/// Where the pixels of the result lie among a plane's samples.
/// @param times how often the samples have been halved
std::vector<double> places(std::size_t wanted, double picture, double first, double step, std::size_t times)
{
    std::vector<double> found;
    for (std::size_t i = 0; i < wanted; ++i) {
        const double in_picture = (static_cast<double>(i) + 0.5) * picture / static_cast<double>(wanted);
        const double sample = (in_picture - first) / step;
        found.push_back(std::ldexp(sample + 0.5, -static_cast<int>(times)) - 0.5);
    }
    return found;
}

bool are_samples(const std::vector<double>& places, std::size_t length)
{
    if (places.size() != length)
        return false;
    for (std::size_t i = 0; i < length; ++i)
        if (places[i] != static_cast<double>(i))
            return false;
    return true;
}

} // namespace

PlanarScaler::PlanarScaler(const Layout& source, int width, int height, const PixelRows& rows)
    : rows_(rows), colours_(source.colours), width_(static_cast<std::size_t>(width)),
      height_(static_cast<std::size_t>(height)), parts_{part_of(source.planes[0], source, width_, height_),
                                                        part_of(source.planes[1], source, width_, height_),
                                                        part_of(source.planes[2], source, width_, height_)}
{
}

PlanarScaler::Part PlanarScaler::part_of(const Plane& plane, const Layout& source, std::size_t width,
                                         std::size_t height)
{
    const std::vector<std::size_t> widths = halvings(static_cast<std::size_t>(plane.width), width);
    const std::vector<std::size_t> heights = halvings(static_cast<std::size_t>(plane.height), height);
    Part part;
    for (std::size_t times = 0; times < std::max(widths.size(), heights.size()); ++times)
        part.sizes.push_back(
            {widths[std::min(times, widths.size() - 1)], heights[std::min(times, heights.size() - 1)]});
    for (std::size_t buffer = 0; buffer < std::min<std::size_t>(part.sizes.size() - 1, 2); ++buffer)
        part.halved[buffer].resize(part.sizes[buffer + 1][0] * part.sizes[buffer + 1][1]);

    const auto [columns, rows] = part.sizes.back();
    const std::vector<double> across = places(width, source.width, plane.first_x, plane.step_x, widths.size() - 1);
    if (!are_samples(across, columns))
        part.columns.emplace(across, std::max<std::size_t>(columns, 2));
    for (const double wanted : places(height, source.height, plane.first_y, plane.step_y, heights.size() - 1)) {
        const double place = std::clamp(wanted, 0.0, static_cast<double>(rows - 1));
        const auto above = static_cast<std::size_t>(place);
        part.rows.push_back(
            {above, static_cast<SampleWeight>(std::lround((place - static_cast<double>(above)) * 128))});
    }
    part.mixed.resize(columns + Margin);
    part.row.resize(width);
    return part;
}

PlanarScaler::Samples PlanarScaler::halve(Part& part, Samples samples) const
{
    for (std::size_t times = 1; times < part.sizes.size(); ++times) {
        const auto [from_width, from_height] = part.sizes[times - 1];
        const auto [width, height] = part.sizes[times];
        std::vector<std::uint8_t>& to = part.halved[(times - 1) % 2];
        const std::size_t rows_each = height < from_height ? 2 : 1;
        for (std::size_t y = 0; y < height; ++y) {
            const std::uint8_t* above = samples.first + static_cast<std::ptrdiff_t>(y * rows_each) * samples.stride;
            const std::uint8_t* below = rows_each == 2 ? above + samples.stride : above;
            std::uint8_t* out = to.data() + y * width;
            if (width < from_width)
                rows_.halve(above, below, out, width);
            else
                rows_.mix(above, below, 64, out, width);
        }
        samples = {to.data(), static_cast<std::ptrdiff_t>(width)};
    }
    return samples;
}

const std::uint8_t* PlanarScaler::make_row(Part& part, const Samples& samples, std::size_t y) const
{
    const auto [above, weight] = part.rows[y];
    const std::uint8_t* row = samples.first + static_cast<std::ptrdiff_t>(above) * samples.stride;
    const std::size_t length = part.sizes.back()[0];
    if (weight == 128)
        row += samples.stride;
    else if (weight > 0)
        rows_.mix(row, row + samples.stride, weight, part.mixed.data(), length);
    const bool is_mixed = weight > 0 && weight < 128;
    if (!part.columns)
        return is_mixed ? part.mixed.data() : row;
    // Only the own row may be read past its end.
    if (!is_mixed)
        std::copy_n(row, length, part.mixed.data());
    if (length == 1)
        part.mixed[1] = part.mixed[0];
    rows_.resample(part.mixed.data(), *part.columns, part.row.data());
    return part.row.data();
}

void PlanarScaler::scale(const std::array<Samples, 3>& planes, std::uint8_t* out, std::size_t stride)
{
    std::array<Samples, 3> halved;
    for (std::size_t i = 0; i < planes.size(); ++i)
        halved[i] = halve(parts_[i], planes[i]);
    for (std::size_t y = 0; y < height_; ++y)
        rows_.colour(make_row(parts_[0], halved[0], y), make_row(parts_[1], halved[1], y),
                     make_row(parts_[2], halved[2], y), colours_, out + y * stride, width_);
}

} // namespace qoro
