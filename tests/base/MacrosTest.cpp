#include "platform/Numbers.h"
#include "tests/support/AdSession.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace qoro
{
namespace
{

World world_with_facts(const NSString& imei, const NSString& display_name)
{
    World world = AdSession::manual_world();
    world.device.facts.imei = imei;
    world.device.facts.display_name = display_name;
    return world;
}

TEST(Md5, IsThirtyTwoLowerCaseHexadecimalDigits)
{
    EXPECT_EQ(QoroVideoWebViewController::md5(""), "d41d8cd98f00b204e9800998ecf8427e");
    EXPECT_EQ(QoroVideoWebViewController::md5("abc"), "900150983cd24fb0d6963f7d28e17f72");
}

TEST(Md5, TakesUtf8Bytes)
{
    EXPECT_EQ(QoroVideoWebViewController::md5("ü"), "c03410a5204b21cd8229ff754688d743");
}

TEST(Md5, StopsAtTheFirstNul)
{
    EXPECT_EQ(QoroVideoWebViewController::md5(std::string("abc\0def", 7)), "900150983cd24fb0d6963f7d28e17f72");
}

TEST(Md5, OfNullIsNull)
{
    EXPECT_FALSE(QoroVideoWebViewController::md5(nullptr));
}

TEST(Macros, NullStaysNull)
{
    AdSession session;

    EXPECT_FALSE(session->getTrackingUniqueInfo(nullptr));
}

TEST(Macros, ATemplateWithoutMacrosComesBackUnchanged)
{
    AdSession session;

    EXPECT_EQ(session->getTrackingUniqueInfo(""), "");
    EXPECT_EQ(session->getTrackingUniqueInfo("http://t/{currenttime}?%7B"), "http://t/{currenttime}?%7B");
}

TEST(Macros, EveryOccurrenceIsReplaced)
{
    AdSession session;

    EXPECT_EQ(session->getTrackingUniqueInfo("{Zulix-Seq}{Zulix-Seq}/{Zulix-Seq}"), "77/7");
    std::string many;
    std::string sevens;
    for (int i = 0; i < 100'000; ++i) {
        many += "{Zulix-Seq}";
        sevens += '7';
    }
    EXPECT_EQ(session->getTrackingUniqueInfo(many + "/end"), sevens + "/end");
}

TEST(Macros, TheCurrentTimeHasSixDecimalsOfSinglePrecision)
{
    AdSession session;
    session.open();
    session.player_is_at(12.3);

    EXPECT_EQ(session->getTrackingUniqueInfo("{CurrentTime}"), "12.300000");
    session.player_is_at(1234.567);
    EXPECT_EQ(session->getTrackingUniqueInfo("{CurrentTime}"), "1234.567017");
}

TEST(Macros, TheCurrentTimeAfterASeekIsThatOfTheSeekInSinglePrecision)
{
    AdSession session{World()};
    session.ad().strVideoUrl = "http://ad/v.mp4";
    session.ad().bIsAutoStart = true;
    session.open();
    session.let_pass(1);
    constexpr float Sought = 6.45F;

    session->setVideoSeekToTime(Sought);
    session.let_pass(1.9);

    const auto exact = static_cast<float>(static_cast<double>(Sought) + 1.9);
    EXPECT_EQ(fixed_text(exact, 6), "8.349999");
    EXPECT_EQ(session->getTrackingUniqueInfo("{CurrentTime}"), "8.349999");
}

TEST(Macros, ACurrentTimeOfZeroIsWrittenInFull)
{
    AdSession session;

    EXPECT_EQ(session->getTrackingUniqueInfo("{CurrentTime}"), "0.000000");
}

TEST(Macros, ANegativeCurrentTimeIsAPlainZero)
{
    AdSession session;
    session.open();

    session.player_is_at(-1);

    EXPECT_EQ(session->getTrackingUniqueInfo("{CurrentTime}"), "0");
}

TEST(Macros, ACurrentTimeThatIsNoNumberIsAPlainZero)
{
    AdSession session;
    session.open();

    session.player_is_at(std::numeric_limits<double>::quiet_NaN());

    EXPECT_EQ(session->getTrackingUniqueInfo("{CurrentTime}"), "0");
}

TEST(Macros, AnUnknownTotalTimeIsEmpty)
{
    AdSession session;

    EXPECT_EQ(session->getTrackingUniqueInfo("t={TotalTime}."), "t=.");
}

TEST(Macros, AKnownTotalTimeHasSixDecimals)
{
    AdSession session;
    session->fTotalTime = 29.9F;

    EXPECT_EQ(session->getTrackingUniqueInfo("{TotalTime}"), "29.900000");
}

TEST(Macros, TheKitsIdentifiersAreWrittenAsTheyAre)
{
    AdSession session;

    EXPECT_EQ(session->getTrackingUniqueInfo("{Zulix-Guid}/{Zulix-Sid}/{Zulix-Seq}"), "g-1/1700000000/7");
}

TEST(Macros, TheSessionIsRoundedToAWholeNumber)
{
    AdSession session;

    session->dSessionId = 12.6;
    EXPECT_EQ(session->getTrackingUniqueInfo("{Zulix-Sid}"), "13");
    session->dSessionId = 12.5;
    EXPECT_EQ(session->getTrackingUniqueInfo("{Zulix-Sid}"), "12");
}

TEST(Macros, AnAbsentCookieIsWrittenAsNull)
{
    AdSession session;
    session->strCookieGuid = nullptr;

    EXPECT_EQ(session->getTrackingUniqueInfo("{Zulix-Guid}"), "(null)");
}

TEST(Macros, TheApplicationIsItsNamesDigest)
{
    AdSession session(world_with_facts("1", "abc"));

    EXPECT_EQ(session->getTrackingUniqueInfo("{Zulix-app}"), "900150983cd24fb0d6963f7d28e17f72");
}

TEST(Macros, TheDeviceIsWrittenPlainAndAsItsDigest)
{
    AdSession session(world_with_facts("abc", "Host"));

    EXPECT_EQ(session->getTrackingUniqueInfo("{Zulix-uuid}/{Zulix-uuid-md5}"), "abc/900150983cd24fb0d6963f7d28e17f72");
}

TEST(Macros, AbsentNamesAndIdentifiersAreWrittenAsNull)
{
    AdSession session(world_with_facts(nullptr, nullptr));

    EXPECT_EQ(session->getTrackingUniqueInfo("{Zulix-app}/{Zulix-uuid}/{Zulix-uuid-md5}"), "(null)/(null)/(null)");
}

TEST(Macros, AValueThatNamesALaterMacroIsExpandedAgainButNotItselfOrAnEarlierOne)
{
    const struct {
        const char* cookie;
        const char* expanded;
    } rows[] = {
        {"{CurrentTime}", "{CurrentTime}"},
        {"{TotalTime}", "{TotalTime}"},
        {"{Zulix-Guid}", "{Zulix-Guid}"},
        {"{Zulix-Sid}", "1700000000"},
        {"{Zulix-Seq}", "7"},
        {"{Zulix-app}", "900150983cd24fb0d6963f7d28e17f72"},
        {"{Zulix-uuid}", "device"},
        {"{Zulix-uuid-md5}", "913f9c49dcb544e2087cee284f4a00b7"},
    };
    for (const auto& row : rows) {
        AdSession session(world_with_facts("device", "abc"));
        session->strCookieGuid = row.cookie;
        EXPECT_EQ(session->getTrackingUniqueInfo("{Zulix-Guid}"), row.expanded);
    }
}

TEST(Macros, ADeviceThatNamesItsDigestIsExpandedAgainButNotOneThatNamesTheApplication)
{
    AdSession digest(world_with_facts("{Zulix-uuid-md5}", "abc"));
    EXPECT_EQ(digest->getTrackingUniqueInfo("{Zulix-uuid}"), "abe173ebbd1f3097bbcebeea1e0b851e");

    AdSession application(world_with_facts("{Zulix-app}", "abc"));
    EXPECT_EQ(application->getTrackingUniqueInfo("{Zulix-uuid}"), "{Zulix-app}");
}

TEST(Macros, ValuesAreNotEncoded)
{
    AdSession session;
    session->strCookieGuid = "a b&c";

    EXPECT_EQ(session->getTrackingUniqueInfo("?g={Zulix-Guid}"), "?g=a b&c");
}

TEST(Macros, AVideoOfLessThanASecondHasATotalTime)
{
    AdSession session;
    session->fTotalTime = 0.5F;

    EXPECT_EQ(session->getTrackingUniqueInfo("{TotalTime}"), "0.500000");
}

} // namespace
} // namespace qoro
