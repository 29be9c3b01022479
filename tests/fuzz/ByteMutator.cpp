// Stands in for libFuzzer's mutator in the build without it: random changes, no coverage feedback.

#include "tests/fuzz/Mutator.h"

#include <algorithm>
#include <random>
#include <string>

namespace
{

/// Seeded once with a constant, so that every run of a program tests the same inputs.
std::minstd_rand& source()
{
    static std::minstd_rand random(1);
    return random;
}

std::size_t below(std::size_t count)
{
    return source()() % count;
}

/// Changes one byte, or removes, repeats or inserts a few.
void change(std::string& text)
{
    const std::size_t place = below(text.size() + 1);
    const std::size_t length = 1 + below(8);
    switch (below(5)) {
    case 0:
        if (place < text.size())
            text[place] = static_cast<char>(text[place] ^ (1 << below(8)));
        break;
    case 1:
        if (place < text.size())
            text[place] = static_cast<char>(below(256));
        break;
    case 2:
        text.erase(place, length);
        break;
    case 3:
        text.insert(place, text.substr(place, length));
        break;
    default:
        text.insert(place, length, static_cast<char>(below(256)));
    }
}

} // namespace

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most)
{
    std::string text(reinterpret_cast<const char*>(data), size);
    for (std::size_t changes = 1 + below(4); changes > 0; --changes)
        change(text);
    text.resize(std::min(text.size(), most));
    std::ranges::copy(text, data);
    return text.size();
}
