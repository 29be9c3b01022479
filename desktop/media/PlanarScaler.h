#pragma once

#include "desktop/media/PixelRows.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace qoro
{

/// Scales pictures in planes of luma and chroma with eight bits per sample, and converts them to VideoFrame's pixels.
/// It makes one row after the other, all of whose intermediate samples stay in the processor's first cache. Chroma is
/// scaled to the size of the result too, so its edges are as smooth as those of luma.
class PlanarScaler
{
public:
    /// How a plane's samples lie in the picture.
    struct Plane {
        int width = 0;
        int height = 0;
        /// Place of the first sample's centre and distance between two, in pixels of the picture. The centre of the
        /// first pixel is at 0.5.
        double first_x = 0.5;
        double first_y = 0.5;
        double step_x = 1;
        double step_y = 1;
    };
    struct Layout {
        int width = 0;
        int height = 0;
        /// Luma, Cb and Cr.
        std::array<Plane, 3> planes;
        RowColours colours{};
    };
    /// Samples of a plane.
    struct Samples {
        const std::uint8_t* first = nullptr;
        /// Bytes per row.
        std::ptrdiff_t stride = 0;
    };

    /// @param width, height of the result, above 0
    PlanarScaler(const Layout& source, int width, int height, const PixelRows& rows = fast_rows());

    /// @param stride bytes per row of the result, at least four per pixel
    void scale(const std::array<Samples, 3>& planes, std::uint8_t* out, std::size_t stride);

private:
    /// A row of the result lies between two rows of the source.
    struct Between {
        std::size_t above = 0;
        SampleWeight weight = 0;
    };
    /// The scaling of one plane: halved until its samples are at most twice as dense as the result's pixels, then mixed
    /// from the four nearest.
    struct Part {
        /// Sizes after each halving; the first is the plane's own.
        std::vector<std::array<std::size_t, 2>> sizes;
        std::array<std::vector<std::uint8_t>, 2> halved;
        std::vector<Between> rows;
        /// Null if a row's samples are the result's.
        std::optional<RowPlan> columns;
        std::vector<std::uint8_t> mixed;
        std::vector<std::uint8_t> row;
    };

    static Part part_of(const Plane& plane, const Layout& source, std::size_t width, std::size_t height);
    Samples halve(Part& part, Samples samples) const;
    const std::uint8_t* make_row(Part& part, const Samples& samples, std::size_t y) const;

    const PixelRows& rows_;
    const RowColours colours_;
    const std::size_t width_;
    const std::size_t height_;
    std::array<Part, 3> parts_;
};

} // namespace qoro
