#include "tests/contract/ContractPlatform.h"

#include "platform/ZulixVideoCacheManager.h"

namespace qoro::test
{

TEST_P(CacheContract, ACopyIsFoundByItsAddressAndStaysWhereItIs)
{
    const NSString path = platform().video_cache().path_for(world().copied_address());

    EXPECT_TRUE(path);
    EXPECT_EQ(platform().video_cache().path_for(world().copied_address()), path);
}

TEST_P(CacheContract, OtherAddressesHaveNoCopy)
{
    EXPECT_FALSE(platform().video_cache().path_for(world().address(Address::Found)));
    EXPECT_FALSE(platform().video_cache().path_for(world().copied_address() + "?"));
    EXPECT_FALSE(platform().video_cache().path_for(""));
    EXPECT_FALSE(platform().video_cache().path_for(nullptr));
}

TEST_P(CacheContract, TheKitsManagerReturnsTheSameCopy)
{
    const PlatformScope scope(platform());
    const ZulixVideoCacheManager& manager = ZulixVideoCacheManager::sharedInstance();

    EXPECT_TRUE(manager.checkFileExist(world().copied_address()));
    EXPECT_EQ(manager.getFilePathWithUrl(world().copied_address()),
              platform().video_cache().path_for(world().copied_address()));
    EXPECT_FALSE(manager.checkFileExist(world().address(Address::Found)));
    EXPECT_FALSE(manager.getFilePathWithUrl(world().address(Address::Found)));
    EXPECT_FALSE(manager.checkFileExist(nullptr));
}

} // namespace qoro::test
