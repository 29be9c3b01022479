#include "Places.h"
#include "tests/app/ShellRun.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

// Runs the commands shown in docs/simulator.md and compares their output with the text.

namespace qoro::test
{

namespace
{

struct Block {
    /// The info string of the opening fence.
    std::string kind;
    std::vector<std::string> lines;
};

std::vector<Block> blocks_of_document()
{
    std::ifstream file(QORO_SOURCE_DIR "/docs/simulator.md");
    std::vector<Block> blocks;
    bool inside = false;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("```")) {
            inside = !inside;
            if (inside)
                blocks.push_back({line.substr(3), {}});
        } else if (inside) {
            blocks.back().lines.push_back(line);
        }
    }
    return blocks;
}

/// Whether lines match those shown, where a shown "…" matches one or more lines.
testing::AssertionResult shows(const std::vector<std::string>& shown, const std::vector<std::string>& lines)
{
    std::size_t at = 0;
    bool skips = false;
    for (const std::string& line : shown) {
        if (line == "…") {
            skips = true;
            ++at;
            continue;
        }
        while (skips && at < lines.size() && lines[at] != line)
            ++at;
        if (at >= lines.size() || lines[at] != line)
            return testing::AssertionFailure()
                   << "shown: " << line << "\nthere: " << (at < lines.size() ? lines[at] : "the end");
        ++at;
        skips = false;
    }
    if (at < lines.size() && !skips)
        return testing::AssertionFailure() << "not shown: " << lines[at];
    return testing::AssertionSuccess();
}

} // namespace

TEST(SimulatorDocument, EachCommandHasTheDocumentedOutput)
{
    int commands = 0;
    for (const Block& block : blocks_of_document()) {
        if (block.kind != "console")
            continue;
        ASSERT_TRUE(block.lines.front().starts_with("$ "));
        const std::string command = block.lines.front().substr(2);
        const ShellResult result = run_shell("{ " + command + "\n} 2>&1");
        EXPECT_TRUE(shows({block.lines.begin() + 1, block.lines.end()}, lines_of(result.output))) << command;
        ++commands;
    }
    EXPECT_EQ(commands, 4);
}

TEST(SimulatorDocument, ShowsTheScenarioOfTheExample)
{
    std::ifstream file(QORO_SOURCE_DIR "/examples/simulator/first-session.json");
    std::ostringstream text;
    text << file.rdbuf();
    for (const Block& block : blocks_of_document()) {
        if (block.kind == "json") {
            EXPECT_EQ(block.lines, lines_of(text.str()));
            return;
        }
    }
    FAIL() << "no scenario is shown";
}

} // namespace qoro::test
