#include "tests/app/ShellRun.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <unistd.h>
#include <vector>

// Tests of `qoro-ad check` itself, run through the shell.

namespace qoro::test
{
namespace
{

using Json = nlohmann::json;

/// A scenario whose ad can never be closed when its video stalls, and with a setting without effect.
const std::string Trap =
    R"({"video": {"duration": 8}, "host": {"parent": true}, "ad": {"strVideoUrl": "http://ad/v.mp4",
    "fVideoWidth": 16, "fVideoHeight": 9, "portraitModeType": 2, "landscapeModeType": 2, "portraitVideoPos": "TOP",
    "bIsAutoStart": true, "bIsEndedCloseBtn": true, "iBufferingSufferTime": -1, "bCanRotate": true},
    "steps": [{"open": 0}, {"at": 12, "device": {}}]})";

/// A folder that is removed with its content.
class Folder
{
public:
    Folder() : path_(std::filesystem::temp_directory_path() / ("qoro-check-" + std::to_string(::getpid())))
    {
        std::filesystem::create_directories(path_);
    }
    ~Folder() { std::filesystem::remove_all(path_); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string file(const std::string& name, const std::string& text) const
    {
        std::ofstream(path_ / name) << text;
        return (path_ / name).string();
    }
    std::string path(const std::string& name) const { return (path_ / name).string(); }

private:
    const std::filesystem::path path_;
};

} // namespace

TEST(CheckCommand, ASoundAdGivesOneLineAndStatusZero)
{
    const Folder folder;
    std::string sound = Trap;
    sound.replace(sound.find("\"bIsEndedCloseBtn\": true"), 24, "\"iCloseBtnCountdown\": 3 ");
    sound.replace(sound.find("-1"), 2, "5 ");
    const ShellResult run = run_shell("qoro-ad check " + folder.file("ad.json", sound));
    EXPECT_EQ(run.status, 0) << run.output << run.errors;
    ASSERT_EQ(lines_of(run.output).size(), 1U) << run.output;
    EXPECT_NE(run.output.find("no findings"), std::string::npos);
    EXPECT_EQ(run.errors, "");
}

TEST(CheckCommand, FindingsAreGroupedByRuleWithPlaceAndCure)
{
    const Folder folder;
    const std::string file = folder.file("trap.json", Trap);
    const ShellResult run = run_shell("qoro-ad check --severity note " + file);
    EXPECT_EQ(run.status, 1) << run.errors;
    EXPECT_NE(run.output.find("error  The viewer cannot close the ad  [close-never]"), std::string::npos) << run.output;
    EXPECT_NE(run.output.find(file + ":3: /ad/bIsEndedCloseBtn: the viewer can never close the ad"), std::string::npos);
    EXPECT_LT(run.output.find("close-never"), run.output.find("setting-without-effect")) << "the worst first";
    EXPECT_EQ(run.output.find('\x1b'), std::string::npos) << "no colours in a pipe";
}

TEST(CheckCommand, CounterexamplesAreScenariosForSimulate)
{
    const Folder folder;
    const ShellResult run =
        run_shell("qoro-ad check " + folder.file("trap.json", Trap) + " --out " + folder.path("out"));
    EXPECT_EQ(run.status, 1) << run.errors;
    EXPECT_NE(run.output.find("see:  qoro-ad simulate " + folder.path("out/close-never-1.json") + "  # at second 0\n"),
              std::string::npos)
        << run.output;
    const ShellResult replayed = run_shell("qoro-ad simulate " + folder.path("out/close-never-1.json") + " --summary");
    EXPECT_EQ(replayed.status, 0) << replayed.errors;
    EXPECT_NE(replayed.output.find("close button could be tapped    never"), std::string::npos) << replayed.output;
}

TEST(CheckCommand, JsonHasTheCounterexamples)
{
    const Folder folder;
    const ShellResult run = run_shell("qoro-ad check --format json " + folder.file("trap.json", Trap));
    EXPECT_EQ(run.status, 1);
    const Json result = Json::parse(run.output);
    const Json& finding = result["ads"][0]["findings"][0];
    EXPECT_EQ(finding["rule"], "close-never");
    EXPECT_EQ(finding["severity"], "error");
    EXPECT_EQ(finding["path"], "/ad/bIsEndedCloseBtn");
    EXPECT_EQ(finding["at"], 0) << "seconds: the viewer waits from the opening on";
    EXPECT_TRUE(finding["counterexample"]["steps"].is_array());
}

TEST(CheckCommand, SarifHasWhatTheStandardRequires)
{
    const Folder folder;
    const std::string file = folder.file("trap.json", Trap);
    const ShellResult run = run_shell("qoro-ad check --format sarif --severity note " + file);
    EXPECT_EQ(run.status, 1);
    const Json log = Json::parse(run.output);
    // SARIF 2.1.0, sections 3.13, 3.14, 3.19, 3.27.
    EXPECT_EQ(log["version"], "2.1.0");
    const Json& sarif = log["runs"][0];
    const Json& driver = sarif["tool"]["driver"];
    EXPECT_EQ(driver["name"], "qoro-ad");
    ASSERT_FALSE(sarif["results"].empty());
    for (const Json& result : sarif["results"]) {
        const std::size_t index = result["ruleIndex"];
        EXPECT_EQ(driver["rules"][index]["id"], result["ruleId"]);
        EXPECT_TRUE(result["level"] == "note" || result["level"] == "warning" || result["level"] == "error");
        EXPECT_TRUE(result["message"]["text"].is_string());
        const Json& location = result["locations"][0];
        EXPECT_EQ(location["physicalLocation"]["artifactLocation"]["uri"], file);
        EXPECT_EQ(location["physicalLocation"]["region"]["startLine"], 3) << location;
        EXPECT_TRUE(location["logicalLocations"][0]["fullyQualifiedName"].is_string());
        EXPECT_EQ(result.contains("properties"), result["ruleId"] == "close-never") << "a setting has no moment";
    }
    EXPECT_EQ(sarif["results"][0]["properties"]["at"], 0);
    EXPECT_EQ(sarif["results"][0]["locations"][0]["physicalLocation"]["region"]["startColumn"], 27);
    EXPECT_EQ(sarif["columnKind"], "unicodeCodePoints");
}

TEST(CheckCommand, EveryObjectOfSarifHasItsRequiredProperties)
{
    const Folder folder;
    const ShellResult run = run_shell("qoro-ad check --format sarif --severity note " + folder.file("t.json", Trap) +
                                      " --out " + folder.path("out"));
    // The lists "required" of the schema, by the property that holds the object.
    const std::map<std::string, std::vector<std::string>> required{
        {"", {"version", "runs"}}, {"runs", {"tool"}},
        {"tool", {"driver"}},      {"driver", {"name"}},
        {"rules", {"id"}},         {"results", {"message"}},
        {"help", {"text"}},        {"attachments", {"artifactLocation"}}};
    std::set<std::string> met;
    const std::function<void(const std::string&, const Json&)> visit = [&](const std::string& name, const Json& json) {
        if (json.is_object()) {
            met.insert(name);
            const auto properties = required.find(name);
            for (const std::string& property :
                 properties == required.end() ? std::vector<std::string>() : properties->second)
                EXPECT_TRUE(json.contains(property)) << name << " lacks " << property << ": " << json;
            for (const auto& [key, value] : json.items())
                visit(key, value);
        } else if (json.is_array())
            for (const Json& entry : json)
                visit(name, entry);
    };
    visit("", Json::parse(run.output));
    for (const auto& [name, properties] : required)
        EXPECT_TRUE(met.contains(name)) << name;
}

TEST(CheckCommand, UnusableInputIsOneLineAndStatusTwo)
{
    const Folder folder;
    const ShellResult run = run_shell("qoro-ad check " + folder.path("none.json") + " " + folder.file("t.json", Trap));
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(lines_of(run.errors).size(), 1U) << run.errors;
    EXPECT_NE(run.errors.find("none.json"), std::string::npos);
    EXPECT_NE(run.output.find("close-never"), std::string::npos) << "the other ad is checked";
    EXPECT_EQ(run_shell("qoro-ad check --severity bad " + folder.path("t.json")).status, 2);
}

TEST(CheckCommand, TheExamplesHaveOnlyFindingsThatTheDocumentExplains)
{
    // Scenarios, which need no video: the other examples are checked where videos can be read.
    const ShellResult run = run_shell("qoro-ad check --format json examples/simulator/first-session.json");
    EXPECT_EQ(run.status, 0) << run.output;
}

} // namespace qoro::test
