#include "desktop/media/PixelRows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <random>
#include <utility>
#include <vector>

namespace qoro::test
{
namespace
{

using RowSamples = std::vector<std::uint8_t>;

/// Any samples, with the margin that resampling may read.
RowSamples any_samples(std::size_t count, unsigned seed)
{
    std::mt19937 random(seed);
    RowSamples samples(count + 16);
    for (std::uint8_t& sample : samples)
        sample = static_cast<std::uint8_t>(random());
    return samples;
}

/// Places of a row of another length that ends where the source ends.
RowPlan plan_of(std::size_t from, std::size_t to)
{
    std::vector<double> places;
    for (std::size_t i = 0; i < to; ++i)
        places.push_back((static_cast<double>(i) + 0.5) * static_cast<double>(from) / static_cast<double>(to) - 0.5);
    return {places, from};
}

struct Rows : testing::TestWithParam<const PixelRows*> {
    const PixelRows& rows = *GetParam();
};
INSTANTIATE_TEST_SUITE_P(OfEveryMachine, Rows, testing::Values(&plain_rows(), &fast_rows()));

TEST_P(Rows, HalvingTakesTheMeanOfSquares)
{
    for (const std::size_t count : {1U, 2U, 15U, 16U, 17U, 333U}) {
        const RowSamples above = any_samples(2 * count, 1);
        const RowSamples below = any_samples(2 * count, 2);
        RowSamples out(count);
        rows.halve(above.data(), below.data(), out.data(), count);
        for (std::size_t i = 0; i < count; ++i)
            EXPECT_NEAR(out[i], (above[2 * i] + above[2 * i + 1] + below[2 * i] + below[2 * i + 1]) / 4.0, 0.5)
                << i << " of " << count;
    }
}

TEST_P(Rows, MixingWeighs)
{
    for (const std::size_t count : {1U, 15U, 16U, 17U, 1280U})
        for (const SampleWeight weight : std::initializer_list<SampleWeight>{1, 64, 100, 127}) {
            const RowSamples above = any_samples(count, 3);
            const RowSamples below = any_samples(count, 4);
            RowSamples out(count);
            rows.mix(above.data(), below.data(), weight, out.data(), count);
            for (std::size_t i = 0; i < count; ++i)
                EXPECT_NEAR(out[i], (above[i] * (128.0 - weight) + below[i] * weight) / 128, 0.5)
                    << i << " of " << count;
        }
}

TEST_P(Rows, ResamplingInterpolatesBetweenNeighbours)
{
    for (const auto& [from, to] : {std::pair{1280U, 666U}, std::pair{640U, 375U}, std::pair{9U, 5U},
                                   std::pair{20U, 10U}, std::pair{100U, 333U}, std::pair{2U, 40U}}) {
        const RowSamples row = any_samples(from, 5);
        RowSamples out(to);
        rows.resample(row.data(), plan_of(from, to), out.data());
        for (std::size_t i = 0; i < to; ++i) {
            const double place =
                std::clamp((static_cast<double>(i) + 0.5) * from / to - 0.5, 0.0, static_cast<double>(from - 1));
            const auto first = std::min<std::size_t>(static_cast<std::size_t>(place), from - 2);
            const double share = place - static_cast<double>(first);
            // Weights are in steps of 1/128, and neither is less than one.
            EXPECT_NEAR(out[i], row[first] * (1 - share) + row[first + 1] * share, 0.5 + 255.0 / 128)
                << i << " of " << from << " to " << to;
        }
    }
}

TEST_P(Rows, ASingleColourStaysTheSame)
{
    for (const int value : {0, 16, 127, 128, 235, 255}) {
        const RowSamples row(256 + 16, static_cast<std::uint8_t>(value));
        RowSamples out(256);
        rows.resample(row.data(), plan_of(256, 150), out.data());
        rows.mix(out.data(), row.data(), 77, out.data(), 150);
        rows.halve(out.data(), row.data(), out.data(), 75);
        EXPECT_EQ(RowSamples(out.begin(), out.begin() + 75), RowSamples(75, static_cast<std::uint8_t>(value)));
    }
}

// ITU-R BT.709, 3.3 to 3.5 and 4.3: luma and chroma of eight bits, in the narrow range.
constexpr RowColours Bt709{9539, 16 - 596, 17305, -2058, -5137 + 772, 14686};

TEST_P(Rows, OpaquePixelsComeBlueFirst)
{
    constexpr std::size_t count = 19;
    const RowSamples luma(count, 63), cb(count, 102), cr(count, 240); // red
    RowSamples out(4 * count);
    rows.colour(luma.data(), cb.data(), cr.data(), Bt709, out.data(), count);
    for (std::size_t i = 0; i < count; ++i) {
        EXPECT_NEAR(out[4 * i], 0, 2);
        EXPECT_NEAR(out[4 * i + 1], 0, 2);
        EXPECT_NEAR(out[4 * i + 2], 255, 2);
        EXPECT_EQ(out[4 * i + 3], 255);
    }
}

TEST(FastRows, EqualThePlainOnesForEveryColour)
{
    std::vector<std::uint8_t> luma, cb, cr;
    for (int y = 0; y < 256; y += 5)
        for (int u = 0; u < 256; u += 5)
            for (int v = 0; v < 256; v += 5) {
                luma.push_back(static_cast<std::uint8_t>(y));
                cb.push_back(static_cast<std::uint8_t>(u));
                cr.push_back(static_cast<std::uint8_t>(v));
            }
    RowSamples plain(4 * luma.size()), fast(4 * luma.size());
    plain_rows().colour(luma.data(), cb.data(), cr.data(), Bt709, plain.data(), luma.size());
    fast_rows().colour(luma.data(), cb.data(), cr.data(), Bt709, fast.data(), luma.size());
    EXPECT_TRUE(plain == fast);
}

} // namespace
} // namespace qoro::test
