#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace qoro::test
{

/// A copy of the demo ad that leaves a slow machine time: its video lasts longer than any test, and its countdown is
/// never over, unless the test says otherwise. In a folder of its own, gone with the object.
class DemoAd
{
public:
    /// The name of the demo's own video, of 14 seconds.
    static constexpr const char* OwnVideo = "own.mp4";

    /// @param changes properties of the ad that differ from the demo's; null removes one
    explicit DemoAd(const nlohmann::json& changes = nlohmann::json::object());
    ~DemoAd();
    DemoAd(const DemoAd&) = delete;
    DemoAd& operator=(const DemoAd&) = delete;

    /// The path of the ad's file.
    std::string file() const { return folder_ + "/ad.json"; }
    /// The path of a file for --steps, in which the viewer touches the video each second: its controls never hide.
    std::string touches() const;
    const std::string& folder() const { return folder_; }

private:
    std::string folder_;
};

} // namespace qoro::test
