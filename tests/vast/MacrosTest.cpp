#include "vast/Macros.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <limits>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace qoro::vast
{

namespace
{

using Kind = AddressKind;

constexpr Kind AllKinds[] = {Kind::Document, Kind::Tracking, Kind::ClickTracking, Kind::Error,
                             Kind::VerificationNotExecuted};

/// The column "Contexts" of the standard's list of macros.
/// @{
const std::vector<Kind> Everywhere(std::begin(AllKinds), std::end(AllKinds));
const std::vector<Kind> Requests = {Kind::Document};
const std::vector<Kind> Pixels = {Kind::Tracking, Kind::ClickTracking, Kind::Error, Kind::VerificationNotExecuted};
/// @}

/// A row of the standard's list of macros.
struct Row {
    std::string name;
    std::vector<Kind> contexts;
    /// Sets the value of the standard's example, or of one made after its description.
    std::function<void(MacroValues&)> set;
    std::string expected;
    /// Of an absent value.
    std::string absent = "-1";
};

void PrintTo(const Row& row, std::ostream* out)
{
    *out << row.name;
}

/// Of a viewer to whom no regulation applies.
void permit(MacroValues& values)
{
    values.regulation.gdpr = false;
}

const std::vector<Row> Rows = {
    // Generic
    {"TIMESTAMP", Everywhere,
     [](MacroValues& v) {
         // January 17, 2016, 8:15:07.127, Eastern Time, is 13:15:07.127 UTC.
         v.request.time = 1453036507.127;
         v.request.time_zone = -5 * 60;
     },
     "2016-01-17T08%3A15%3A07.127-05"},
    {"CACHEBUSTING", Everywhere, [](MacroValues& v) { v.request.random = [] { return 2'345'678U; }; }, "12345678"},

    // Ad break
    {"CONTENTPLAYHEAD", Everywhere, [](MacroValues& v) { v.ad_break.content_time = 321.123; }, "00%3A05%3A21.123"},
    {"MEDIAPLAYHEAD", Everywhere, [](MacroValues& v) { v.ad_break.content_time = 321.123; }, "00%3A05%3A21.123"},
    {"BREAKPOSITION", Everywhere, [](MacroValues& v) { v.ad_break.position = 2; }, "2"},
    {"BLOCKEDADCATEGORIES", Requests,
     [](MacroValues& v) {
         v.ad_break.blocked_categories = std::vector<std::string>{"IAB1-6", "IAB1-7"};
     },
     "IAB1-6,IAB1-7"},
    {"ADCATEGORIES", Requests,
     [](MacroValues& v) {
         v.ad_break.categories = std::vector<std::string>{"IAB1-6", "IAB1-7"};
     },
     "IAB1-6,IAB1-7"},
    {"ADCOUNT", Everywhere, [](MacroValues& v) { v.ad_break.ad_count = 2; }, "2"},
    {"TRANSACTIONID", Everywhere,
     [](MacroValues& v) { v.ad_break.transaction_id = "123e4567-e89b-12d3-a456-426655440000"; },
     "123e4567-e89b-12d3-a456-426655440000"},
    {"PLACEMENTTYPE", Everywhere, [](MacroValues& v) { v.ad_break.placement_type = 1; }, "1"},
    {"ADTYPE", Everywhere, [](MacroValues& v) { v.ad_break.ad_type = "video"; }, "video"},
    {"UNIVERSALADID", Pixels,
     [](MacroValues& v) { v.ad_break.universal_ad_ids = {{.registry = "ad-id.org", .value = "CNPA0484000H"}}; },
     "ad-id.org%20CNPA0484000H"},
    {"BREAKMAXDURATION", Everywhere, [](MacroValues& v) { v.ad_break.max_duration = 30; }, "30"},
    {"BREAKMINDURATION", Everywhere, [](MacroValues& v) { v.ad_break.min_duration = 10; }, "10"},
    {"BREAKMAXADS", Everywhere, [](MacroValues& v) { v.ad_break.max_ads = 2; }, "2"},
    {"BREAKMINADLENGTH", Everywhere, [](MacroValues& v) { v.ad_break.min_ad_length = 5; }, "5"},
    {"BREAKMAXADLENGTH", Everywhere, [](MacroValues& v) { v.ad_break.max_ad_length = 15; }, "15"},

    // Client
    {"IFA", Everywhere,
     [](MacroValues& v) {
         permit(v);
         v.client.advertising_id = "123e4567-e89b-12d3-a456-426655440000";
     },
     "123e4567-e89b-12d3-a456-426655440000", "-2"},
    {"IFATYPE", Everywhere,
     [](MacroValues& v) {
         permit(v);
         v.client.advertising_id_type = "rida";
     },
     "rida", "-2"},
    {"CLIENTUA", Everywhere, [](MacroValues& v) { v.client.client_agent = "MyPlayer/7.1 MyPlayerVastPlugin/1.1.2"; },
     "MyPlayer%2F7.1%20MyPlayerVastPlugin%2F1.1.2"},
    {"SERVERUA", Everywhere,
     [](MacroValues& v) { v.client.server_agent = "MyServer/3.0 (+https://myserver.com/contact)"; },
     "MyServer%2F3.0%20(%2Bhttps%3A%2F%2Fmyserver.com%2Fcontact)"},
    {"DEVICEUA", Everywhere,
     [](MacroValues& v) { v.client.device_agent = "Mozilla/5.0 (X11; Linux x86_64) Player/5 (KHTML, like Gecko)"; },
     "Mozilla%2F5.0%20(X11%3B%20Linux%20x86_64)%20Player%2F5%20(KHTML%2C%20like%20Gecko)"},
    // The default when the macro is missing is 0: the device requests.
    {"SERVERSIDE", Everywhere, [](MacroValues& v) { v.client.server_side = 1; }, "1", "0"},
    {"DEVICEIP", Everywhere,
     [](MacroValues& v) {
         permit(v);
         v.client.device_address = "2001:0db8:85a3:0000:0000:8a2e:0370:7334";
     },
     "2001%3A0db8%3A85a3%3A0000%3A0000%3A8a2e%3A0370%3A7334", "-2"},
    {"LATLONG", Everywhere,
     [](MacroValues& v) {
         permit(v);
         v.client.latitude = 51.004703;
         v.client.longitude = 3.754806;
     },
     "51.004703,3.754806", "-2"},

    // Publisher
    {"DOMAIN", Everywhere, [](MacroValues& v) { v.publisher.domain = "www.mydomain.com"; }, "www.mydomain.com"},
    {"PAGEURL", Everywhere, [](MacroValues& v) { v.publisher.page = "https://www.mydomain.com/article/page"; },
     "https%3A%2F%2Fwww.mydomain.com%2Farticle%2Fpage"},
    {"APPBUNDLE", Everywhere, [](MacroValues& v) { v.publisher.app_bundle = "com.example.myapp"; },
     "com.example.myapp"},
    {"STOREID", Everywhere, [](MacroValues& v) { v.publisher.store_id = "886445756"; }, "886445756"},
    {"STOREURL", Everywhere,
     [](MacroValues& v) { v.publisher.store_address = "https://store.example/app/id886445756"; },
     "https%3A%2F%2Fstore.example%2Fapp%2Fid886445756"},

    // Capabilities
    {"VASTVERSIONS", Requests,
     [](MacroValues& v) { v.capabilities.vast_versions = std::vector<int>{2, 3, 5, 6, 7, 8, 11}; }, "2,3,5,6,7,8,11"},
    {"APIFRAMEWORKS", Requests,
     [](MacroValues& v) {
         v.capabilities.api_frameworks = std::vector<int>{2, 7};
     },
     "2,7"},
    {"EXTENSIONS", Requests,
     [](MacroValues& v) {
         v.capabilities.extensions = std::vector<std::string>{"AdVerifications", "extensionA", "extensionB"};
     },
     "AdVerifications,extensionA,extensionB"},
    {"VERIFICATIONVENDORS", Requests,
     [](MacroValues& v) {
         v.capabilities.verification_vendors = std::vector<std::string>{"one.example-omid", "two.example-omid"};
     },
     "one.example-omid,two.example-omid"},
    {"OMIDPARTNER", Everywhere, [](MacroValues& v) { v.capabilities.omid_partner = "MyIntegrationPartner/7.1"; },
     "MyIntegrationPartner%2F7.1"},
    {"MEDIAMIME", Requests,
     [](MacroValues& v) {
         v.capabilities.media_types = std::vector<std::string>{"video/mp4", "application/x-mpegURL"};
     },
     "video%2Fmp4,application%2Fx-mpegURL"},
    {"PLAYERCAPABILITIES", Everywhere,
     [](MacroValues& v) {
         v.capabilities.abilities = {
             .skip = true, .mute = true, .autoplay = true, .muted_autoplay = true, .fullscreen = true, .icon = true};
     },
     "skip,mute,autoplay,mautoplay,fullscreen,icon"},
    {"CLICKTYPE", Everywhere, [](MacroValues& v) { v.capabilities.click_type = 2; }, "2"},

    // Player state
    {"PLAYERSTATE", Pixels, [](MacroValues& v) { v.player.state = {.muted = true, .fullscreen = true}; },
     "muted,fullscreen"},
    {"INVENTORYSTATE", Everywhere,
     [](MacroValues& v) {
         v.player.inventory = {.skippable = true, .autoplayed = true, .muted_autoplayed = true, .opt_in = true};
     },
     "skippable,autoplayed,mautoplayed,optin"},
    {"PLAYERSIZE", Everywhere,
     [](MacroValues& v) {
         v.player.width = 640;
         v.player.height = 360;
     },
     "640,360"},
    {"ADPLAYHEAD", Pixels, [](MacroValues& v) { v.player.ad_time = 11.355; }, "00%3A00%3A11.355"},
    {"ASSETURI", Pixels, [](MacroValues& v) { v.player.asset = "https://myadserver.com/video.mp4"; },
     "https%3A%2F%2Fmyadserver.com%2Fvideo.mp4"},
    {"CONTENTID", Everywhere, [](MacroValues& v) { v.player.content_id = "my-domain.com my-video-123"; },
     "my-domain.com%20my-video-123"},
    {"CONTENTURI", Everywhere, [](MacroValues& v) { v.player.content = "https://mycontentserver.com/video.mp4"; },
     "https%3A%2F%2Fmycontentserver.com%2Fvideo.mp4"},
    {"PODSEQUENCE", Pixels, [](MacroValues& v) { v.player.pod_sequence = 1; }, "1"},
    {"ADSERVINGID", Pixels,
     [](MacroValues& v) { v.player.ad_serving_id = "ServerName-47ed3bac-1768-4b9a-9d0e-0b92422ab066"; },
     "ServerName-47ed3bac-1768-4b9a-9d0e-0b92422ab066"},
    {"PLAYBACKMETHODS", Everywhere, [](MacroValues& v) { v.player.playback_method = 1; }, "1"},
    {"CONTENTCAT", Requests,
     [](MacroValues& v) {
         v.ad_break.content_categories = std::vector<std::string>{"8", "16", "1001"};
     },
     "8,16,1001"},

    // Click, error, verification
    {"CLICKPOS",
     {Kind::ClickTracking},
     [](MacroValues& v) {
         v.request.click_x = 315;
         v.request.click_y = 204;
     },
     "315,204"},
    {"ERRORCODE", {Kind::Error}, [](MacroValues& v) { v.request.error_code = 900; }, "900"},
    {"REASON", {Kind::VerificationNotExecuted}, [](MacroValues& v) { v.request.reason = 1; }, "1"},

    // Regulation
    {"LIMITADTRACKING", Everywhere, [](MacroValues& v) { v.regulation.limit_ad_tracking = true; }, "1"},
    {"REGULATIONS", Everywhere,
     [](MacroValues& v) {
         v.regulation.coppa = true;
         v.regulation.gdpr = true;
     },
     "coppa,gdpr"},
    {"GDPRCONSENT", Everywhere, [](MacroValues& v) { v.regulation.tcf_string = "BOLqFHuOLqFHuAABAENAAAAAAAAoAAA"; },
     "BOLqFHuOLqFHuAABAENAAAAAAAAoAAA"},
    {"GPPSTRING", Everywhere,
     [](MacroValues& v) { v.regulation.gpp_string = "DBABMA~CPXxRfAPXxRfAAfKABENB-CgAAAAAAAAAAYgAAAAAAAA"; },
     "DBABMA~CPXxRfAPXxRfAAfKABENB-CgAAAAAAAAAAYgAAAAAAAA"},
    {"GPPSECTIONID", Everywhere,
     [](MacroValues& v) {
         v.regulation.gpp_section_ids = std::vector<int>{5, 7};
     },
     "5,7"},
};

class VastMacroRow : public testing::TestWithParam<Row>
{
protected:
    /// The value of the row's macro in an address of the kind.
    std::string value(Kind kind, MacroValues values) const
    {
        values.request.kind = kind;
        return expand("[" + GetParam().name + "]", values);
    }
    MacroValues values() const
    {
        MacroValues values;
        GetParam().set(values);
        return values;
    }
    bool applies(Kind kind) const
    {
        const auto& contexts = GetParam().contexts;
        return std::find(contexts.begin(), contexts.end(), kind) != contexts.end();
    }
};

TEST_P(VastMacroRow, HasItsValueInTheAddressesOfItsContextsAndIsUnknownInOthers)
{
    for (const Kind kind : AllKinds)
        EXPECT_EQ(value(kind, values()), applies(kind) ? GetParam().expected : "-1") << static_cast<int>(kind);
}

TEST_P(VastMacroRow, SaysWhyItsValueIsAbsent)
{
    for (const Kind kind : AllKinds)
        EXPECT_EQ(value(kind, {}), applies(kind) ? GetParam().absent : "-1") << static_cast<int>(kind);
}

TEST_P(VastMacroRow, IsReplacedWithPlainAndWithEncodedBracketsOnly)
{
    const Row& row = GetParam();
    MacroValues given = values();
    given.request.kind = row.contexts.front();
    const auto expanded = [&](const std::string& before, const std::string& after) {
        return expand("http://t.example/?a=" + before + row.name + after + "&b", given);
    };
    const auto kept = [&](const std::string& before, const std::string& after) {
        return "http://t.example/?a=" + before + row.name + after + "&b";
    };
    const std::string replaced = "http://t.example/?a=" + row.expected + "&b";
    EXPECT_EQ(expanded("[", "]"), replaced);
    EXPECT_EQ(expanded("%5B", "%5D"), replaced);
    EXPECT_EQ(expanded("%5b", "%5d"), replaced);
    EXPECT_EQ(expanded("%5B", "%5d"), replaced);
    EXPECT_EQ(expanded("[", "%5D"), kept("[", "%5D"));
    EXPECT_EQ(expanded("%5B", "]"), kept("%5B", "]"));
    EXPECT_EQ(expanded("", ""), kept("", ""));
    EXPECT_EQ(expanded("{", "}"), kept("{", "}"));
    EXPECT_EQ(expanded("[ ", "]"), kept("[ ", "]"));
    EXPECT_EQ(expanded("[", "X]"), kept("[", "X]"));
}

TEST_P(VastMacroRow, IsNotReplacedInLowerCase)
{
    std::string address = "[" + GetParam().name + "]";
    std::transform(address.begin(), address.end(), address.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    EXPECT_EQ(expand(address, values()), address);
}

INSTANTIATE_TEST_SUITE_P(Standard, VastMacroRow, testing::ValuesIn(Rows),
                         [](const testing::TestParamInfo<Row>& row) { return row.param.name; });

TEST(VastMacros, AreThoseOfTheStandardsList)
{
    std::vector<std::string> names;
    names.reserve(Rows.size());
    for (const Row& row : Rows)
        names.push_back(row.name);
    const auto macros = macro_names();
    EXPECT_THAT(std::vector<std::string>(macros.begin(), macros.end()), testing::UnorderedElementsAreArray(names));
}

TEST(VastMacros, OtherTextStaysByteForByte)
{
    for (const std::string text : {"",
                                   "[",
                                   "]",
                                   "%",
                                   "%5",
                                   "%5B",
                                   "%5B%5D",
                                   "[]",
                                   "[[]]",
                                   "[UNKNOWN]",
                                   "%5BUNKNOWN%5D",
                                   "[timestamp]",
                                   "[Timestamp]",
                                   "[ERRORCOD]",
                                   "[ERRORCODES]",
                                   "[TIMESTAMP",
                                   "TIMESTAMP]",
                                   "%5BTIMESTAMP",
                                   "%5BTIMESTAMP%5",
                                   "%255BTIMESTAMP%255D",
                                   "http://t.example/a%20b?x=%C3%A4&y=[1]#[f]",
                                   "{CurrentTime}",
                                   "%%CACHEBUSTING%%",
                                   "${CACHEBUSTING}",
                                   "\xff\xfe[\x01]"})
        EXPECT_EQ(expand(text, {}), text);
    const std::string with_null("a\0[TIMESTAMP", 12);
    EXPECT_EQ(expand(with_null, {}), with_null);
}

TEST(VastMacros, SeveralInOneAddress)
{
    MacroValues values;
    values.ad_break.ad_count = 3;
    values.player.ad_time = 0;
    values.player.asset = "http://a/v.mp4";
    EXPECT_EQ(expand("[ADCOUNT][ADCOUNT]%5BADCOUNT%5D", values), "333");
    EXPECT_EQ(expand("%[ADCOUNT]%5", values), "%3%5");
    EXPECT_EQ(expand("[[ADCOUNT]]", values), "[3]");
    EXPECT_EQ(expand("[X[ADCOUNT]", values), "[X3");
    EXPECT_EQ(expand("%5B%5BADCOUNT%5D%5D", values), "%5B3%5D");
    EXPECT_EQ(expand("http://t/?n=[ADCOUNT]&q=%20[X]&t=[ADPLAYHEAD]&u=%5bASSETURI%5D&i=[IFA]#end", values),
              "http://t/?n=3&q=%20[X]&t=00%3A00%3A00.000&u=http%3A%2F%2Fa%2Fv.mp4&i=-2#end");
}

TEST(VastMacros, ValuesAreNotExpandedAgain)
{
    MacroValues values;
    values.ad_break.ad_count = 3;
    values.player.asset = "[ADCOUNT]";
    EXPECT_EQ(expand("[ASSETURI]", values), "%5BADCOUNT%5D");
}

TEST(VastMacros, AreAppendedToAString)
{
    MacroValues values;
    values.ad_break.ad_count = 3;
    std::string out = "before ";
    expand("a[ADCOUNT]", values, out);
    expand("[ADCOUNT]b", values, out);
    EXPECT_EQ(out, "before a33b");
}

// Section 6.1: encodeURIComponent for each value; the commas between values are not encoded.
TEST(VastMacros, ValuesAreEncoded)
{
    MacroValues values;
    values.request.kind = Kind::Document;
    values.capabilities.extensions = std::vector<std::string>{"abc/def", "y=z"};
    EXPECT_EQ(expand("[EXTENSIONS]", values), "abc%2Fdef,y%3Dz");
    values.capabilities.extensions = std::vector<std::string>{"a,b", "c"};
    EXPECT_EQ(expand("[EXTENSIONS]", values), "a%2Cb,c");

    values.publisher.domain = "AZaz09-_.~!*'()";
    EXPECT_EQ(expand("[DOMAIN]", values), "AZaz09-_.~!*'()");
    values.publisher.domain = " \"#$%&+,/:;<=>?@[\\]^`{|}\n\x7f";
    EXPECT_EQ(expand("[DOMAIN]", values),
              "%20%22%23%24%25%26%2B%2C%2F%3A%3B%3C%3D%3E%3F%40%5B%5C%5D%5E%60%7B%7C%7D%0A%7F");
    values.publisher.domain = "b\xc3\xbc"
                              "cher.example";
    EXPECT_EQ(expand("[DOMAIN]", values), "b%C3%BCcher.example");
    values.publisher.domain = std::string("\xff\0", 2);
    EXPECT_EQ(expand("[DOMAIN]", values), "%FF%00");
}

TEST(VastMacros, AnEmptyTextIsUnknownAndAnEmptyListIsNot)
{
    MacroValues values;
    values.publisher.domain = "";
    values.player.state.emplace();
    EXPECT_EQ(expand("[DOMAIN]|[PLAYERSTATE]", values), "-1|");
    values.request.kind = Kind::Document;
    values.capabilities.api_frameworks.emplace();
    EXPECT_EQ(expand("[APIFRAMEWORKS]", values), "");
}

TEST(VastMacros, UniversalAdIds)
{
    MacroValues values;
    values.ad_break.universal_ad_ids = {{.registry = "ad-id.org", .value = "A 1"}, {.registry = "", .value = "B,2"}};
    EXPECT_EQ(expand("[UNIVERSALADID]", values), "ad-id.org%20A%201,unknown%20B%2C2");
}

TEST(VastMacros, PlayheadIsHoursMinutesSecondsAndMilliseconds)
{
    const auto time = [](double seconds) {
        MacroValues values;
        values.player.ad_time = seconds;
        return expand("[ADPLAYHEAD]", values);
    };
    EXPECT_EQ(time(0.0004), "00%3A00%3A00.000");
    EXPECT_EQ(time(0.001), "00%3A00%3A00.001");
    EXPECT_EQ(time(59.9996), "00%3A01%3A00.000");
    EXPECT_EQ(time(3599.999), "00%3A59%3A59.999");
    EXPECT_EQ(time(3600), "01%3A00%3A00.000");
    EXPECT_EQ(time(100 * 3600.0 + 61), "100%3A01%3A01.000");
    EXPECT_EQ(time(-1), "-1");
    EXPECT_EQ(time(1e300), "-1");
    EXPECT_EQ(time(std::numeric_limits<double>::quiet_NaN()), "-1");
    EXPECT_EQ(time(std::numeric_limits<double>::infinity()), "-1");
}

TEST(VastMacros, TimestampIsLocalTimeWithItsZone)
{
    const auto stamp = [](double seconds, int zone) {
        MacroValues values;
        values.request.time = seconds;
        values.request.time_zone = zone;
        return expand("[TIMESTAMP]", values);
    };
    EXPECT_EQ(stamp(0, 0), "1970-01-01T00%3A00%3A00.000%2B00");
    EXPECT_EQ(stamp(0, 60), "1970-01-01T01%3A00%3A00.000%2B01");
    EXPECT_EQ(stamp(0, 5 * 60 + 30), "1970-01-01T05%3A30%3A00.000%2B05%3A30");
    EXPECT_EQ(stamp(0, -(3 * 60 + 30)), "1969-12-31T20%3A30%3A00.000-03%3A30");
    EXPECT_EQ(stamp(951782400, 0), "2000-02-29T00%3A00%3A00.000%2B00");
    EXPECT_EQ(stamp(253402300799.999, 0), "9999-12-31T23%3A59%3A59.999%2B00");
    EXPECT_EQ(stamp(253402300800, 0), "-1");
    EXPECT_EQ(stamp(-1e11, 0), "-1");
    EXPECT_EQ(stamp(1e300, 0), "-1");
    EXPECT_EQ(stamp(std::numeric_limits<double>::quiet_NaN(), 0), "-1");
    EXPECT_EQ(stamp(0, 24 * 60), "-1");
    EXPECT_EQ(stamp(0, std::numeric_limits<int>::min()), "-1");
}

TEST(VastMacros, CacheBusterHasEightDigitsAndIsDrawnOncePerAddressThatNeedsIt)
{
    MacroValues values;
    std::uint32_t drawn = 0;
    values.request.random = [&] { return drawn++; };
    EXPECT_EQ(expand("[CACHEBUSTING]/[CACHEBUSTING]", values), "10000000/10000000");
    EXPECT_EQ(expand("[CACHEBUSTING]", values), "10000001");
    EXPECT_EQ(expand("[ADCOUNT]", values), "-1");
    EXPECT_EQ(drawn, 2U);
    for (const std::uint32_t bits : {89'999'999U, 90'000'000U, std::numeric_limits<std::uint32_t>::max()}) {
        values.request.random = [&] { return bits; };
        EXPECT_THAT(expand("[CACHEBUSTING]", values), testing::MatchesRegex("[1-9][0-9]{7}")) << bits;
    }
}

TEST(VastMacros, PlaceHasUpToSixDecimals)
{
    const auto place = [](std::optional<double> latitude, std::optional<double> longitude) {
        MacroValues values;
        permit(values);
        values.client.latitude = latitude;
        values.client.longitude = longitude;
        return expand("[LATLONG]", values);
    };
    EXPECT_EQ(place(0, 0), "0,0");
    EXPECT_EQ(place(-90, 180), "-90,180");
    EXPECT_EQ(place(-0.5, 1e-6), "-0.5,0.000001");
    EXPECT_EQ(place(-1e-9, 12.3456789), "0,12.345679");
    EXPECT_EQ(place(1.25, {}), "-1");
    EXPECT_EQ(place({}, 1.25), "-1");
    EXPECT_EQ(place(90.1, 0), "-1");
    EXPECT_EQ(place(0, -180.1), "-1");
    EXPECT_EQ(place(0, std::numeric_limits<double>::quiet_NaN()), "-1");
}

TEST(VastMacros, APairNeedsBothNumbers)
{
    MacroValues values;
    values.player.width = 640;
    values.request.kind = Kind::ClickTracking;
    values.request.click_y = 5;
    EXPECT_EQ(expand("[PLAYERSIZE]|[CLICKPOS]", values), "-1|-1");
}

TEST(VastMacros, RegulationsAreKnownWhenOneAppliesOrNoneDoes)
{
    const auto regulations = [](std::optional<bool> coppa, std::optional<bool> gdpr) {
        MacroValues values;
        values.regulation.coppa = coppa;
        values.regulation.gdpr = gdpr;
        return expand("[REGULATIONS]", values);
    };
    EXPECT_EQ(regulations({}, {}), "-1");
    EXPECT_EQ(regulations(false, {}), "-1");
    EXPECT_EQ(regulations({}, false), "-1");
    EXPECT_EQ(regulations(false, false), "");
    EXPECT_EQ(regulations({}, true), "gdpr");
    EXPECT_EQ(regulations(true, false), "coppa");
}

/// The macros of a viewer's identifiers, when the host has supplied all of them.
std::string identifiers(const MacroValues::Regulation& regulation)
{
    MacroValues values;
    values.regulation = regulation;
    values.client.advertising_id = "id";
    values.client.advertising_id_type = "type";
    values.client.device_address = "10.0.0.1";
    values.client.latitude = 1;
    values.client.longitude = 2;
    return expand("[IFA] [IFATYPE] [DEVICEIP] [LATLONG]", values);
}

const std::string Sent = "id type 10.0.0.1 1,2";
const std::string Withheld = "-2 -2 -2 -2";

TEST(VastViewerIdentifiers, AreWithheldUnlessTheHostStatesSomething)
{
    EXPECT_EQ(identifiers({}), Withheld);
    EXPECT_EQ(identifiers({.limit_ad_tracking = false}), Withheld);
    EXPECT_EQ(identifiers({.coppa = false}), Withheld);
    EXPECT_EQ(identifiers({.tcf_string = "", .us_privacy = "", .gpp_string = ""}), Withheld);
    EXPECT_EQ(identifiers({.gdpr = false}), Sent);
    EXPECT_EQ(identifiers({.tcf_string = "C"}), Sent);
    EXPECT_EQ(identifiers({.us_privacy = "1YNN"}), Sent);
    EXPECT_EQ(identifiers({.us_privacy = "1---"}), Sent);
    EXPECT_EQ(identifiers({.gpp_string = "D~B"}), Sent);
}

TEST(VastViewerIdentifiers, NeedAConsentStringWhereTheGdprApplies)
{
    EXPECT_EQ(identifiers({.gdpr = true}), Withheld);
    EXPECT_EQ(identifiers({.gdpr = true, .tcf_string = ""}), Withheld);
    EXPECT_EQ(identifiers({.gdpr = true, .us_privacy = "1YNN"}), Withheld);
    EXPECT_EQ(identifiers({.gdpr = true, .gpp_string = "D~B"}), Withheld);
    EXPECT_EQ(identifiers({.gdpr = true, .gpp_string = "D~B", .gpp_section_ids = std::vector<int>{7}}), Withheld);
    EXPECT_EQ(identifiers({.gdpr = true, .gpp_section_ids = std::vector<int>{2}}), Withheld);
    EXPECT_EQ(identifiers({.gdpr = false, .gpp_section_ids = std::vector<int>{2}}), Withheld);
    EXPECT_EQ(identifiers({.gdpr = true, .tcf_string = "C"}), Sent);
    EXPECT_EQ(identifiers({.gdpr = true, .gpp_string = "D~B", .gpp_section_ids = std::vector<int>{7, 2}}), Sent);
}

TEST(VastViewerIdentifiers, AreWithheldWhereTheViewerOrTheLawRefuses)
{
    EXPECT_EQ(identifiers({.limit_ad_tracking = true, .gdpr = true, .tcf_string = "C"}), Withheld);
    EXPECT_EQ(identifiers({.limit_ad_tracking = true, .gdpr = false}), Withheld);
    EXPECT_EQ(identifiers({.coppa = true, .gdpr = false}), Withheld);
    EXPECT_EQ(identifiers({.gdpr = false, .us_privacy = "1YYN"}), Withheld);
    EXPECT_EQ(identifiers({.gdpr = true, .tcf_string = "C", .us_privacy = "1YYN"}), Withheld);
}

TEST(VastViewerIdentifiers, AreUnknownWhereTheyMayBeSentButAreAbsent)
{
    MacroValues values;
    permit(values);
    EXPECT_EQ(expand("[IFA] [IFATYPE] [DEVICEIP] [LATLONG]", values), "-1 -1 -1 -1");
}

// RFC 9562, sections 4 and 5.4: the digit of the version is 4, that of the variant 8, 9, a or b.
TEST(VastTransactionId, IsAUuidOfRandomBits)
{
    EXPECT_EQ(make_transaction_id([] { return 0U; }), "00000000-0000-4000-8000-000000000000");
    EXPECT_EQ(make_transaction_id([] { return 0xFFFFFFFFU; }), "ffffffff-ffff-4fff-bfff-ffffffffffff");
    std::uint32_t next = 0;
    EXPECT_EQ(make_transaction_id([&] { return next += 0x11111111; }), "11111111-2222-4222-b333-333344444444");
}

} // namespace

} // namespace qoro::vast
