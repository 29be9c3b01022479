#pragma once

#include "Places.h"
#include "PlayerWatch.h"
#include "SoundServer.h"
#include "VideoServer.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace qoro::test
{

using Reports = std::vector<std::string>;

/// One second each of red, green, blue and white (clips/make.sh).
inline const std::string Clip = QORO_SOURCE_DIR "/tests/desktop/media/clips/colours.mp4";
constexpr double Duration = 4;

inline std::string bytes_of(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// Observes a player while there is no sound server.
class GstPlayerTest : public testing::Test
{
protected:
    GstPlayerTest() { without_sound_server(); }

    static NSURL file() { return NSURL::fileURLWithPath(Clip); }
    NSURL served(VideoServer::Answer answer = {})
    {
        if (answer.body.empty())
            answer.body = bytes_of(Clip);
        server.serve("/v.mp4", std::move(answer));
        return NSURL::URLWithString(server.address("/v.mp4"));
    }

    GlibLoop loop;
    VideoServer server;
    PlayerWatch watch{loop};
};

} // namespace qoro::test
