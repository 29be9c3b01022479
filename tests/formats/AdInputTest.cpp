#include "formats/AdInput.h"

#include "formats/InputError.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace qoro
{
namespace
{

class AdInputTest : public testing::Test
{
protected:
    AdInputTest()
    {
        std::string name = (std::filesystem::temp_directory_path() / "ad-input-XXXXXX").string();
        folder = mkdtemp(name.data());
    }
    ~AdInputTest() override { std::filesystem::remove_all(folder); }

    std::string write(const std::string& name, std::string_view text) const
    {
        std::ofstream(folder / name, std::ios::binary) << text;
        return (folder / name).string();
    }
    InputKind kind_of(std::string_view text) const { return read_ad_input(write("input", text)).kind; }
    static std::string complaint(const std::string& named)
    {
        try {
            read_ad_input(named);
        } catch (const InputError& error) {
            return error.what();
        }
        return "";
    }

    std::filesystem::path folder;
};

} // namespace

TEST_F(AdInputTest, JsonIsAnAdOrAScenario)
{
    EXPECT_EQ(kind_of(R"({"strVideoUrl": "v.mp4"})"), InputKind::Ad);
    EXPECT_EQ(kind_of("{}"), InputKind::Ad);
    EXPECT_EQ(read_ad_input(write("unclear", "{}"), InputKind::Scenario).kind, InputKind::Scenario);
    EXPECT_EQ(kind_of(R"({"device": {}, "ad": {"strVideoUrl": "v.mp4"}, "steps": []})"), InputKind::Scenario);
    EXPECT_EQ(kind_of(R"({"steps": []})"), InputKind::Scenario);
    EXPECT_EQ(kind_of(R"({"dicTrackingUrls": {"ad": []}})"), InputKind::Ad) << "only keys of the object itself count";
    EXPECT_EQ(kind_of("\xef\xbb\xbf {\"steps\": []}"), InputKind::Scenario);
    EXPECT_EQ(kind_of(R"({"a": )"), InputKind::Ad) << "its reader complains";
}

TEST_F(AdInputTest, XmlIsATag)
{
    EXPECT_EQ(kind_of("<VAST/>"), InputKind::Tag);
    EXPECT_EQ(kind_of("\xef\xbb\xbf\n<VAST/>"), InputKind::Tag);
    EXPECT_EQ(kind_of(std::string_view("\xff\xfe<\0V\0", 6)), InputKind::Tag);
    EXPECT_EQ(kind_of(std::string_view("\0<\0V", 4)), InputKind::Tag);
}

TEST_F(AdInputTest, AnAddressIsATagThatIsNotRead)
{
    const AdInput input = read_ad_input("https://ads.example/tag");
    EXPECT_EQ(input.kind, InputKind::Tag);
    EXPECT_TRUE(input.is_address);
    EXPECT_EQ(input.name, "https://ads.example/tag");
}

TEST_F(AdInputTest, AFolderIsItsAdFile)
{
    const std::string file = write("ad.json", "{}");
    const AdInput input = read_ad_input(folder.string());
    EXPECT_EQ(input.name, file);
    EXPECT_EQ(input.text, "{}");
    std::filesystem::remove(file);
    EXPECT_EQ(complaint(folder.string()), folder.string() + ": the folder has no ad.json");
}

TEST_F(AdInputTest, WhatIsNeitherIsRefusedWithWhatWasExpected)
{
    const std::string expected =
        "expected an ad file or a scenario (JSON), a VAST tag (XML), a folder with an ad.json, "
        "or an address of http or https";
    const std::string video = write("clip.mp4", std::string_view("\0\0\0 ftypisom", 12));
    EXPECT_EQ(complaint(video), video + ": " + expected);
    for (const char* text : {"<!DOCTYPE html><title>A</title>", "\n<html><br></html>"}) {
        const std::string page = write("page.html", text);
        EXPECT_EQ(complaint(page), page + ": a page (HTML), which an ad names as its strWebViewUrl; " + expected);
    }
    EXPECT_EQ(complaint("ftp://ads.example/tag"), "ftp://ads.example/tag: " + expected);
    const std::string empty = write("empty.json", " \n");
    EXPECT_EQ(complaint(empty), empty + ": the file is empty; " + expected);
    EXPECT_EQ(complaint("/nowhere/ad.json"), "/nowhere/ad.json: No such file or directory");
}

} // namespace qoro
