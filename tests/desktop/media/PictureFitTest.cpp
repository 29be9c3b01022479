#include "desktop/media/PictureFit.h"

#include "platform/Ports.h"

#include <gtest/gtest.h>

namespace qoro
{
namespace
{

TEST(PictureFit, aspect_fit_fills_the_width_of_a_box_of_the_same_shape)
{
    const PictureFit fit = fit_picture(1280, 720, 1, 375, 211, MPMovieScalingModeAspectFit);

    EXPECT_EQ(fit, (PictureFit{0, 0, 1280, 720, 375, 211}));
}

TEST(PictureFit, aspect_fit_is_narrower_than_a_wide_box)
{
    const PictureFit fit = fit_picture(1280, 720, 1, 812, 375, MPMovieScalingModeAspectFit);

    EXPECT_EQ(fit, (PictureFit{0, 0, 1280, 720, 667, 375}));
}

TEST(PictureFit, no_scaling_fits_as_aspect_fit_does)
{
    const PictureFit fit = fit_picture(1280, 720, 1, 812, 375, MPMovieScalingModeNone);

    EXPECT_EQ(fit, (PictureFit{0, 0, 1280, 720, 667, 375}));
}

TEST(PictureFit, aspect_fill_shows_the_middle_of_the_frame)
{
    const PictureFit fit = fit_picture(1280, 720, 1, 200, 200, MPMovieScalingModeAspectFill);

    EXPECT_EQ(fit, (PictureFit{280, 0, 720, 720, 200, 200}));
}

TEST(PictureFit, fill_stretches_the_whole_frame)
{
    const PictureFit fit = fit_picture(1280, 720, 1, 200, 200, MPMovieScalingModeFill);

    EXPECT_EQ(fit, (PictureFit{0, 0, 1280, 720, 200, 200}));
}

TEST(PictureFit, wide_pixels_make_a_wider_picture)
{
    const PictureFit fit = fit_picture(720, 576, 64.0 / 45.0, 1024, 1024, MPMovieScalingModeAspectFit);

    EXPECT_EQ(fit, (PictureFit{0, 0, 720, 576, 1024, 576}));
}

TEST(PictureFit, a_picture_is_never_less_than_a_pixel)
{
    const PictureFit fit = fit_picture(1280, 2, 1, 10, 10, MPMovieScalingModeAspectFit);

    EXPECT_EQ(fit, (PictureFit{0, 0, 1280, 2, 10, 1}));
}

} // namespace
} // namespace qoro
