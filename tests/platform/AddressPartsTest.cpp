#include "platform/AddressParts.h"
#include "platform/Value.h"

#include <gtest/gtest.h>

#include <string>

namespace qoro
{
namespace
{

using Text = std::optional<std::string_view>;

TEST(AddressParts, MatchTheExampleInTheStandard)
{
    // RFC 3986, section 3.
    const AddressParts foo("foo://example.com:8042/over/there?name=ferret#nose");
    EXPECT_EQ(foo.scheme(), "foo");
    ASSERT_TRUE(foo.authority());
    EXPECT_EQ(foo.authority()->user, Text());
    EXPECT_EQ(foo.authority()->host, "example.com");
    EXPECT_EQ(foo.authority()->port, Text("8042"));
    EXPECT_EQ(foo.port(), 8042);
    EXPECT_EQ(foo.path(), "/over/there");
    EXPECT_EQ(foo.query(), Text("name=ferret"));
    EXPECT_EQ(foo.fragment(), Text("nose"));

    const AddressParts urn("urn:example:animal:ferret:nose");
    EXPECT_EQ(urn.scheme(), "urn");
    EXPECT_FALSE(urn.authority());
    EXPECT_EQ(urn.path(), "example:animal:ferret:nose");
    EXPECT_EQ(urn.query(), Text());
    EXPECT_EQ(urn.fragment(), Text());
}

TEST(AddressParts, MatchTheExampleForTheRegularExpression)
{
    // RFC 3986, appendix B.
    const AddressParts parts("http://www.ics.uci.edu/pub/ietf/uri/#Related");
    EXPECT_EQ(parts.scheme(), "http");
    EXPECT_EQ(parts.host(), "www.ics.uci.edu");
    EXPECT_EQ(parts.path(), "/pub/ietf/uri/");
    EXPECT_EQ(parts.query(), Text());
    EXPECT_EQ(parts.fragment(), Text("Related"));
}

TEST(AddressParts, MatchTheStandardsOtherExamples)
{
    // RFC 3986, section 1.1.2.
    const AddressParts ldap("ldap://[2001:db8::7]/c=GB?objectClass?one");
    EXPECT_EQ(ldap.host(), "[2001:db8::7]");
    EXPECT_EQ(ldap.port(), std::nullopt);
    EXPECT_EQ(ldap.path(), "/c=GB");
    EXPECT_EQ(ldap.query(), Text("objectClass?one"));
    EXPECT_EQ(AddressParts("mailto:John.Doe@example.com").path(), "John.Doe@example.com");
    EXPECT_FALSE(AddressParts("mailto:John.Doe@example.com").authority());
    EXPECT_EQ(AddressParts("tel:+1-816-555-1212").after_scheme(), "+1-816-555-1212");
    const AddressParts telnet("telnet://192.0.2.16:80/");
    EXPECT_EQ(telnet.host(), "192.0.2.16");
    EXPECT_EQ(telnet.port(), 80);
}

TEST(AddressScheme, BeginsWithALetterAndContainsLettersDigitsAndThreeMarks)
{
    // RFC 3986, section 3.1; case is insignificant.
    EXPECT_EQ(AddressParts("HtTpS://x").scheme(), "https");
    EXPECT_EQ(AddressParts("a1+-.:x").scheme(), "a1+-.");
    for (const char* text :
         {"", "http", "1a:x", "+a:x", ":x", "a_b:x", "a b:x", "/a:x", "?a:x", "#a:x", "\xC3\xA4:x"}) {
        EXPECT_EQ(AddressParts(text).scheme(), "") << text;
        EXPECT_EQ(AddressParts(text).after_scheme(), text);
    }
}

TEST(AddressScheme, IsComparedWithoutCase)
{
    EXPECT_TRUE(AddressParts("TEL:1").has_scheme("tel"));
    EXPECT_FALSE(AddressParts("tel:1").has_scheme("t"));
    EXPECT_FALSE(AddressParts("tel:1").has_scheme("tels"));
    EXPECT_FALSE(AddressParts("tel:1").has_scheme(""));
    EXPECT_TRUE(AddressParts("tel").has_scheme(""));
}

TEST(AddressAuthority, EndsAtASlashAQuestionMarkANumberSignOrTheEnd)
{
    // RFC 3986, section 3.2.
    for (const char* text : {"x://h", "x://h/", "x://h/@", "x://h?@", "x://h#@", "//h", "//h:/"})
        EXPECT_EQ(AddressParts(text).host(), "h") << text;
}

TEST(AddressAuthority, MayBeEmptyOrAbsent)
{
    ASSERT_TRUE(AddressParts("file:///etc/hosts").authority());
    EXPECT_EQ(AddressParts("file:///etc/hosts").host(), "");
    EXPECT_EQ(AddressParts("file:///etc/hosts").path(), "/etc/hosts");
    for (const char* text : {"http:/h", "http:h", "h", "/h", "http:\\\\h", ""})
        EXPECT_FALSE(AddressParts(text).authority()) << text;
}

TEST(AddressAuthority, HasAUserBeforeItsLastAtSign)
{
    const AddressParts user("http://a:b@c.example:1/");
    EXPECT_EQ(user.authority()->user, Text("a:b"));
    EXPECT_EQ(user.host(), "c.example");
    EXPECT_EQ(user.from_host(), Text("c.example:1/"));
    EXPECT_EQ(AddressParts("http://bank.example@evil.example@c.example/").host(), "c.example");
    EXPECT_EQ(AddressParts("http://@c.example/").authority()->user, Text(""));
    EXPECT_EQ(AddressParts("mailto:a@b").from_host(), Text());
}

TEST(AddressAuthority, HasAPortAfterItsHost)
{
    // RFC 3986, section 3.2.3: the port may be empty.
    EXPECT_EQ(AddressParts("http://h:/").authority()->port, Text(""));
    EXPECT_EQ(AddressParts("http://h:/").port(), std::nullopt);
    EXPECT_EQ(AddressParts("http://h/").authority()->port, Text());
    EXPECT_EQ(AddressParts("http://h:65535/").port(), 65535);
    for (const char* text : {"http://h:65536/", "http://h:+1/", "http://h:1x/", "http://h:-1/", "h:1"})
        EXPECT_EQ(AddressParts(text).port(), std::nullopt) << text;
}

TEST(AddressAuthority, KeepsTheColonsOfAnIpLiteral)
{
    const AddressParts literal("http://u@[fe80::1]:8080/x");
    EXPECT_EQ(literal.host(), "[fe80::1]");
    EXPECT_EQ(literal.port(), 8080);
    EXPECT_EQ(AddressParts("http://[::1").host(), "[::1");
    EXPECT_EQ(AddressParts("http://[::1]x:80/").host(), "[::1]");
}

TEST(AddressPath, EndsAtTheQueryOrTheFragment)
{
    // RFC 3986, sections 3.3 to 3.5.
    EXPECT_EQ(AddressParts("http://h/a?b?c/d#e?f").query(), Text("b?c/d"));
    EXPECT_EQ(AddressParts("http://h/a?b?c/d#e?f").fragment(), Text("e?f"));
    EXPECT_EQ(AddressParts("a#b?c").path(), "a");
    EXPECT_EQ(AddressParts("a#b?c").query(), Text());
    EXPECT_EQ(AddressParts("a?").query(), Text(""));
    EXPECT_EQ(AddressParts("a#").fragment(), Text(""));
    EXPECT_EQ(AddressParts("a?b#c#d").without_fragment(), "a?b");
    EXPECT_EQ(AddressParts("a?b").without_fragment(), "a?b");
}

TEST(AddressParts, OfAWebAddressHaveAnHttpSchemeAndAnAuthority)
{
    for (const char* text : {"http://h", "HTTPS://h/x", "http://"})
        EXPECT_TRUE(AddressParts(text).is_web()) << text;
    for (const char* text : {"http:h", "http:/h", "ws://h", "httpx://h", "//h", "h", "", "file:///http://h"})
        EXPECT_FALSE(AddressParts(text).is_web()) << text;
}

TEST(AddressParts, WithoutSchemeAndAuthorityNameNoServer)
{
    for (const char* text : {"clip.mp4", "/t?x", "?x", "#x", "", "t?at=12:30", "./a:b", "{scheme}://h"})
        EXPECT_TRUE(AddressParts(text).names_no_server()) << text;
    for (const char* text : {"http://h", "tel:1", "//h", "a:b"})
        EXPECT_FALSE(AddressParts(text).names_no_server()) << text;
}

TEST(AnAddress, HasItsPartsAsLongAsACopyExists)
{
    NSURL copy;
    {
        const NSURL address = NSURL::URLWithString("HTTP://h/p");
        copy = address;
    }
    EXPECT_TRUE(copy.is_web());
    EXPECT_EQ(copy.parts().scheme(), "http");
    EXPECT_EQ(copy.parts().path(), "/p");
}

TEST(AnAddress, OfAFileOrNullHasThePartsOfTheEmptyText)
{
    EXPECT_EQ(NSURL::fileURLWithPath("http://h/p").parts().text(), "");
    EXPECT_FALSE(NSURL::fileURLWithPath("http://h/p").is_web());
    EXPECT_EQ(NSURL().parts().text(), "");
}

} // namespace
} // namespace qoro
