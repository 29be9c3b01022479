#pragma once

#include "desktop/media/Pipeline.h"
#include "desktop/media/VideoPictures.h"
#include "platform/Ports.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace qoro
{

/// Where a video comes from.
struct VideoSource {
    /// Path of a file, or http or https address; empty for an unsupported address.
    std::string location;
    bool is_file = false;
};

/// The source of an address, which may be null.
VideoSource video_source(const NSURL& address);

/// A video that is loaded before its player exists: its pipeline is paused at the first picture. A player takes it over
/// however far it has been loaded. Main thread only.
class PreparedVideo final : private Pipeline::Listener
{
public:
    /// How the video is loaded; as for its player.
    struct Options {
        bool silent = false;
        std::optional<float> volume;
        unsigned server_seconds = 10;
        /// Called from the destructor. May be empty.
        std::function<void(const PreparedVideo&)> on_end = {};
    };
    /// What a player takes over.
    struct Taken {
        std::shared_ptr<VideoPictures> pictures;
        std::unique_ptr<Pipeline> pipeline;
        /// Whether the sound is discarded, perhaps because it could not be played.
        bool silent = false;
        /// Seconds; absent while the video is loading: Listener::loaded() follows.
        std::optional<double> duration;
        /// The sound server's last request.
        std::optional<SoundRequest> sound_request;
    };

    /// @param loop its post() must accept calls from any thread
    /// @param done called once as an event of its own when the first picture is decoded and the video could start, or
    ///        with the reason of a failure; not after take(), nor after the destruction; not null
    PreparedVideo(VideoSource source, MainLoop& loop, Options options, std::function<void(const std::string&)> done);
    ~PreparedVideo() override;
    PreparedVideo(const PreparedVideo&) = delete;
    PreparedVideo& operator=(const PreparedVideo&) = delete;

    const VideoSource& source() const { return source_; }
    /// Whether it can be taken: it has neither failed nor been taken.
    bool is_good() const { return pipeline_ != nullptr; }
    /// Passes the video on.
    /// @param listener of the pipeline from now on
    Taken take(Pipeline::Listener& listener);

    /// Bytes received from the server, and those of the whole video; 0 while unknown, for a file, and once taken.
    std::uint64_t received_bytes() const { return pipeline_ ? pipeline_->received_bytes() : 0; }
    std::uint64_t whole_bytes() const { return pipeline_ ? pipeline_->whole_bytes() : 0; }

private:
    void loaded(double duration) override;
    void data_changed() override;
    void sought(bool) override {}
    void ended() override {}
    void failed(const std::string& reason) override;
    void sound_failed() override;
    void sound_requested(SoundRequest request) override { sound_request_ = request; }

    void open();
    void report(const std::string& error);

    const VideoSource source_;
    MainLoop& loop_;
    const Options options_;
    std::function<void(const std::string&)> done_;
    const std::shared_ptr<VideoPictures> pictures_ = std::make_shared<VideoPictures>(nullptr);
    std::unique_ptr<Pipeline> pipeline_;
    bool silent_;
    std::optional<double> duration_;
    std::optional<SoundRequest> sound_request_;
};

} // namespace qoro
