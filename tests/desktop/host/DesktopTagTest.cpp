#include "host/desktop/DesktopTag.h"

#include "desktop/net/Reach.h"

#include <gtest/gtest.h>

namespace qoro
{
namespace
{

constexpr const char* Tracker = "http://192.168.7.1/error";

vast::FailedAd failed_ad(std::vector<std::string> documents)
{
    return {.code = 403, .why = "none", .errors = {Tracker}, .documents = std::move(documents)};
}

/// The innermost zone that the error tracker may reach after an ad of these documents has failed.
NetworkZone reach_after(std::vector<std::string> documents)
{
    DesktopTag tag({.text = "a file"});
    const TagOptions options = tag.options();
    options.observer->ad_failed(failed_ad(std::move(documents)));
    return reach_of(HttpAddress::parse(Tracker));
}

} // namespace

TEST(DesktopTag, TheErrorTrackersOfAnAdThatFailsMayLeadWhereItsDocumentsAreFrom)
{
    const ReachRule rule(NetworkZone::Public);
    EXPECT_EQ(reach_after({""}), NetworkZone::Machine) << "a file";
    EXPECT_EQ(reach_after({"", "http://192.168.7.1/inner.xml"}), NetworkZone::Machine);
    EXPECT_EQ(reach_after({"", "http://93.184.216.34/inner.xml"}), NetworkZone::Public);
}

} // namespace qoro
