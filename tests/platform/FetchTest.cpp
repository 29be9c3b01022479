#include "platform/Foundation.h"
#include "tests/support/RecordingPlatform.h"

#include <gtest/gtest.h>

using namespace qoro;
using qoro::test::RecordingPlatform;

namespace
{

using Lines = std::vector<std::string>;

class Fetching : public testing::Test
{
protected:
    void fetch_in_background(const char* address)
    {
        dataWithContentsOfURLInBackground(NSURL::URLWithString(address), FetchPurpose::HiddenImage,
                                          [this](const NSData& data) { arrived.emplace_back(data.view()); });
    }

    RecordingPlatform platform;
    Lines arrived;
};

} // namespace

TEST_F(Fetching, AtOnceAnswersWithTheBody)
{
    platform.world.net["http://ad/icon.png"].body = "PNG icon";

    const NSData icon = dataWithContentsOfURL(NSURL::URLWithString("http://ad/icon.png"), FetchPurpose::BrandIcon);

    EXPECT_EQ(icon.view(), "PNG icon");
    EXPECT_EQ(platform.transcript, Lines{"fetch url=http://ad/icon.png for=brandIcon"});
}

TEST_F(Fetching, ThatFailsReturnsNull)
{
    platform.world.net["http://ad/gone"].ok = false;

    EXPECT_FALSE(dataWithContentsOfURL(NSURL::URLWithString("http://ad/gone"), FetchPurpose::ButtonImage));
    EXPECT_EQ(platform.transcript, Lines{"fetch url=http://ad/gone for=buttonImage"});
}

TEST_F(Fetching, OfANullAddressReturnsNull)
{
    EXPECT_FALSE(dataWithContentsOfURL(nullptr, FetchPurpose::BrandIcon));
    fetch_in_background("");
    platform.let_pass(1);

    EXPECT_EQ(platform.transcript, Lines{});
    EXPECT_EQ(arrived, Lines{});
}

TEST_F(Fetching, InTheBackgroundBeginsAsAnEventOfItsOwn)
{
    platform.world.net["http://ad/mi.png"] = {true, "", "PNG mi", 0.5};

    fetch_in_background("http://ad/mi.png");
    EXPECT_EQ(platform.transcript, Lines{});
    platform.let_pass(0.4);
    EXPECT_EQ(platform.transcript, Lines{"fetch url=http://ad/mi.png for=hiddenImage"});
    EXPECT_EQ(arrived, Lines{});
    platform.let_pass(0.1);

    EXPECT_EQ(arrived, Lines{"PNG mi"});
}

TEST_F(Fetching, InTheBackgroundThatFailsDoesNotAnswer)
{
    platform.world.net["http://ad/gone"].ok = false;

    fetch_in_background("http://ad/gone");
    platform.let_pass(1);

    EXPECT_EQ(platform.transcript, Lines{"fetch url=http://ad/gone for=hiddenImage"});
    EXPECT_EQ(arrived, Lines{});
}
