#include "formats/DeviceModels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace qoro
{
namespace
{

TEST(DeviceModels, NameAtLeast25RealModels)
{
    EXPECT_GE(std::ranges::count_if(device_models(), [](const DeviceModel& model) { return model.scale > 0; }), 25);
}

TEST(DeviceModels, HaveDifferentNames)
{
    std::set<std::string_view> names;
    for (const DeviceModel& model : device_models())
        EXPECT_TRUE(names.insert(model.name).second) << model.name;
}

TEST(DeviceModels, ArePortraitAndTabletsFrom600PointsOn)
{
    for (const DeviceModel& model : device_models()) {
        EXPECT_LT(model.screen.width, model.screen.height) << model.name;
        EXPECT_EQ(model.phone, model.screen.width < 600) << model.name;
    }
}

TEST(DeviceModels, HaveInsetsThatLeaveMostOfTheScreen)
{
    for (const DeviceModel& model : device_models()) {
        EXPECT_LT(model.portrait.top + model.portrait.bottom, model.screen.height / 5) << model.name;
        EXPECT_LT(model.landscape.left + model.landscape.right, model.screen.height / 5) << model.name;
    }
}

TEST(DeviceModels, AModelIsFoundByItsName)
{
    const auto model = device_model("iphone-15");

    ASSERT_TRUE(model);
    EXPECT_EQ(model->screen, (CGSize{393, 852}));
    EXPECT_EQ(model->scale, 3);
    EXPECT_EQ(model->portrait.top, 59);
    EXPECT_EQ(model->landscape.left, 59);
}

TEST(DeviceModels, ASizeHasNoInsets)
{
    const auto model = device_model("393x852");

    ASSERT_TRUE(model);
    EXPECT_EQ(model->portrait.top, 0);
    EXPECT_EQ(model->scale, 0);
}

} // namespace
} // namespace qoro
