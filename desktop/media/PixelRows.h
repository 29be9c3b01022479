#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace qoro
{

/// Weight of the second of two samples; the first has 128 less it. 1 to 127.
using SampleWeight = std::uint8_t;

/// Where the samples of a resampled row lie in its source row: each is mixed from two neighbours.
class RowPlan
{
public:
    /// Samples of which one group of the plan is made. They lie within 16 of the source row.
    static constexpr std::size_t Group = 8;

    /// @param places of the samples in the source row, in samples, each at most twice as far from the one before as
    ///        there are samples between them; places outside the row mean its first or last sample
    /// @param source_length samples of the source row, above 1
    RowPlan(std::span<const double> places, std::size_t source_length);

    std::size_t size() const { return firsts_.size(); }

    /// A group, in the order in which the machine reads it: of every sample, where in the sixteen the two neighbours
    /// are, and their weights.
    struct alignas(16) Step {
        std::uint8_t neighbours[2 * Group];
        std::uint8_t weights[2 * Group];
        std::size_t first;
    };
    const std::vector<Step>& steps() const { return steps_; }
    /// The first neighbour of a sample, and the weight of the second.
    std::size_t first_of(std::size_t sample) const { return firsts_[sample]; }
    SampleWeight weight_of(std::size_t sample) const { return weights_[sample]; }

private:
    std::vector<std::size_t> firsts_;
    std::vector<SampleWeight> weights_;
    /// Of whole groups only.
    std::vector<Step> steps_;
};

/// Converts luma and chroma to colours, in 1/32 of a step of a colour.
struct RowColours {
    /// Of luma, times 256 (unsigned); and what is added to it.
    std::uint16_t luma;
    std::int16_t offset;
    /// Of the chroma above 128, times 256.
    std::int16_t blue_of_cb;
    std::int16_t green_of_cb;
    std::int16_t green_of_cr;
    std::int16_t red_of_cr;
};

/// The operations on rows of samples of which the scaling of a picture consists, with the instructions of one kind of
/// machine. All kinds give the same results.
struct PixelRows {
    /// Means of squares of four samples, rounded.
    /// @param above, below rows of 2 × count samples
    void (*halve)(const std::uint8_t* above, const std::uint8_t* below, std::uint8_t* out, std::size_t count);
    /// Mixes two rows.
    void (*mix)(const std::uint8_t* above, const std::uint8_t* below, SampleWeight weight, std::uint8_t* out,
                std::size_t count);
    /// Resamples a row.
    /// @param row readable for 16 bytes past its end
    void (*resample)(const std::uint8_t* row, const RowPlan& plan, std::uint8_t* out);
    /// Pixels as VideoFrame describes them.
    void (*colour)(const std::uint8_t* luma, const std::uint8_t* cb, const std::uint8_t* cr, const RowColours& colours,
                   std::uint8_t* out, std::size_t count);
};

/// For every machine.
const PixelRows& plain_rows();
/// The fastest for this machine.
const PixelRows& fast_rows();

} // namespace qoro
