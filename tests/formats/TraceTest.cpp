#include "formats/Trace.h"

#include "simulator/SimulatedPlatform.h"

#include <gtest/gtest.h>

namespace qoro
{
namespace
{

struct TraceTest : testing::Test {
    SimulatedPlatform platform;
    std::vector<std::string> lines;

    Trace make(TraceFormat format)
    {
        return Trace(platform.loop(), format, [this](std::string_view line) { lines.emplace_back(line); });
    }
};

TEST_F(TraceTest, AJsonLineHoldsTimeKindAndFieldsInTheirOrder)
{
    Trace trace = make(TraceFormat::Json);
    const Value data(NSDictionary{{"e", NSDictionary{{"visibility", 1}}}});
    platform.run_until(1.25);

    trace.receive(event::ScriptEvent{"video_visibilitychange", &data, 2});

    EXPECT_EQ(lines, std::vector<std::string>{
                         R"({"t":1.25,"what":"js","event":"video_visibilitychange","data":{"e":{"visibility":1}},)"
                         R"("listeners":2})"
                         "\n"});
}

TEST_F(TraceTest, AnAbsentTextIsNull)
{
    Trace trace = make(TraceFormat::Json);

    trace.receive(event::Requested{NSString(), RequestPurpose::Tracking});

    EXPECT_EQ(lines[0], "{\"t\":0,\"what\":\"request\",\"url\":null,\"for\":\"tracking\"}\n");
}

TEST_F(TraceTest, AReadableLineHasTimeObjectAndEvent)
{
    Trace trace = make(TraceFormat::Text);
    platform.run_until(12.3456789);

    trace.receive(event::PlayerSought{4.5});
    trace.receive(event::VolumeSet{0.6F});
    const Value no_data;
    trace.receive(event::ScriptEvent{"onhide", &no_data, 1});

    EXPECT_EQ(lines, (std::vector<std::string>{
                         "    12.346  player      seek  to 4.5\n",
                         "    12.346  sound       volume  value 0.6\n",
                         "    12.346  script      onhide  listeners 1\n",
                     }));
}

TEST_F(TraceTest, AReadableLineHasTheUseOfAnAddressAndTheLevelOfALogLine)
{
    Trace trace = make(TraceFormat::Text);

    trace.receive(event::Requested{"http://t/start", RequestPurpose::Tracking});
    trace.receive(event::Fetched{"http://ad/icon.png", FetchPurpose::BrandIcon});
    trace.receive(event::OrientationForced{1});
    trace.receive(event::Logged{4, "Time's up"});

    EXPECT_EQ(lines, (std::vector<std::string>{
                         "     0.000  network     tracking  http://t/start\n",
                         "     0.000  network     fetch  brandIcon  http://ad/icon.png\n",
                         "     0.000  device      orientation 1\n",
                         "     0.000  log         Time's up  (note)\n",
                     }));
}

TEST_F(TraceTest, AReadableLineStaysOneLineWhateverItsText)
{
    Trace trace = make(TraceFormat::Text);

    trace.receive(event::Logged{1, "one\ntwo"});

    EXPECT_EQ(lines[0], "     0.000  log         one two  (info)\n");
}

TEST_F(TraceTest, AReadableLineCutsALongFieldBetweenCharacters)
{
    Trace trace = make(TraceFormat::Text);
    std::string page;
    for (int i = 0; i < 200; ++i)
        page += "ä";

    trace.receive(event::PageLoaded{page, nullptr});

    EXPECT_LT(lines[0].size(), 220U);
    EXPECT_TRUE(lines[0].ends_with("ä…\n")) << lines[0];
}

} // namespace
} // namespace qoro
