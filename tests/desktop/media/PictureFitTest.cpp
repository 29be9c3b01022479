#include "desktop/media/PictureFit.h"

#include "platform/Ports.h"

#include <gtest/gtest.h>

namespace qoro
{
namespace
{

TEST(PictureFit, AspectFitFillsTheWidthOfABoxOfTheSameShape)
{
    const PictureFit fit = fit_picture(1280, 720, 1, 375, 211, MPMovieScalingModeAspectFit);

    EXPECT_EQ(fit, (PictureFit{0, 0, 1280, 720, 375, 211}));
}

TEST(PictureFit, AspectFitIsNarrowerThanAWideBox)
{
    const PictureFit fit = fit_picture(1280, 720, 1, 812, 375, MPMovieScalingModeAspectFit);

    EXPECT_EQ(fit, (PictureFit{0, 0, 1280, 720, 667, 375}));
}

TEST(PictureFit, NoScalingFitsAsAspectFitDoes)
{
    const PictureFit fit = fit_picture(1280, 720, 1, 812, 375, MPMovieScalingModeNone);

    EXPECT_EQ(fit, (PictureFit{0, 0, 1280, 720, 667, 375}));
}

TEST(PictureFit, AspectFillShowsTheMiddleOfTheFrame)
{
    const PictureFit fit = fit_picture(1280, 720, 1, 200, 200, MPMovieScalingModeAspectFill);

    EXPECT_EQ(fit, (PictureFit{280, 0, 720, 720, 200, 200}));
}

TEST(PictureFit, FillStretchesTheWholeFrame)
{
    const PictureFit fit = fit_picture(1280, 720, 1, 200, 200, MPMovieScalingModeFill);

    EXPECT_EQ(fit, (PictureFit{0, 0, 1280, 720, 200, 200}));
}

TEST(PictureFit, WidePixelsMakeAWiderPicture)
{
    const PictureFit fit = fit_picture(720, 576, 64.0 / 45.0, 1024, 1024, MPMovieScalingModeAspectFit);

    EXPECT_EQ(fit, (PictureFit{0, 0, 720, 576, 1024, 576}));
}

TEST(PictureFit, APictureIsNeverLessThanAPixel)
{
    const PictureFit fit = fit_picture(1280, 2, 1, 10, 10, MPMovieScalingModeAspectFit);

    EXPECT_EQ(fit, (PictureFit{0, 0, 1280, 2, 10, 1}));
}

} // namespace
} // namespace qoro
