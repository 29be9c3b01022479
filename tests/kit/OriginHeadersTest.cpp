#include "kit/OriginHeaders.h"

#include <gmock/gmock.h>

#include <string>

namespace qoro
{
namespace
{

using testing::HasSubstr;

const std::string Origin = "https://ads.example";

std::string header_fault(const std::string& name, const std::string& value = "1")
{
    return fault_of({.origin = Origin, .headers = {{name, value}}});
}

std::string cookie_fault(const std::string& name, const std::string& value)
{
    return fault_of({.origin = Origin, .cookies = {{name, value}}});
}

TEST(OriginHeaders, HaveAnOriginWithoutAPath)
{
    for (const char* valid :
         {"https://ads.example", "http://ads.example:8080", "HTTPS://Ads.Example", "http://[::1]:80"})
        EXPECT_EQ(fault_of({.origin = valid}), "") << valid;
    for (const char* none : {"", "ads.example", "https://", "ftp://ads.example", "https://ads.example/", "https://a/b",
                             "https://a?q", "https://a#f", "https://user@a", "https://a:port", "https://a:99999",
                             "https://a b", "https://a\r\nX: 1", "https:\\\\a"})
        EXPECT_THAT(fault_of({.origin = none}), HasSubstr("expected an origin")) << none;
}

TEST(OriginHeaders, AreNoneOfTheConnectionsAndNoneOfTheLibrarys)
{
    // RFC 9110, 7.6.1 names the hop-by-hop ones.
    for (const char* name :
         {"Connection", "Keep-Alive", "Proxy-Connection", "TE", "Trailer", "Transfer-Encoding", "Upgrade",
          "Proxy-Authorization", "Proxy-Authenticate", "Host", "Content-Length", "User-Agent", "Accept-Encoding",
          "Range", "If-Range", "Cookie", "host", "TRANSFER-ENCODING"})
        EXPECT_THAT(header_fault(name), HasSubstr(name)) << name;
    for (const char* name : {"X-Partner", "Authorization", "Referer", "Accept-Language", "x!#$%&'*+-.^_`|~"})
        EXPECT_EQ(header_fault(name), "") << name;
}

TEST(OriginHeaders, CannotBeginAnotherLine)
{
    for (const char* value : {"a\r\nHost: evil", "a\nb", "a\rb", " a", "a ", "\ta", "a\x01"})
        EXPECT_THAT(header_fault("X-Partner", value), HasSubstr("X-Partner")) << value;
    EXPECT_THAT(header_fault("X-Partner", std::string("a\0b", 3)), HasSubstr("X-Partner"));
    for (const char* name : {"", "X Partner", "X:", "X\r\nHost", "X\n", "Ü"}) {
        const std::string fault = header_fault(name);
        EXPECT_THAT(fault, HasSubstr("a name that is none")) << name;
        EXPECT_EQ(fault.find('\n'), std::string::npos) << "one line";
    }
    for (const char* value : {"", "a", "a b\tc", "\xC3\xBC", "a; b=c"})
        EXPECT_EQ(header_fault("X-Partner", value), "") << value;
}

TEST(OriginHeaders, HaveCookiesThatDoNotEndEarly)
{
    EXPECT_EQ(cookie_fault("sid", "abc=/+%20"), "");
    EXPECT_EQ(cookie_fault("sid", ""), "");
    for (const char* value : {"a; b=c", "a,b", "a b", "a\"", "a\\", "a\r\nX: 1", "\xC3\xBC"})
        EXPECT_THAT(cookie_fault("sid", value), HasSubstr("\"sid\"")) << value;
    for (const char* name : {"", "a=b", "a;b", "a b", "a\n"})
        EXPECT_THAT(cookie_fault(name, "1"), HasSubstr("a name that is none")) << name;
}

} // namespace
} // namespace qoro
