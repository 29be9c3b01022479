#include "DecodedFile.h"
#include "tests/desktop/app/Command.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <vector>

// The sound of this program's decoders. ffmpeg's program, which decodes with the same library, is the measure. Files
// without a container have no edit list, which ffmpeg and GStreamer round differently.

namespace qoro::test
{
namespace
{

std::vector<float> floats(const std::string& bytes)
{
    std::vector<float> all(bytes.size() / sizeof(float));
    std::memcpy(all.data(), bytes.data(), all.size() * sizeof(float));
    return all;
}

struct Sound {
    const char* name;
    /// A different tone for each channel.
    const char* source;
    const char* options;
    const char* file;
    const char* decoder;
    const char* form;
};

void PrintTo(const Sound& sound, std::ostream* out)
{
    *out << sound.name;
}

constexpr const char* Mono = "sine=frequency=440:duration=1";
constexpr const char* Stereo = "aevalsrc='sin(440*2*PI*t)/2|sin(550*2*PI*t)/3':channel_layout=stereo:duration=1";
constexpr const char* Surround =
    "aevalsrc='sin(440*2*PI*t)/2|sin(550*2*PI*t)/3|sin(660*2*PI*t)/4|sin(60*2*PI*t)/5|sin(770*2*PI*t)/6|"
    "sin(880*2*PI*t)/7':channel_layout=5.1:duration=1";

class LibavSounds : public testing::TestWithParam<Sound>
{
protected:
    std::string make() const
    {
        const std::string path = folder.path(GetParam().file);
        EXPECT_TRUE(
            run_ffmpeg(std::string("-f lavfi -i \"") + GetParam().source + "\" " + GetParam().options + " " + path));
        return path;
    }

    const ScratchFolder folder;
};

Decoding of_sound()
{
    Decoding how;
    how.kind = "audio";
    return how;
}

TEST_P(LibavSounds, AreDecodedAsByFfmpeg)
{
    const std::string clip = make();
    ASSERT_TRUE(run_ffmpeg("-i " + clip + " -f f32le " + folder.path("sound")));
    const std::vector<float> expected = floats(folder.read("sound"));
    ASSERT_GT(expected.size(), 30000U);

    const DecodedFile decoded = decode(clip, of_sound());
    EXPECT_EQ(decoded.error, "");
    EXPECT_EQ(decoded.decoder, GetParam().decoder);
    EXPECT_NE(decoded.caps.find(GetParam().form), std::string::npos) << decoded.caps;
    const std::vector<float> samples = floats(decoded.samples);
    ASSERT_EQ(samples.size(), expected.size());
    float largest = 0;
    for (std::size_t n = 0; n < samples.size(); ++n)
        largest = std::max(largest, std::abs(samples[n] - expected[n]));
    EXPECT_LT(largest, 1e-5F);
}

TEST_P(LibavSounds, ThatAreDamagedNeitherCrashNorHang)
{
    make();
    const std::string whole = folder.read(GetParam().file);
    std::mt19937 random(1);
    std::uniform_int_distribution<std::size_t> place(whole.size() / 4, whole.size() - 1);
    for (int run = 0; run < 8; ++run) {
        std::string damaged = whole;
        for (int n = 0; n < 1 << run; ++n)
            damaged[place(random)] = static_cast<char>(random());
        const DecodedFile decoded =
            decode(folder.write(std::string("damaged-") + GetParam().file, damaged), of_sound());
        EXPECT_TRUE(run > 0 || !decoded.samples.empty()) << "with one wrong byte";
    }
}

INSTANTIATE_TEST_SUITE_P(All, LibavSounds,
                         testing::Values(Sound{"Aac", Stereo, "-c:a aac", "s.aac", "QoroAac", "channels=(int)2"},
                                         Sound{"AacOfOneChannel", Mono, "-c:a aac", "s.aac", "QoroAac",
                                               "channels=(int)1"},
                                         Sound{"AacOfSixChannels", Surround, "-c:a aac", "s.aac", "QoroAac",
                                               "channels=(int)6, channel-mask=(bitmask)0x000000000000003f"},
                                         Sound{"Mp3", Stereo, "-c:a libmp3lame -write_xing 0 -id3v2_version 0", "s.mp3",
                                               "QoroMp3", "channels=(int)2"},
                                         Sound{"Ac3", Surround, "-c:a ac3", "s.ac3", "QoroAc3",
                                               "channels=(int)6, channel-mask=(bitmask)0x0000000000000c0f"},
                                         Sound{"Eac3", Stereo, "-c:a eac3", "s.eac3", "QoroEac3", "channels=(int)2"}),
                         [](const testing::TestParamInfo<Sound>& sound) { return sound.param.name; });

/// Encoders begin with samples that the container marks; the first and the last sound are those of the source.
TEST(LibavSound, OfAFilmBeginsWithItsPictures)
{
    const ScratchFolder folder;
    const std::string clip = folder.path("film.mp4");
    ASSERT_TRUE(run_ffmpeg("-f lavfi -i \"" + std::string(Stereo) + "\" -c:a aac " + clip));
    ASSERT_TRUE(run_ffmpeg("-i " + clip + " -f f32le " + folder.path("sound")));
    const std::vector<float> expected = floats(folder.read("sound"));
    const std::vector<float> samples = floats(decode(clip, of_sound()).samples);
    // GStreamer rounds the beginning to nanoseconds, which may leave one sample for each channel before it.
    const std::size_t before = std::abs(samples[0] - expected[0]) < 1e-5F ? 0 : 2;
    ASSERT_GT(samples.size(), 80000U);
    ASSERT_LE(samples.size(), expected.size() + before);
    float largest = 0;
    for (std::size_t n = before; n < samples.size(); ++n)
        largest = std::max(largest, std::abs(samples[n] - expected[n - before]));
    EXPECT_LT(largest, 1e-5F);
}

} // namespace
} // namespace qoro::test
