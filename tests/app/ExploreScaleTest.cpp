#include "tests/app/ShellRun.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace qoro::test
{

namespace
{

/// An empty folder with an ad, for a test.
class ExploreScale : public testing::Test
{
protected:
    ExploreScale()
        : folder(std::filesystem::path(testing::TempDir()) /
                 testing::UnitTest::GetInstance()->current_test_info()->name())
    {
        std::filesystem::remove_all(folder);
        std::filesystem::create_directories(folder);
        write("ad.json", ad(4));
    }

    /// An ad with an action button, whose close button appears after two seconds, and with a fault that a tap on the
    /// mute button shows.
    static std::string ad(int duration)
    {
        return R"({"video": {"duration": )" + std::to_string(duration) +
               R"(}, "ad": {"strVideoUrl": "http://ad/v.mp4", "fVideoWidth": 16, "fVideoHeight": 9,
            "portraitModeType": 2, "portraitVideoPos": "TOP", "bIsAutoStart": true, "iCloseBtnCountdown": 2,
            "iBufferingSufferTime": 4, "arrayButtonsInfo": [{"btn_text": "Buy", "launch_type": "browser",
            "data": {"u": "http://shop"}}], "arrayMuteTrackingUrls": ["http://t/mute?x=${BAD}"]},
            "steps": [{"open": 0}]})";
    }

    void write(const std::string& name, const std::string& text) const { std::ofstream(folder / name) << text; }

    /// Runs a command in the folder.
    ShellResult run(const std::string& line, const std::string& input = "") const
    {
        return run_shell("cd '" + folder.string() + "'\n" + line, input);
    }

    const std::filesystem::path folder;
};

/// The ids of lines of results, sorted.
std::vector<std::string> ids_of(const std::string& results)
{
    std::vector<std::string> ids;
    for (const std::string& line : lines_of(results))
        ids.push_back(nlohmann::json::parse(line).at("id").get<std::string>());
    std::ranges::sort(ids);
    return ids;
}

} // namespace

TEST_F(ExploreScale, ASearchWithAStateGoesOnAsIfItHadNeverEnded)
{
    const std::string whole = run("qoro-ad explore ad.json --depth 2 --budget 500").output;
    EXPECT_NE(whole.find("macro-unreplaced: "), std::string::npos) << whole;
    const ShellResult first = run("qoro-ad explore ad.json --depth 2 --budget 60 --state kept");
    EXPECT_NE(first.output, whole);
    EXPECT_NE(first.output.find("the budget ended"), std::string::npos) << first.output;
    EXPECT_EQ(run("qoro-ad explore ad.json --depth 2 --budget 500 --jobs 3 --state kept").output, whole);
    EXPECT_EQ(run("ls").output, "ad.json\nkept\n");
}

TEST_F(ExploreScale, ASignalEndsASearchThatCanGoOn)
{
    // As soon as the program catches the signal, which is the fifteenth.
    const ShellResult stopped = run("qoro-ad explore ad.json --depth 9 --budget 100000000 --state kept >out &\n"
                                    "until grep -q 'SigCgt:.*[4-7c-f][0-9a-f]\\{3\\}$' /proc/$!/status; do :; done\n"
                                    "kill -TERM $!; wait $!");
    EXPECT_EQ(stopped.status, 128 + 15) << stopped.errors;
    EXPECT_NE(stopped.errors.find("kept keeps the sessions"), std::string::npos) << stopped.errors;
    const ShellResult resumed = run("qoro-ad explore ad.json --depth 9 --budget 50 --state kept");
    EXPECT_EQ(resumed.output, run("qoro-ad explore ad.json --depth 9 --budget 50").output) << resumed.errors;
}

TEST_F(ExploreScale, TheStateOfAnotherSearchIsRefused)
{
    run("qoro-ad explore ad.json --depth 1 --budget 20 --state kept");
    write("other.json", ad(5));
    run("sed 's/\"program\":\"/&9/' kept >newer; head -n 3 kept >cut; echo '{}' >none");
    for (const char* line :
         {"ad.json --depth 2 --state kept", "other.json --depth 1 --state kept",
          "ad.json --depth 1 --guard --state kept", "ad.json --depth 1 --device 320x568 --state kept",
          "ad.json --depth 1 --state newer", "ad.json --depth 1 --state cut", "ad.json --depth 1 --state none",
          "ad.json --depth 1 --shard 1/2 --state kept"}) {
        const ShellResult refused = run(std::string("qoro-ad explore --budget 20 ") + line);
        EXPECT_EQ(refused.status, 2) << line;
        EXPECT_EQ(refused.output, "") << line;
        EXPECT_EQ(lines_of(refused.errors).size(), 1U) << line << refused.errors;
    }
}

TEST_F(ExploreScale, TheSessionsOfAnotherBuildAreRefused)
{
    run("qoro-ad explore ad.json --depth 1 --budget 20 --state kept\n"
        "qoro-ad explore ad.json --depth 1 --budget 20 --shard 1/1 >shard\n"
        "sed -i 's/\"sources\":\"./&0/; s/\"moments\"/\"other\"/' kept shard");
    for (const char* line : {"explore ad.json --depth 1 --budget 20 --state kept", "merge shard"}) {
        const ShellResult refused = run(std::string("qoro-ad ") + line);
        EXPECT_EQ(refused.status, 2) << line;
        EXPECT_EQ(refused.output, "") << line;
        EXPECT_EQ(lines_of(refused.errors).size(), 1U) << line << refused.errors;
        EXPECT_NE(refused.errors.find("another build"), std::string::npos) << refused.errors;
    }
}

TEST_F(ExploreScale, TwoShardsTogetherAreTheWholeSearch)
{
    const ShellResult whole = run("qoro-ad explore ad.json --depth 2 --budget 800 --format json");
    const ShellResult parts = run("for n in 1 2; do qoro-ad explore ad.json --depth 2 --budget 800 --shard $n/2 >$n & "
                                  "done; wait; qoro-ad merge 2 1 --format json");
    EXPECT_EQ(parts.output, whole.output) << parts.errors;
    EXPECT_EQ(parts.status, whole.status);
    EXPECT_NE(whole.output.find("macro-unreplaced"), std::string::npos) << whole.output;
    // Neither has done the other's work.
    const auto sessions = [&](const char* file) {
        return std::stoul(run(std::string("grep -c '^{\"session\":' ") + file).output);
    };
    const auto all = nlohmann::json::parse(whole.output).at("searches").at(0).at("sessions").get<std::size_t>();
    EXPECT_LT(std::max(sessions("1"), sessions("2")), all * 3 / 4);

    const ShellResult one = run("qoro-ad merge 1");
    EXPECT_EQ(one.status, 2);
    EXPECT_NE(one.errors.find("missing shards: 2/2"), std::string::npos) << one.errors;
    const ShellResult twice = run("qoro-ad merge 1 2 1");
    EXPECT_EQ(twice.status, 2);
    EXPECT_NE(twice.errors.find("shard 1 is also in 1"), std::string::npos) << twice.errors;
}

TEST_F(ExploreScale, EachDeviceHasASearchOfItsOwn)
{
    const ShellResult both =
        run("qoro-ad explore ad.json --depth 0 --policy-seconds 1 --device 375x667,ipad-9 --format json");
    EXPECT_EQ(both.status, 1) << both.errors;
    const auto searches = nlohmann::json::parse(both.output).at("searches");
    ASSERT_EQ(searches.size(), 2U);
    EXPECT_EQ(searches[0].at("findings").at(0).at("device"), "375x667");
    EXPECT_EQ(searches[1].at("findings").at(0).at("device"), "ipad-9");
    EXPECT_NE(searches[0].at("findings").at(0).at("scenario").at("device"),
              searches[1].at("findings").at(0).at("scenario").at("device"));
    const ShellResult text =
        run("qoro-ad explore ad.json --depth 0 --policy-seconds 1 --device 375x667 --device ipad-9");
    EXPECT_NE(text.output.find("close-late (on ipad-9): "), std::string::npos) << text.output;
}

TEST_F(ExploreScale, ACatalogueHasALineForEachAd)
{
    write("list", "ad.json\nmissing.json\n{\"id\": \"second\", \"ad\": \"ad.json\"}\n\n"
                  "{\"id\": \"third\", \"strVideoUrl\": \"http://ad/v.mp4\"}\n{broken\n");
    const ShellResult all = run("qoro-ad explore --jsonl --depth 0 <list");
    EXPECT_EQ(all.status, 0) << all.errors;
    ASSERT_EQ(lines_of(all.output).size(), 5U) << all.output;
    const auto second_line = nlohmann::json::parse(lines_of(all.output)[1]);
    EXPECT_EQ(second_line.at("id"), "missing.json");
    EXPECT_TRUE(second_line.contains("error"));
    EXPECT_TRUE(nlohmann::json::parse(lines_of(all.output)[4]).contains("error"));

    run("for n in 1 2 3; do qoro-ad explore --jsonl --depth 0 --shard $n/3 <list >$n; done");
    const ShellResult merged = run("qoro-ad merge 3 1 2 --list list");
    EXPECT_EQ(merged.errors, "");
    EXPECT_EQ(ids_of(merged.output), ids_of(all.output));
    EXPECT_EQ(merged.output, run("qoro-ad merge - <<X\n" + all.output + "X").output);
    const ShellResult part = run("qoro-ad merge 1 3 --list list");
    EXPECT_EQ(part.status, 2);
    EXPECT_NE(part.errors.find("have no result: missing.json"), std::string::npos) << part.errors;
    EXPECT_EQ(run("qoro-ad merge 1 2 3 2").status, 2);
}

TEST_F(ExploreScale, PartitionsThatArePipedThroughTheProgramAreTheCatalogue)
{
    // As Spark's RDD.pipe does it: a process for each partition, which gets the partition's elements as lines on its
    // standard input and whose lines on standard output are the elements of the result.
    std::string list;
    for (int n = 1; n <= 6; ++n) {
        write("ad-" + std::to_string(n) + ".json", ad(n));
        list += "ad-" + std::to_string(n) + ".json\n";
    }
    write("list", list);
    const ShellResult piped = run("head -n 3 list | qoro-ad explore --jsonl --depth 0 >part-0 &\n"
                                  "tail -n 3 list | qoro-ad explore --jsonl --depth 0 >part-1 &\n"
                                  "wait; cat part-1 part-0 >results; qoro-ad merge results --list list");
    EXPECT_EQ(piped.errors, "");
    EXPECT_EQ(piped.output, run("qoro-ad explore --jsonl --depth 0 <list | sort").output);
    EXPECT_EQ(lines_of(piped.output).size(), 6U);
    // An empty partition is a process as well.
    const ShellResult empty = run("qoro-ad explore --jsonl --depth 0 </dev/null");
    EXPECT_EQ(empty.status, 0);
    EXPECT_EQ(empty.output, "");
}

TEST_F(ExploreScale, GnuParallelSpreadsACatalogue)
{
    if (run("parallel --version").output.find("GNU parallel") == std::string::npos)
        GTEST_SKIP() << "parallel is not installed; tools/setup.sh test installs it";
    std::string list;
    for (int n = 1; n <= 4; ++n) {
        write("ad-" + std::to_string(n) + ".json", ad(n));
        list += "ad-" + std::to_string(n) + ".json\n";
    }
    write("list", list);
    const ShellResult spread =
        run("HOME=$PWD parallel --jobs 2 --pipe -N 1 qoro-ad explore --jsonl --depth 0 <list >results\n"
            "qoro-ad merge results --list list");
    EXPECT_EQ(spread.errors, "");
    EXPECT_EQ(spread.output, run("qoro-ad explore --jsonl --depth 0 <list | sort").output);
}

TEST_F(ExploreScale, ATagsAdsAreExplored)
{
    const ShellResult tag =
        run_shell("qoro-ad explore tests/vast/documents/ads/pod.xml --depth 0 --policy-seconds 5 --format json");
    if (run("qoro-ad --help").output.find("import") == std::string::npos) {
        EXPECT_NE(tag.errors.find("this build cannot resolve a VAST tag"), std::string::npos) << tag.errors;
        return;
    }
    EXPECT_EQ(tag.status, 1) << tag.errors;
    const auto searches = nlohmann::json::parse(tag.output).at("searches");
    ASSERT_GT(searches.size(), 1U);
    EXPECT_EQ(searches[1].at("ad"), 2);
    EXPECT_EQ(searches[0].at("findings").at(0).at("rule"), "close-late");
}

} // namespace qoro::test
