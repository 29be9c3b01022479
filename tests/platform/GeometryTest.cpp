#include "platform/Geometry.h"

#include <gtest/gtest.h>

#include <limits>

using namespace qoro;

TEST(ARotation, OfWholeQuarterTurnsIsExact)
{
    EXPECT_EQ(CGAffineTransformMakeRotation(QuarterTurn).angle, QuarterTurn);
    EXPECT_EQ(CGAffineTransformMakeRotation(3 * QuarterTurn).angle, -QuarterTurn);
    EXPECT_EQ(CGAffineTransformMakeRotation(-3 * QuarterTurn).angle, QuarterTurn);
    EXPECT_EQ(CGAffineTransformMakeRotation(7 * QuarterTurn).angle, -QuarterTurn);
    EXPECT_EQ(CGAffineTransformMakeRotation(4 * HalfTurn).angle, 0);
}

TEST(ARotation, ByHalfATurnIsPositiveWhicheverWayItGoes)
{
    EXPECT_EQ(CGAffineTransformMakeRotation(HalfTurn).angle, HalfTurn);
    EXPECT_EQ(CGAffineTransformMakeRotation(-HalfTurn).angle, HalfTurn);
    EXPECT_EQ(CGAffineTransformMakeRotation(3 * HalfTurn).angle, HalfTurn);
}

TEST(ARotation, ByAnyOtherAngleIsBroughtIntoOneTurn)
{
    EXPECT_EQ(CGAffineTransformMakeRotation(1).angle, 1);
    EXPECT_DOUBLE_EQ(CGAffineTransformMakeRotation(4).angle, 4 - 2 * HalfTurn);
}

TEST(ARotation, ByANonFiniteAngleIsTheIdentity)
{
    EXPECT_EQ(CGAffineTransformMakeRotation(std::numeric_limits<double>::infinity()).angle, 0);
    EXPECT_EQ(CGAffineTransformMakeRotation(std::numeric_limits<double>::quiet_NaN()).angle, 0);
}

TEST(ABottomEdge, OfANegativeHeightIsAboveTheTop)
{
    EXPECT_EQ(CGRectGetMaxY({0, 100, 10, -40}), 60);
}
