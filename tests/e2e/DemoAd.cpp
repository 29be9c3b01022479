#include "tests/e2e/DemoAd.h"

#include "Places.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace qoro::test
{

namespace
{
const std::string Demo = QORO_SOURCE_DIR "/examples/demo";
/// Seconds; longer than any test.
constexpr int Long = 300;
/// Repeats of the demo's 14 seconds in that time.
constexpr int Times = 22;
} // namespace

DemoAd::DemoAd(const nlohmann::json& changes)
{
    std::string name = (std::filesystem::temp_directory_path() / "demo-ad-XXXXXX").string();
    if (!mkdtemp(name.data()))
        throw std::runtime_error("no folder could be made");
    folder_ = name;
    for (const char* part : {"page.html", "icon.png", "hidden.png"})
        std::filesystem::copy_file(Demo + "/" + part, folder_ + "/" + part);
    std::filesystem::copy_file(Demo + "/clip.mp4", folder_ + "/" + OwnVideo);
    const std::string longer = "ffmpeg -v error -stream_loop " + std::to_string(Times - 1) + " -i " + Demo +
                               "/clip.mp4 -c copy -movflags +faststart " + folder_ + "/clip.mp4";
    if (std::system(longer.c_str()) != 0)
        throw std::runtime_error("ffmpeg failed");
    nlohmann::json ad = nlohmann::json::parse(std::ifstream(Demo + "/ad.json"));
    ad["iCloseBtnCountdown"] = 3600;
    ad["iBufferingSufferTime"] = -1; // would show the close button despite the countdown
    ad.merge_patch(changes);
    std::ofstream(file()) << ad;
}

DemoAd::~DemoAd()
{
    std::filesystem::remove_all(folder_);
}

std::string DemoAd::touches() const
{
    nlohmann::json steps = nlohmann::json::array();
    for (int second = 1; second < Long; ++second)
        steps.push_back({{"at", second}, {"tap", "btnClickListener"}});
    std::ofstream(folder_ + "/touches.json") << steps;
    return folder_ + "/touches.json";
}

} // namespace qoro::test
