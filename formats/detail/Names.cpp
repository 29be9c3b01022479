#include "formats/detail/Names.h"

#include <algorithm>
#include <cctype>
#include <numeric>
#include <utility>
#include <vector>

namespace qoro::detail
{

namespace
{

bool same_letter(char a, char b)
{
    return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
}

/// Levenshtein distance, ignoring case.
std::size_t distance(std::string_view a, std::string_view b)
{
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t changed = diagonal + (same_letter(a[i], b[j]) ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
        }
    }
    return row[b.size()];
}

} // namespace

std::string did_you_mean(std::string_view name, std::span<const std::string_view> known)
{
    constexpr std::size_t LongestName = 100;
    if (known.empty() || name.size() > LongestName)
        return "";
    const auto nearest =
        std::ranges::min_element(known, {}, [name](std::string_view one) { return distance(name, one); });
    return "; did you mean \"" + std::string(*nearest) + "\"?";
}

} // namespace qoro::detail
