#include "desktop/media/PreparedVideo.h"

#include "desktop/glib/Owned.h"

#include <glib.h>

#include <utility>

namespace qoro
{

VideoSource video_source(const NSURL& address)
{
    if (!address)
        return {};
    const std::string& text = address.absoluteString().text();
    if (address.is_file())
        return {text, true};
    const AddressParts& parts = address.parts();
    if (parts.has_scheme("http") || parts.has_scheme("https"))
        return {text, false};
    if (parts.has_scheme("file"))
        return {take_text(g_filename_from_uri(text.c_str(), nullptr, nullptr)), true};
    return {};
}

PreparedVideo::PreparedVideo(VideoSource source, MainLoop& loop, Options options,
                             std::function<void(const std::string&)> done)
    : source_(std::move(source)), loop_(loop), options_(std::move(options)), done_(std::move(done)),
      silent_(options_.silent)
{
    open();
}

PreparedVideo::~PreparedVideo()
{
    if (options_.on_end)
        options_.on_end(*this);
}

void PreparedVideo::open()
{
    Pipeline::Opening opening{source_.location, source_.is_file, silent_, options_.volume, options_.server_seconds};
    Pipeline::Listener& self = *this;
    pipeline_ = std::make_unique<Pipeline>(std::move(opening), pictures_, loop_, self);
}

PreparedVideo::Taken PreparedVideo::take(Pipeline::Listener& listener)
{
    pipeline_->set_listener(listener);
    done_ = nullptr;
    return {pictures_, std::move(pipeline_), silent_, duration_, sound_request_};
}

void PreparedVideo::loaded(double duration)
{
    duration_ = duration;
    data_changed();
}

void PreparedVideo::data_changed()
{
    if (duration_ && !pipeline_->short_of_data())
        report("");
}

void PreparedVideo::failed(const std::string& reason)
{
    pipeline_.reset();
    report(reason);
}

void PreparedVideo::sound_failed()
{
    if (silent_)
        return;
    silent_ = true;
    duration_.reset();
    sound_request_.reset();
    open();
}

void PreparedVideo::report(const std::string& error)
{
    if (const auto done = std::exchange(done_, nullptr))
        done(error);
}

} // namespace qoro
