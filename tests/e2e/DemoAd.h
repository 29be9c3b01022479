#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace qoro::test
{

/// A copy of the demo ad that tolerates a slow machine: its video lasts longer than any test, and its countdown never
/// ends unless the test says otherwise. Uses a temporary folder that the destructor removes.
class DemoAd
{
public:
    /// File name of the demo's own video of 14 seconds.
    static constexpr const char* OwnVideo = "own.mp4";

    /// @param changes properties of the ad that differ from the demo's; null removes a property
    explicit DemoAd(const nlohmann::json& changes = nlohmann::json::object());
    ~DemoAd();
    DemoAd(const DemoAd&) = delete;
    DemoAd& operator=(const DemoAd&) = delete;

    /// Path of the ad's file.
    std::string file() const { return folder_ + "/ad.json"; }
    /// Path of a steps file in which the viewer touches the video every second, so that its controls never hide.
    std::string touches() const;
    const std::string& folder() const { return folder_; }

private:
    std::string folder_;
};

} // namespace qoro::test
