#include "desktop/net/HttpAddress.h"

#include <gtest/gtest.h>

namespace qoro
{
namespace
{

TEST(HttpAddressTest, IsAnHttpOrHttpsAddressWithAHost)
{
    for (const char* address : {"http://ads.example", "HTTPS://ads.example/x", "http://[::1]:8080/?x#y",
                                "http://u@ads.example/", "http://ads.example/?a\\b"})
        EXPECT_TRUE(HttpAddress::parse(address)) << address;
    for (const char* address : {"", "ads.example", "//ads.example/", "http:", "http://", "http:///x",
                                "http:ads.example", "file:///etc/passwd", "ftp://ads.example/", "ws://ads.example/",
                                "tel:1", "http://ads.example:99999/", "http://ads.example/%zz"})
        EXPECT_FALSE(HttpAddress::parse(address)) << address;
}

TEST(HttpAddressTest, ThatParsersReadDifferentlyIsRefused)
{
    for (const char* address : {"http://127.0.0.1\\@ads.example/", "http://a@127.0.0.1@ads.example/",
                                "http://a@ads.example@/", "http://127.0.0.1%40ads.example/", "http://[::1%25lo]x/"})
        EXPECT_FALSE(HttpAddress::parse(address)) << address;
    EXPECT_FALSE(HttpAddress::parse(std::string("http://ads.example/\0@127.0.0.1/", 32)));
}

TEST(HttpAddressTest, NamesHostAndPortInLowerCase)
{
    const auto address = HttpAddress::parse("HTTP://ADS.Example/Path");
    ASSERT_TRUE(address);
    EXPECT_EQ(address->host_and_port(), "ads.example:80");
    EXPECT_EQ(address->origin(), "http://ads.example:80");
    EXPECT_EQ(address->written(), "HTTP://ADS.Example/Path");
    EXPECT_EQ(HttpAddress::parse("https://a")->origin(), "https://a:443");
    EXPECT_EQ(HttpAddress::parse("https://a:80")->host_and_port(), "a:80");
    EXPECT_EQ(HttpAddress::parse("http://[::1]:8080/")->host_and_port(), "[::1]:8080");
}

TEST(HttpAddressTest, SpellsTheHostAsTheRequestNamesIt)
{
    EXPECT_EQ(HttpAddress::parse("http://%6cocalhost/")->host_and_port(), "localhost:80");
    EXPECT_EQ(HttpAddress::parse("http://%6cocalhost/a%2fb")->spelt(), "http://localhost/a%2Fb");
    const auto address = HttpAddress::parse("HTTP://%6cocalhost/");
    EXPECT_EQ(HttpAddress(address->uri()).written(), address->spelt());
}

} // namespace
} // namespace qoro
