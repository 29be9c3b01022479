#include "Places.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <string>

// The kit has no names of the controller: what it needs of it arrives as data.

namespace qoro
{
namespace
{

using Names = std::set<std::string>;

std::string text_of(const std::filesystem::path& file)
{
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    return text.str();
}

/// What the first group of a pattern matches in the files of a folder.
/// @param extensions of the files to read
Names matches(const std::string& folder, const std::set<std::string>& extensions, const std::string& pattern)
{
    const std::regex regex(pattern);
    Names found;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(QORO_SOURCE_DIR "/" + folder)) {
        // The pictures are megabytes of numbers; their names are in VideoImage.h.
        if (!extensions.contains(entry.path().extension()) || entry.path().filename() == "VideoImage.cpp")
            continue;
        const std::string text = text_of(entry.path());
        for (std::sregex_iterator match(text.begin(), text.end(), regex), end; match != end; ++match)
            found.insert((*match)[1]);
    }
    return found;
}

TEST(Kit, HasNoTextThatNamesAMemberOperationOrNotificationOfTheController)
{
    // Identifiers that the controller's headers introduce, and the notifications that it posts.
    Names names = matches("Base", {".h"}, R"(\b([A-Za-z_][A-Za-z0-9_]{4,})\b\s*(?:\(|=|;|\{|\[))");
    names.merge(matches("Base", {".cpp"}, R"re(postNotificationName\("([^"]+)")re"));
    // The superclass's own interface is the kit's.
    for (const std::string& own : matches("platform", {".h"}, R"(\b([A-Za-z_][A-Za-z0-9_]{4,})\b)"))
        names.erase(own);
    EXPECT_TRUE(names.contains("setControllerBarHiddenState"));
    EXPECT_TRUE(names.contains("arrayVideoCloseButton"));
    EXPECT_TRUE(names.contains("didAdRequester"));
    EXPECT_TRUE(names.contains("NotifyOpenVideoExResult"));

    Names both;
    // An action's name may end with a colon.
    for (const std::string& text : matches("kit", {".h", ".cpp"}, R"re("([A-Za-z_][A-Za-z0-9_]*):?")re"))
        if (names.contains(text))
            both.insert(text);
    EXPECT_THAT(both, testing::IsEmpty());
}

} // namespace
} // namespace qoro
