#include "Base/VideoPlayer/ControlButtons.h"

#include "Base/VideoPlayer/VideoImage/ImageName.h"
#include "Places.h"
#include "formats/Fields.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

// What a new button or picture must not lack.

namespace qoro
{
namespace
{

std::vector<std::string> names_of_pictures()
{
    std::vector<std::string> names;
    for (const EmbeddedPicture& picture : embeddedPictures())
        names.emplace_back(picture.name);
    return names;
}

TEST(ControlPictures, EachDrawingHasARow)
{
    std::vector<std::string> drawings;
    for (const auto& file : std::filesystem::directory_iterator(QORO_SOURCE_DIR "/Base/VideoPlayer/artwork"))
        drawings.push_back(file.path().stem().string());

    EXPECT_THAT(names_of_pictures(), testing::UnorderedElementsAreArray(drawings));
}

TEST(ControlPictures, AllButTheTwoBackgroundsHaveAnAccessibleName)
{
    std::vector<std::string> nameless;
    for (const EmbeddedPicture& picture : embeddedPictures())
        if (!picture.meaning)
            nameless.emplace_back(picture.name);

    EXPECT_THAT(nameless, testing::UnorderedElementsAre("arrayTopBackGround", "arrayBottomBackGround"));
}

TEST(ControlButtons, AreAllInTheDocument)
{
    std::ifstream file(QORO_SOURCE_DIR "/docs/simulator.md");
    const std::string document(std::istreambuf_iterator<char>(file), {});
    const std::size_t begin = document.find("- **`\"tap\": ");
    ASSERT_NE(begin, std::string::npos);
    const std::string entry = document.substr(begin, document.find("\n- **", begin) - begin);

    for (const std::string& name : button_names())
        EXPECT_THAT(entry, testing::HasSubstr("`" + name + "`"));
}

} // namespace
} // namespace qoro
