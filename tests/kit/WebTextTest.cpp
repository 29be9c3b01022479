#include "kit/WebText.h"

#include <gtest/gtest.h>

namespace qoro
{
namespace
{

std::string shown(const char* address)
{
    return shown_address(NSURL::URLWithString(address));
}

std::string message(const NSString& number, const NSString& body)
{
    return message_address(number, body).absoluteString().text();
}

TEST(PercentEncoding, LeavesLettersDigitsAndFourMarks)
{
    EXPECT_EQ(percent_encoded("aZ09-._~"), "aZ09-._~");
    EXPECT_EQ(percent_encoded("a b&c=d/ü%"), "a%20b%26c%3Dd%2F%C3%BC%25");
    EXPECT_EQ(percent_encoded(""), "");
}

TEST(ShownAddress, BeginsWithTheHost)
{
    EXPECT_EQ(shown("https://shop.example/lamps?x=1"), "shop.example/lamps?x=1");
    EXPECT_EQ(shown("http://shop.example:8080/"), "shop.example:8080");
    EXPECT_EQ(shown("https://shop.example/a/"), "shop.example/a/");
    EXPECT_EQ(shown("https://shop.example/?to=/"), "shop.example/?to=/");
    EXPECT_EQ(shown("https://shop.example?to=/"), "shop.example?to=/");
    EXPECT_EQ(shown_address(NSURL()), "");
}

TEST(ShownAddress, HidesAUserThatPretendsToBeTheHost)
{
    EXPECT_EQ(shown("https://bank.example@evil.example/login"), "evil.example/login");
    EXPECT_EQ(shown("https://a@b@evil.example"), "evil.example");
    EXPECT_EQ(shown("https://shop.example/@lumo"), "shop.example/@lumo");
}

TEST(ShownHost, IsTheHostWithItsPort)
{
    EXPECT_EQ(shown_host(NSURL::URLWithString("https://bank.example@evil.example:8080/login?x#y")),
              "evil.example:8080");
    EXPECT_EQ(shown_host(NSURL::URLWithString("http://[::1]?x")), "[::1]");
    EXPECT_EQ(shown_host(NSURL::URLWithString("tel:1")), "");
    EXPECT_EQ(shown_host(NSURL()), "");
}

TEST(AppStreamId, IsTheRestAfterTheSchemeWithoutSlashes)
{
    EXPECT_EQ(appstream_id_of(NSURL::URLWithString("appstream://org.gnome.Maps")), NSString("org.gnome.Maps"));
    EXPECT_EQ(appstream_id_of(NSURL::URLWithString("appstream:org.gnome.Maps/")), NSString("org.gnome.Maps"));
    EXPECT_FALSE(appstream_id_of(NSURL::URLWithString("appstream://")));
    EXPECT_FALSE(appstream_id_of(NSURL::URLWithString("https://org.gnome.Maps")));
    EXPECT_FALSE(appstream_id_of(NSURL::URLWithString("appstream")));
    EXPECT_FALSE(appstream_id_of(NSURL()));
}

TEST(MessageAddress, NamesTheNumberAndTheTextAsPartsOfAnAddress)
{
    EXPECT_EQ(message("tel:+15551234", "Hi & bye"), "sms:+15551234?body=Hi%20%26%20bye");
    EXPECT_EQ(message("+15551234", nullptr), "sms:+15551234");
    EXPECT_EQ(message(nullptr, "ü"), "sms:?body=%C3%BC");
}

} // namespace
} // namespace qoro
