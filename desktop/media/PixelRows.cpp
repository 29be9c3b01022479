#include "desktop/media/PixelRows.h"

#include <algorithm>
#include <cmath>

#ifdef __x86_64__
#include <tmmintrin.h>
#endif

namespace qoro
{

namespace
{

constexpr int Whole = 128;

std::uint8_t mixed(int first, int second, int weight)
{
    return static_cast<std::uint8_t>((first * (Whole - weight) + second * weight + Whole / 2) / Whole);
}

// ------------------------------------------------------------------------------------------------- Every machine

void plain_halve(const std::uint8_t* above, const std::uint8_t* below, std::uint8_t* out, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        out[i] = static_cast<std::uint8_t>((above[2 * i] + above[2 * i + 1] + below[2 * i] + below[2 * i + 1] + 2) / 4);
}

void plain_mix(const std::uint8_t* above, const std::uint8_t* below, SampleWeight weight, std::uint8_t* out,
               std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        out[i] = mixed(above[i], below[i], weight);
}

void resample_from(std::size_t begin, const std::uint8_t* row, const RowPlan& plan, std::uint8_t* out)
{
    for (std::size_t i = begin; i < plan.size(); ++i) {
        const std::uint8_t* first = row + plan.first_of(i);
        out[i] = mixed(first[0], first[1], plan.weight_of(i));
    }
}

void plain_resample(const std::uint8_t* row, const RowPlan& plan, std::uint8_t* out)
{
    resample_from(0, row, plan, out);
}

/// The upper 16 of a product's 32 bits.
int part(int factor, int sample)
{
    return factor * sample * 256 >> 16;
}

void plain_colour(const std::uint8_t* luma, const std::uint8_t* cb, const std::uint8_t* cr, const RowColours& colours,
                  std::uint8_t* out, std::size_t count)
{
    const auto step = [](int fine) { return static_cast<std::uint8_t>(std::clamp(fine >> 5, 0, 255)); };
    for (std::size_t i = 0; i < count; ++i) {
        const int grey = part(colours.luma, luma[i]) + colours.offset;
        const int blueness = cb[i] - 128;
        const int redness = cr[i] - 128;
        out[4 * i] = step(grey + part(colours.blue_of_cb, blueness));
        out[4 * i + 1] = step(grey + part(colours.green_of_cb, blueness) + part(colours.green_of_cr, redness));
        out[4 * i + 2] = step(grey + part(colours.red_of_cr, redness));
        out[4 * i + 3] = 255;
    }
}

constexpr PixelRows PlainRows{plain_halve, plain_mix, plain_resample, plain_colour};

// --------------------------------------------------------------------------------------------------------- SSSE3

#ifdef __x86_64__

#define QORO_SSSE3 __attribute__((target("ssse3")))

QORO_SSSE3 __m128i load(const std::uint8_t* from)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}

QORO_SSSE3 void store(std::uint8_t* to, __m128i bytes)
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), bytes);
}

QORO_SSSE3 __m128i halved(const std::uint8_t* above, const std::uint8_t* below)
{
    const __m128i once = _mm_set1_epi8(1);
    const __m128i sums = _mm_add_epi16(_mm_maddubs_epi16(load(above), once), _mm_maddubs_epi16(load(below), once));
    return _mm_srli_epi16(_mm_add_epi16(sums, _mm_set1_epi16(2)), 2);
}

QORO_SSSE3 void ssse3_halve(const std::uint8_t* above, const std::uint8_t* below, std::uint8_t* out, std::size_t count)
{
    std::size_t i = 0;
    for (; i + 16 <= count; i += 16)
        store(out + i, _mm_packus_epi16(halved(above + 2 * i, below + 2 * i), //
                                        halved(above + 2 * i + 16, below + 2 * i + 16)));
    plain_halve(above + 2 * i, below + 2 * i, out + i, count - i);
}

/// Eight mixed samples, of 16 bits, from eight pairs and the weights of each.
QORO_SSSE3 __m128i mixed_pairs(__m128i pairs, __m128i weights)
{
    return _mm_srli_epi16(_mm_add_epi16(_mm_maddubs_epi16(pairs, weights), _mm_set1_epi16(Whole / 2)), 7);
}

QORO_SSSE3 void ssse3_mix(const std::uint8_t* above, const std::uint8_t* below, SampleWeight weight, std::uint8_t* out,
                          std::size_t count)
{
    const __m128i weights = _mm_set1_epi16(static_cast<short>(weight * 256 + Whole - weight));
    std::size_t i = 0;
    for (; i + 16 <= count; i += 16) {
        const __m128i first = load(above + i);
        const __m128i second = load(below + i);
        store(out + i, _mm_packus_epi16(mixed_pairs(_mm_unpacklo_epi8(first, second), weights),
                                        mixed_pairs(_mm_unpackhi_epi8(first, second), weights)));
    }
    plain_mix(above + i, below + i, weight, out + i, count - i);
}

QORO_SSSE3 void ssse3_resample(const std::uint8_t* row, const RowPlan& plan, std::uint8_t* out)
{
    std::size_t i = 0;
    for (const RowPlan::Step& step : plan.steps()) {
        const __m128i pairs = _mm_shuffle_epi8(load(row + step.first), load(step.neighbours));
        const __m128i samples = mixed_pairs(pairs, load(step.weights));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out + i), _mm_packus_epi16(samples, samples));
        i += RowPlan::Group;
    }
    resample_from(i, row, plan, out);
}

/// Eight samples, times 256.
QORO_SSSE3 __m128i wide(const std::uint8_t* from)
{
    return _mm_unpacklo_epi8(_mm_setzero_si128(), _mm_loadl_epi64(reinterpret_cast<const __m128i*>(from)));
}

QORO_SSSE3 __m128i times(__m128i samples, std::int16_t factor)
{
    return _mm_mulhi_epi16(samples, _mm_set1_epi16(factor));
}

QORO_SSSE3 void ssse3_colour(const std::uint8_t* luma, const std::uint8_t* cb, const std::uint8_t* cr,
                             const RowColours& colours, std::uint8_t* out, std::size_t count)
{
    const __m128i middle = _mm_set1_epi16(static_cast<short>(0x8000));
    const __m128i luma_factor = _mm_set1_epi16(static_cast<short>(colours.luma));
    const __m128i offset = _mm_set1_epi16(colours.offset);
    const __m128i opaque = _mm_set1_epi16(255);
    std::size_t i = 0;
    for (; i + 8 <= count; i += 8) {
        const __m128i grey = _mm_add_epi16(_mm_mulhi_epu16(wide(luma + i), luma_factor), offset);
        const __m128i blueness = _mm_xor_si128(wide(cb + i), middle);
        const __m128i redness = _mm_xor_si128(wide(cr + i), middle);
        const __m128i blue = _mm_srai_epi16(_mm_add_epi16(grey, times(blueness, colours.blue_of_cb)), 5);
        const __m128i green = _mm_srai_epi16(_mm_add_epi16(grey, _mm_add_epi16(times(blueness, colours.green_of_cb),
                                                                               times(redness, colours.green_of_cr))),
                                             5);
        const __m128i red = _mm_srai_epi16(_mm_add_epi16(grey, times(redness, colours.red_of_cr)), 5);
        const __m128i blue_red = _mm_packus_epi16(blue, red);
        const __m128i green_opaque = _mm_packus_epi16(green, opaque);
        const __m128i lower = _mm_unpacklo_epi8(blue_red, green_opaque);
        const __m128i upper = _mm_unpackhi_epi8(blue_red, green_opaque);
        store(out + 4 * i, _mm_unpacklo_epi16(lower, upper));
        store(out + 4 * i + 16, _mm_unpackhi_epi16(lower, upper));
    }
    plain_colour(luma + i, cb + i, cr + i, colours, out + 4 * i, count - i);
}

constexpr PixelRows Ssse3Rows{ssse3_halve, ssse3_mix, ssse3_resample, ssse3_colour};

#endif

} // namespace

const PixelRows& plain_rows()
{
    return PlainRows;
}

const PixelRows& fast_rows()
{
#ifdef __x86_64__
    if (__builtin_cpu_supports("ssse3"))
        return Ssse3Rows;
#endif
    return PlainRows;
}

RowPlan::RowPlan(std::span<const double> places, std::size_t source_length)
{
    for (const double wanted : places) {
        const double place = std::clamp(wanted, 0.0, static_cast<double>(source_length - 1));
        const std::size_t first = std::min(static_cast<std::size_t>(place), source_length - 2);
        const long weight = std::lround((place - static_cast<double>(first)) * Whole);
        firsts_.push_back(first);
        weights_.push_back(static_cast<SampleWeight>(std::clamp(weight, 1L, Whole - 1L)));
    }
    for (std::size_t group = 0; group + Group <= size(); group += Group) {
        Step step{};
        step.first = firsts_[group];
        for (std::size_t i = 0; i < Group; ++i) {
            const std::size_t from_first = firsts_[group + i] - step.first;
            step.neighbours[2 * i] = static_cast<std::uint8_t>(from_first);
            step.neighbours[2 * i + 1] = static_cast<std::uint8_t>(from_first + 1);
            step.weights[2 * i] = static_cast<std::uint8_t>(Whole - weights_[group + i]);
            step.weights[2 * i + 1] = weights_[group + i];
        }
        steps_.push_back(step);
    }
}

} // namespace qoro
