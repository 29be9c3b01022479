#include "tests/contract/VolumeContract.h"

namespace qoro::test
{

namespace
{
/// A sound server stores a volume in 65536 steps.
constexpr double OneStep = 1.0 / 65536;
/// Seconds to wait for an unexpected further report.
constexpr double Moment = 0.2;
} // namespace

TEST_P(VolumeContract, ASetValueIsReadAtOnceAndReportedOnceAsAnEventOfItsOwn)
{
    volume().set_value(0.25F);
    EXPECT_EQ(volume().value(), 0.25F);
    EXPECT_EQ(changes(), 0);

    ASSERT_TRUE(until([&] { return changes() > 0; }));
    let_pass(Moment);

    EXPECT_EQ(changes(), 1);
    EXPECT_EQ(volume().value(), 0.25F);
}

TEST_P(VolumeContract, SettingTheCurrentVolumeIsNoChange)
{
    volume().set_value(volume().value());

    let_pass(Moment);

    EXPECT_EQ(changes(), 0);
}

TEST_P(VolumeContract, EachOfSeveralQuickChangesIsReportedAndTheLastOneStays)
{
    for (const float value : {0.1F, 0.0F, 0.7F})
        volume().set_value(value);

    ASSERT_TRUE(until([&] { return changes() == 3; }));
    let_pass(Moment);

    EXPECT_EQ(changes(), 3);
    EXPECT_EQ(volume().value(), 0.7F);
}

TEST_P(VolumeContract, AChangeByTheViewerIsReadAndReportedOnce)
{
    world().viewer_sets_volume(0.5F);

    ASSERT_TRUE(until([&] { return changes() > 0; }));
    let_pass(Moment);

    EXPECT_EQ(changes(), 1);
    EXPECT_NEAR(volume().value(), 0.5, OneStep);
}

TEST_P(VolumeContract, SilenceAndFullAreKeptExactly)
{
    volume().set_value(1);
    EXPECT_EQ(volume().value(), 1);
    volume().set_value(0);
    EXPECT_EQ(volume().value(), 0);
}

} // namespace qoro::test
