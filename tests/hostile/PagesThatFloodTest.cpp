#include "tests/hostile/HostileTest.h"

// Pages that do more of one thing than anybody needs.

namespace qoro::test
{

namespace
{
#ifdef __SANITIZE_ADDRESS__
/// The sanitizers keep freed memory for a while, and watch over each byte with some of their own.
constexpr long MostGrowth = 256L * 1024 * 1024;
#else
constexpr long MostGrowth = 64L * 1024 * 1024;
#endif
} // namespace

TEST_F(HostileTest, AFloodOfDialogsIsAnsweredWithoutTheViewer)
{
    play("dialogs.html");
    EXPECT_TRUE(page_is_done());
    EXPECT_TRUE(refused("dialog"));
    EXPECT_LT(memory().program_growth(), MostGrowth);
    the_viewer_leaves();
}

TEST_F(HostileTest, AFloodOfTitlesAndHistoryLeavesTheProgramItsMemory)
{
    play("history.html");
    EXPECT_TRUE(page_is_done());
    EXPECT_LT(memory().program_growth(), MostGrowth);
    the_viewer_leaves();
}

} // namespace qoro::test
