#include "kit/Consent.h"

#include "tests/support/ScenarioRun.h"

#include <gmock/gmock.h>

#include <string>

// The viewer's consent: as pages ask for it, and as the macros of VAST 4 about regulations carry it.

namespace qoro
{
namespace
{

using testing::HasSubstr;

/// The answer to a page that asks for the consent.
/// @param host content of the scenario's host
std::string asked(const std::string& host)
{
    for (const std::string& line : test::trace_of(R"({"host": {)" + host +
                                                  R"(}, "ad": {"strVideoUrl": "http://ad/v.mp4"},
            "steps": [{"open": 0}, {"at": 1, "script": ["getConsent"]}]})"))
        if (line.find(R"("what":"return")") != std::string::npos)
            return line;
    return "";
}

TEST(Consent, ReachesThePageAsTheHostSuppliedIt)
{
    EXPECT_THAT(asked(R"("consent": {"tcf": "CPXxRfAPXxRfAAfKABENB-CgAAAAAAAAAAYgAAAAAAAA", "gdprApplies": true,
                    "usPrivacy": "1YNN", "gpp": "DBABMA~1YNN", "gppSections": [6, -1]})"),
                HasSubstr(R"("command":"getConsent","value":{"tcf":"CPXxRfAPXxRfAAfKABENB-CgAAAAAAAAAAYgAAAAAAAA",)"
                          R"("gdprApplies":true,"usPrivacy":"1YNN","gpp":"DBABMA~1YNN","gppSections":[6,-1]})"));
}

TEST(Consent, IsNullWhereTheHostSuppliesNone)
{
    EXPECT_THAT(asked(""), HasSubstr(R"("value":{"tcf":null,"gdprApplies":null,"usPrivacy":null,"gpp":null,)"
                                     R"("gppSections":[]})"));
}

TEST(Consent, ItsStringsHaveTheFormsOfTheirStandards)
{
    EXPECT_TRUE(is_tc_string("CPXxRfAPXxRfAAfKABENB-CgAAAAAAAAAAYgAAAAAAAA.YAAAAAAAAAAA"));
    for (const char* none : {"", "BOEFEAyOEFEAyAHABDENAI4AAAB9vABAASA", "CPX fA", "CPX\n", "CPX&x=1"})
        EXPECT_FALSE(is_tc_string(none)) << none;
    for (const char* valid : {"1YNN", "1---", "1NYY"})
        EXPECT_TRUE(is_us_privacy(valid)) << valid;
    for (const char* none : {"", "1YN", "2YNN", "1ynn", "1YNNN", "1YN&"})
        EXPECT_FALSE(is_us_privacy(none)) << none;
    EXPECT_TRUE(is_gpp_string("DBACNYA~CPXxRfAPXxRfAAfKABENB-CgAAAAAAAAAAYgAAAAAAAA~1YNN"));
    for (const char* none : {"", "CPX", "DB CN", "DBACNYA~1YNN\r\nX: 1"})
        EXPECT_FALSE(is_gpp_string(none)) << none;
}

} // namespace
} // namespace qoro
