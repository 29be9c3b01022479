#include "workbench/check/Rules.h"

#include <gtest/gtest.h>

#include "Places.h"

#include <fstream>
#include <iterator>
#include <string>

// docs/check.md lists the rules and exemptions as the program has them.

namespace qoro
{
namespace
{

std::string document()
{
    std::ifstream file(QORO_SOURCE_DIR "/docs/check.md");
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::size_t count(const std::string& text, const std::string& part)
{
    std::size_t found = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++found;
    return found;
}

/// In a table, a "<" would begin an element.
std::string shown(std::string_view text)
{
    std::string cell;
    for (const char c : text)
        cell += c == '<' ? "&lt;" : std::string(1, c);
    return cell;
}

} // namespace

TEST(CheckDocument, EachRuleHasARowWithReasonAndCure)
{
    const std::string text = document();
    for (const Rule& rule : rules()) {
        const std::string row = "| `" + std::string(rule.id) + "` | " + std::string(name_of(rule.severity)) + " | " +
                                shown(rule.title) + " | " + shown(rule.why) + " | " + shown(rule.cure) + " |\n";
        EXPECT_NE(text.find(row), std::string::npos) << row;
    }
    for (const Exemption& exemption : exemptions()) {
        const std::string row = "| `" + std::string(exemption.id) + "` | " + shown(exemption.what) + " |\n";
        EXPECT_NE(text.find(row), std::string::npos) << row;
    }
    EXPECT_EQ(count(text, "\n| `"), rules().size() + exemptions().size()) << "no row for what does not exist";
}

TEST(CheckDocument, IdsAreUniqueAndInKebabCase)
{
    for (const Rule& rule : rules()) {
        EXPECT_EQ(rule_named(rule.id), &rule) << rule.id;
        EXPECT_EQ(rule.id.find_first_not_of("abcdefghijklmnopqrstuvwxyz-"), std::string_view::npos) << rule.id;
        EXPECT_NE(rule.of_ad == nullptr, rule.of_session == nullptr) << rule.id;
    }
}

} // namespace qoro
