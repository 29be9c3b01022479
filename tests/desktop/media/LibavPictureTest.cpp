#include "DecodedFile.h"
#include "tests/desktop/app/Command.h"

#include "desktop/glib/Owned.h"
#include "desktop/media/Decoders.h"
#include "desktop/media/MediaFramework.h"
#include "desktop/media/StreamSinks.h"

#include <gst/gst.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <random>
#include <thread>
#include <utility>

// The pictures of this program's decoders. ffmpeg's program, which decodes with the same library, is the measure.

namespace qoro::test
{
namespace
{

using Element = Owned<GstElement, gst_object_unref>;

constexpr double Rate = 25;

/// A clip made by ffmpeg, and what ffmpeg decodes of it.
class LibavPictures : public testing::Test
{
protected:
    /// @param source of the pictures, as ffmpeg's testsrc2 takes it
    /// @param options of the encoder
    std::string make(const std::string& source, const std::string& options, const std::string& name = "clip.mp4") const
    {
        const std::string path = folder.path(name);
        EXPECT_TRUE(run_ffmpeg("-f lavfi -i testsrc2=rate=25:" + source + " " + options + " " + path));
        return path;
    }
    std::string expected(const std::string& path) const
    {
        EXPECT_TRUE(run_ffmpeg("-flags unaligned -i " + path + " -fps_mode passthrough -f rawvideo " +
                               folder.path("pictures")));
        std::string pictures = folder.read("pictures");
        EXPECT_FALSE(pictures.empty());
        return pictures;
    }

    const ScratchFolder folder;
};

/// Pictures that depend on later ones appear in another order than they are coded in.
const std::string Reordered = "-pix_fmt yuv420p -c:v libx264 -bf 3 -g 12";

struct Coding {
    const char* name;
    const char* source;
    const char* options;
    const char* file;
    const char* decoder;
};

void PrintTo(const Coding& coding, std::ostream* out)
{
    *out << coding.name;
}

class LibavCodings : public LibavPictures, public testing::WithParamInterface<Coding>
{
};

TEST_P(LibavCodings, AreDecodedAsByFfmpeg)
{
    const std::string clip = make(GetParam().source, GetParam().options, GetParam().file);
    const std::string pictures = expected(clip);
    for (const int threads : {1, 4}) {
        for (const bool rows_anywhere : {false, true}) {
            Decoding how;
            how.threads = threads;
            how.rows_anywhere = rows_anywhere;
            const DecodedFile decoded = decode(clip, how);
            EXPECT_EQ(decoded.error, "");
            EXPECT_EQ(decoded.decoder, GetParam().decoder);
            // The bytes are too many to print.
            EXPECT_EQ(decoded.samples.size(), pictures.size());
            EXPECT_TRUE(decoded.samples == pictures) << threads << " threads, rows anywhere: " << rows_anywhere;
            ASSERT_GT(decoded.times.size(), 1U);
            for (std::size_t n = 0; n < decoded.times.size(); ++n)
                EXPECT_NEAR(static_cast<double>(decoded.times[n] - decoded.times[0]) / GST_SECOND,
                            static_cast<double>(n) / Rate, 1e-6);
        }
    }
}

constexpr const char* Usual = "size=160x90:duration=1";

INSTANTIATE_TEST_SUITE_P(
    All, LibavCodings,
    testing::Values(
        Coding{"Reordered", Usual, "-pix_fmt yuv420p -c:v libx264 -bf 3 -g 12", "c.mp4", "QoroH264"},
        Coding{"InATransportStream", Usual, "-pix_fmt yuv420p -c:v libx264 -bf 3 -g 12", "c.ts", "QoroH264"},
        Coding{"Cropped", "size=162x94:duration=1", "-pix_fmt yuv420p -c:v libx264", "c.mp4", "QoroH264"},
        Coding{"CroppedOnTheLeft", Usual, "-pix_fmt yuv420p -c:v libx264 -bsf:v h264_metadata=crop_left=6:crop_top=2",
               "c.mp4", "QoroH264"},
        Coding{"OfOddSize", "size=99x55:duration=1", "-pix_fmt yuv444p -c:v libx264", "c.mp4", "QoroH264"},
        Coding{"WithHalfTheColours", Usual, "-pix_fmt yuv422p -c:v libx264", "c.mp4", "QoroH264"},
        Coding{"OfTenBits", Usual, "-pix_fmt yuv420p10le -c:v libx264", "c.mp4", "QoroH264"},
        Coding{"OfTenBitsWithHalfTheColours", Usual, "-pix_fmt yuv422p10le -c:v libx264", "c.mp4", "QoroH264"},
        Coding{"OfTenBitsWithAllColours", Usual, "-pix_fmt yuv444p10le -c:v libx264", "c.mp4", "QoroH264"},
        Coding{"Grey", Usual, "-pix_fmt gray -c:v libx264", "c.mp4", "QoroH264"},
        Coding{"RedGreenBlue", Usual, "-pix_fmt gbrp -c:v libx264rgb", "c.mp4", "QoroH264"},
        Coding{"Interlaced", "size=160x96:duration=1",
               "-vf setfield=tff -pix_fmt yuv420p -c:v libx264 -flags +ildct+ilme", "c.mp4", "QoroH264"},
        Coding{"Hevc", Usual, "-pix_fmt yuv420p -c:v libx265 -x265-params log-level=error", "c.mp4", "QoroHevc"},
        Coding{"HevcOfTenBits", Usual, "-pix_fmt yuv420p10le -c:v libx265 -x265-params log-level=error", "c.mp4",
               "QoroHevc"},
        Coding{"Mpeg4", Usual, "-pix_fmt yuv420p -c:v mpeg4 -bf 2 -q:v 3", "c.mp4", "QoroMpeg4"}),
    [](const testing::TestParamInfo<Coding>& coding) { return coding.param.name; });

TEST_F(LibavPictures, AreDescribedAsTheirStreamSays)
{
    const std::string colours = "-color_primaries bt709 -color_trc bt709 -colorspace bt709 ";
    const std::string clip =
        make("size=160x96:duration=0.4",
             "-vf setsar=4/3,setfield=tff -pix_fmt yuv420p -c:v libx264 " + colours + "-flags +ildct+ilme");
    const DecodedFile decoded = decode(clip);
    for (const char* fact :
         {"format=(string)I420", "width=(int)160", "height=(int)96", "interlace-mode=(string)interleaved",
          "field-order=(string)top-field-first", "pixel-aspect-ratio=(fraction)4/3", "colorimetry=(string)bt709",
          "framerate=(fraction)25/1"})
        EXPECT_NE(decoded.caps.find(fact), std::string::npos) << fact << " is missing in " << decoded.caps;
}

TEST_F(LibavPictures, WithFullRangeSaySo)
{
    const std::string clip = make("size=160x90:duration=0.4", "-pix_fmt yuvj420p -color_range pc -c:v libx264");
    // The range is the first part of a colorimetry: 1 is full.
    EXPECT_NE(decode(clip).caps.find("colorimetry=(string)1:"), std::string::npos) << decode(clip).caps;
}

TEST_F(LibavPictures, AfterASeekAreThoseOfItsTime)
{
    const std::string clip = make("size=160x90:duration=2", Reordered);
    const std::string pictures = expected(clip);
    Decoding how;
    how.from = 1.2;
    const DecodedFile decoded = decode(clip, how);
    const std::size_t size = pictures.size() / 50;
    EXPECT_EQ(decoded.samples.size(), 20 * size);
    EXPECT_TRUE(pictures.ends_with(decoded.samples));
}

TEST_F(LibavPictures, AreTheSameWhenTheyPlayAgain)
{
    const std::string clip = make("size=160x90:duration=1", Reordered);
    const std::string pictures = expected(clip);
    for (const int threads : {1, 4}) {
        Decoding how;
        how.threads = threads;
        how.times = 2;
        EXPECT_TRUE(decode(clip, how).samples == pictures + pictures) << threads;
    }
}

TEST_F(LibavPictures, OfAnotherSizeMayFollowInTheSameStream)
{
    const std::string first = make("size=160x90:duration=1", Reordered, "first.ts");
    const std::string second = make("size=96x64:duration=1", Reordered, "second.ts");
    const std::string both = folder.write("both.ts", folder.read("first.ts") + folder.read("second.ts"));
    const std::string pictures = expected(first) + expected(second);
    for (const int threads : {1, 4}) {
        Decoding how;
        how.threads = threads;
        EXPECT_TRUE(decode(both, how).samples == pictures) << threads;
    }
}

TEST_F(LibavPictures, OutliveTheirDecoder)
{
    const std::string clip = make("size=160x90:duration=1", Reordered);
    const std::string pictures = expected(clip);
    std::vector<std::shared_ptr<GstSample>> kept;
    Decoding how;
    how.rows_anywhere = true;
    how.on_sample = [&kept](GstSample* sample, GstElement*) {
        kept.emplace_back(gst_sample_ref(sample), gst_sample_unref);
    };
    decode(clip, how);
    std::string samples;
    for (const auto& sample : kept)
        append_samples(samples, sample.get());
    EXPECT_TRUE(samples == pictures);
}

bool is_the_decoders_own(GstBuffer* buffer)
{
    return gst_buffer_n_memory(buffer) == 3 && GST_MEMORY_IS_READONLY(gst_buffer_peek_memory(buffer, 0));
}

TEST_F(LibavPictures, AreNotCopiedForTheScreen)
{
    const std::string clip = make("size=160x90:duration=1", Reordered);
    std::size_t copies = 0;
    std::size_t originals = 0;
    Decoding how;
    how.on_sample = [&](GstSample* sample, GstElement*) {
        (is_the_decoders_own(gst_sample_get_buffer(sample)) ? originals : copies) += 1;
    };
    decode(clip, how);
    EXPECT_EQ(copies, 25U) << "a receiver that does not read GstVideoMeta gets plain pictures";
    how.rows_anywhere = true;
    decode(clip, how);
    EXPECT_EQ(originals, 25U);
}

/// The player's own sinks, and what reaches them.
struct Received {
    GstBin* pipeline;
    StreamSinks sinks{std::make_shared<VideoPictures>(nullptr), true, {}};
    std::atomic<int> originals = 0;
    std::atomic<int> copies = 0;
};

GstPadProbeReturn count_picture(GstPad*, GstPadProbeInfo* info, gpointer received)
{
    Received& self = *static_cast<Received*>(received);
    ++(is_the_decoders_own(GST_PAD_PROBE_INFO_BUFFER(info)) ? self.originals : self.copies);
    return GST_PAD_PROBE_OK;
}

void add_sink(GstElement*, GstPad* pad, gpointer received)
{
    Received& self = *static_cast<Received*>(received);
    gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_BUFFER, count_picture, received, nullptr);
    self.sinks.add(self.pipeline, pad);
}

/// Plays a clip, with the player's own sinks.
struct Playing {
    explicit Playing(const std::string& clip)
        : pipeline(gst_parse_launch("filesrc name=source ! decodebin name=all", nullptr))
    {
        const Element source(gst_bin_get_by_name(GST_BIN(pipeline.get()), "source"));
        const Element all(gst_bin_get_by_name(GST_BIN(pipeline.get()), "all"));
        g_object_set(source.get(), "location", clip.c_str(), nullptr);
        g_signal_connect(all.get(), "pad-added", G_CALLBACK(add_sink), &received);
    }
    ~Playing() { set_state(GST_STATE_NULL); }
    Playing(const Playing&) = delete;
    Playing& operator=(const Playing&) = delete;

    void set_state(GstState state) { gst_element_set_state(pipeline.get(), state); }
    /// Waits for the end, or an error.
    GstMessageType wait_for_end()
    {
        const Owned<GstBus, gst_object_unref> bus(gst_element_get_bus(pipeline.get()));
        const Owned<GstMessage, gst_message_unref> end(gst_bus_timed_pop_filtered(
            bus.get(), GST_CLOCK_TIME_NONE, static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR)));
        return GST_MESSAGE_TYPE(end.get());
    }

    const Element pipeline;
    Received received{GST_BIN(pipeline.get())};
};

TEST_F(LibavPictures, ReachTheScreensSinkWithoutACopy)
{
    const std::string clip = make("size=160x90:duration=1", Reordered);
    start_media_framework();
    Playing playing(clip);
    playing.set_state(GST_STATE_PLAYING);
    EXPECT_EQ(playing.wait_for_end(), GST_MESSAGE_EOS);
    playing.set_state(GST_STATE_NULL);
    EXPECT_GT(playing.received.originals, 0);
    EXPECT_EQ(playing.received.copies, 0);
}

TEST_F(LibavPictures, AreDecodedAheadOfTheOneOnTheScreen)
{
    const std::string clip = make("size=160x90:duration=1", Reordered);
    start_media_framework();
    Playing playing(clip);
    // Paused, the first one is on the screen.
    playing.set_state(GST_STATE_PAUSED);
    const auto patience = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (playing.received.originals < 4 && std::chrono::steady_clock::now() < patience)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_GE(playing.received.originals, 4) << "three that are decoded hide that the next one takes longer";
    EXPECT_LE(playing.received.originals, 5) << "three are kept, and one waits for its place";
}

TEST_F(LibavPictures, ThatAreLateAreDroppedAndReported)
{
    const std::string clip = make("size=160x90:duration=2", Reordered + " -x264-params b-pyramid=0");
    bool sent = false;
    Decoding how;
    how.on_sample = [&sent](GstSample* sample, GstElement* sink) {
        if (std::exchange(sent, true))
            return;
        // What a sink sends that shows this picture half a second too late.
        const GstClockTime time = gst_segment_to_running_time(gst_sample_get_segment(sample), GST_FORMAT_TIME,
                                                              GST_BUFFER_PTS(gst_sample_get_buffer(sample)));
        gst_element_send_event(sink, gst_event_new_qos(GST_QOS_TYPE_UNDERFLOW, 2, GST_SECOND / 2, time));
    };
    const DecodedFile decoded = decode(clip, how);
    EXPECT_GE(decoded.dropped, 10U);
    EXPECT_GE(decoded.times.size(), 10U);
    EXPECT_EQ(decoded.times.size() + decoded.dropped, 50U);
}

TEST_F(LibavPictures, ThatAreDamagedNeitherCrashNorHang)
{
    struct Kind {
        const char* options;
        const char* file;
    };
    std::mt19937 random(1);
    for (const Kind& kind : {Kind{"-pix_fmt yuv420p -c:v libx264 -bf 3", "h264.ts"},
                             Kind{"-pix_fmt yuv420p -c:v libx265 -x265-params log-level=error", "hevc.ts"},
                             Kind{"-pix_fmt yuv420p -c:v mpeg4 -bf 2", "mpeg4.avi"}}) {
        make(Usual, kind.options, kind.file);
        const std::string whole = folder.read(kind.file);
        for (int run = 0; run < 8; ++run) {
            std::string damaged = whole;
            // The container's own head is left alone, so that the decoder gets its share.
            std::uniform_int_distribution<std::size_t> place(std::min<std::size_t>(whole.size() / 4, 6000),
                                                             whole.size() - 1);
            for (int n = 0; n < 1 << run; ++n)
                damaged[place(random)] = static_cast<char>(random());
            Decoding how;
            how.threads = run % 2 == 0 ? 1 : 4;
            how.rows_anywhere = true;
            const DecodedFile decoded = decode(folder.write(std::string("damaged-") + kind.file, damaged), how);
            EXPECT_LE(decoded.times.size(), 40U) << kind.file;
            EXPECT_TRUE(run > 0 || !decoded.times.empty()) << kind.file << " with one wrong byte";
        }
    }
}

TEST_F(LibavPictures, OfWhichNoneCanBeDecodedAreAnError)
{
    make(Usual, Reordered, "whole.mp4");
    const std::string whole = folder.read("whole.mp4");
    const std::size_t begin = whole.find("mdat") + 4;
    const std::size_t end = whole.find("moov", begin) - 4;
    ASSERT_LT(end, whole.size());
    std::string damaged = whole;
    std::fill(damaged.begin() + static_cast<std::ptrdiff_t>(begin), damaged.begin() + static_cast<std::ptrdiff_t>(end),
              '\x55');
    const DecodedFile decoded = decode(folder.write("damaged.mp4", damaged));
    EXPECT_NE(decoded.error, "");
    EXPECT_TRUE(decoded.times.empty());
}

TEST_F(LibavPictures, LargerThanAnyLevelPermitsAreRefused)
{
    const std::string options = "-frames:v 1 -pix_fmt yuv420p -c:v libx264 -preset ultrafast -crf 51";
    EXPECT_EQ(decode(make("size=8192x4320", options, "large.mp4")).times.size(), 1U);
    const DecodedFile decoded = decode(make("size=8192x4400", options, "larger.mp4"));
    EXPECT_NE(decoded.error, "");
    EXPECT_TRUE(decoded.times.empty());
}

TEST(LibavDecoders, AreKnownAsDecoders)
{
    EXPECT_TRUE(has_video_decoder("video/x-h264"));
    EXPECT_TRUE(has_video_decoder("video/x-h265"));
    EXPECT_FALSE(has_video_decoder("video/x-unknown"));
}

} // namespace
} // namespace qoro::test
