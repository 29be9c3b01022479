#include "desktop/web/ProcessorUse.h"

#include <gtest/gtest.h>

namespace qoro::test
{
namespace
{

/// Adds ten samples a second of a page with this load beside a video that drops this many frames a second.
void pass(ProcessorUse& use, double seconds, double load, std::uint64_t& dropped, std::uint64_t drops_a_second)
{
    for (int look = 0; look < static_cast<int>(seconds * 10); ++look) {
        if (look % 10 == 5)
            dropped += drops_a_second;
        use.look(load, dropped, 0.1);
    }
}

TEST(ProcessorUse, APageThatTakesTheProcessorsFromTheVideoStarvesIt)
{
    ProcessorUse use;
    std::uint64_t dropped = 0;
    pass(use, 11, 1.5, dropped, 3);
    EXPECT_GT(use.starves_for(), 9);
}

TEST(ProcessorUse, AVideoThatDropsNothingIsNotStarved)
{
    ProcessorUse use;
    std::uint64_t dropped = 100;
    pass(use, 20, 1.9, dropped, 0);
    EXPECT_EQ(use.starves_for(), 0);
}

TEST(ProcessorUse, APageOnOneProcessorIsNotToBlame)
{
    ProcessorUse use;
    std::uint64_t dropped = 0;
    pass(use, 20, 0.9, dropped, 10);
    EXPECT_EQ(use.starves_for(), 0);
}

TEST(ProcessorUse, ASecondWithoutADropStartsOver)
{
    ProcessorUse use;
    std::uint64_t dropped = 0;
    pass(use, 9, 1.5, dropped, 3);
    pass(use, 2, 1.5, dropped, 0);
    EXPECT_EQ(use.starves_for(), 0);
}

} // namespace
} // namespace qoro::test
