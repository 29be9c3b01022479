#include "desktop/media/LibavSound.h"

#include <algorithm>
#include <array>

namespace qoro
{

namespace
{

constexpr int MostChannels = 64;
using Positions = std::array<GstAudioChannelPosition, MostChannels>;

struct Speaker {
    AVChannel libav;
    GstAudioChannelPosition gst;
};

constexpr std::array<Speaker, 20> Speakers{
    {{AV_CHAN_FRONT_LEFT, GST_AUDIO_CHANNEL_POSITION_FRONT_LEFT},
     {AV_CHAN_FRONT_RIGHT, GST_AUDIO_CHANNEL_POSITION_FRONT_RIGHT},
     {AV_CHAN_FRONT_CENTER, GST_AUDIO_CHANNEL_POSITION_FRONT_CENTER},
     {AV_CHAN_LOW_FREQUENCY, GST_AUDIO_CHANNEL_POSITION_LFE1},
     {AV_CHAN_BACK_LEFT, GST_AUDIO_CHANNEL_POSITION_REAR_LEFT},
     {AV_CHAN_BACK_RIGHT, GST_AUDIO_CHANNEL_POSITION_REAR_RIGHT},
     {AV_CHAN_FRONT_LEFT_OF_CENTER, GST_AUDIO_CHANNEL_POSITION_FRONT_LEFT_OF_CENTER},
     {AV_CHAN_FRONT_RIGHT_OF_CENTER, GST_AUDIO_CHANNEL_POSITION_FRONT_RIGHT_OF_CENTER},
     {AV_CHAN_BACK_CENTER, GST_AUDIO_CHANNEL_POSITION_REAR_CENTER},
     {AV_CHAN_SIDE_LEFT, GST_AUDIO_CHANNEL_POSITION_SIDE_LEFT},
     {AV_CHAN_SIDE_RIGHT, GST_AUDIO_CHANNEL_POSITION_SIDE_RIGHT},
     {AV_CHAN_TOP_CENTER, GST_AUDIO_CHANNEL_POSITION_TOP_CENTER},
     {AV_CHAN_TOP_FRONT_LEFT, GST_AUDIO_CHANNEL_POSITION_TOP_FRONT_LEFT},
     {AV_CHAN_TOP_FRONT_CENTER, GST_AUDIO_CHANNEL_POSITION_TOP_FRONT_CENTER},
     {AV_CHAN_TOP_FRONT_RIGHT, GST_AUDIO_CHANNEL_POSITION_TOP_FRONT_RIGHT},
     {AV_CHAN_TOP_BACK_LEFT, GST_AUDIO_CHANNEL_POSITION_TOP_REAR_LEFT},
     {AV_CHAN_TOP_BACK_CENTER, GST_AUDIO_CHANNEL_POSITION_TOP_REAR_CENTER},
     {AV_CHAN_TOP_BACK_RIGHT, GST_AUDIO_CHANNEL_POSITION_TOP_REAR_RIGHT},
     {AV_CHAN_STEREO_LEFT, GST_AUDIO_CHANNEL_POSITION_FRONT_LEFT},
     {AV_CHAN_STEREO_RIGHT, GST_AUDIO_CHANNEL_POSITION_FRONT_RIGHT}}};

/// Finds the speakers of a frame's channels.
/// @return false if one of them is unknown, or two are the same
bool find_positions(Positions& positions, const AVFrame& frame)
{
    const int channels = frame.ch_layout.nb_channels;
    for (int n = 0; n < channels; ++n) {
        const AVChannel channel =
            libav()->av_channel_layout_channel_from_index(&frame.ch_layout, static_cast<unsigned>(n));
        const auto* const found = std::ranges::find(Speakers, channel, &Speaker::libav);
        if (found == Speakers.end())
            return false;
        positions[static_cast<std::size_t>(n)] = found->gst;
    }
    return gst_audio_check_valid_channel_positions(positions.data(), channels, FALSE);
}

} // namespace

bool describe_sound(GstAudioInfo& info, const AVFrame& frame)
{
    const int channels = frame.ch_layout.nb_channels;
    const bool is_float = frame.format == AV_SAMPLE_FMT_FLTP || frame.format == AV_SAMPLE_FMT_FLT;
    if (!is_float || channels <= 0 || channels > MostChannels || frame.sample_rate <= 0)
        return false;
    Positions positions;
    const bool placed = channels > 1 && find_positions(positions, frame) &&
                        gst_audio_channel_positions_to_valid_order(positions.data(), channels);
    // Without positions, one channel is mono, two are stereo, and more have none.
    gst_audio_info_set_format(&info, GST_AUDIO_FORMAT_F32, frame.sample_rate, channels,
                              placed ? positions.data() : nullptr);
    return true;
}

GstBuffer* buffer_of(const AVFrame& frame, const GstAudioInfo& info)
{
    const auto channels = static_cast<std::size_t>(info.channels);
    const auto samples = static_cast<std::size_t>(frame.nb_samples);
    GstBuffer* buffer = gst_buffer_new_allocate(nullptr, samples * channels * sizeof(float), nullptr);
    GstMapInfo room;
    if (!buffer || !gst_buffer_map(buffer, &room, GST_MAP_WRITE)) {
        gst_clear_buffer(&buffer);
        return nullptr;
    }
    auto* const interleaved = reinterpret_cast<float*>(room.data);
    if (frame.format == AV_SAMPLE_FMT_FLT) {
        std::copy_n(reinterpret_cast<const float*>(frame.data[0]), samples * channels, interleaved);
    } else {
        for (std::size_t channel = 0; channel < channels; ++channel) {
            const auto* const plane = reinterpret_cast<const float*>(frame.extended_data[channel]);
            for (std::size_t n = 0; n < samples; ++n)
                interleaved[n * channels + channel] = plane[n];
        }
    }
    gst_buffer_unmap(buffer, &room);
    Positions positions;
    if (channels > 1 && find_positions(positions, frame))
        gst_audio_buffer_reorder_channels(buffer, GST_AUDIO_FORMAT_F32, info.channels, positions.data(), info.position);
    return buffer;
}

} // namespace qoro
