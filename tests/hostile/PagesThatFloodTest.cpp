#include "tests/hostile/HostileTest.h"

// Pages that repeat one action excessively.

namespace qoro::test
{

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
