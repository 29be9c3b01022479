#include "app/PlayRecording.h"

#include "record/Recording.h"
#include "record/StandIns.h"

#include <utility>

namespace qoro
{

namespace
{
/// Seconds between two flushes: less than the second that a crash may lose.
constexpr double FlushInterval = 0.5;
} // namespace

PlayRecording::PlayRecording(const std::string& file, bool redacts)
    : file_(file), redacts_(redacts), recorder_(taped_, {[this](std::string_view head) { file_.begin(head); },
                                                         [this](std::string_view entry) { file_.add(entry); }})
{
}

PlayRecording::~PlayRecording() = default;

DesktopPlatform::Options PlayRecording::options(DesktopPlatform::Options options)
{
    if (options.calendar.stand_in)
        options.calendar.stand_in = [this](const std::string& event) { show_calendar_stand_in(recorder_, event); };
    options.device.stand_in.show = [this](const NSURL& address, const std::function<void()>& closed) {
        show_address_stand_in(recorder_, address, closed);
    };
    return options;
}

void PlayRecording::connect(DesktopPlatform& machine, SessionControls& controls)
{
    machine_ = &machine;
    controls_.emplace(recorder_, &controls);
    taped_.record_to(recorder_, machine, [&machine] { machine.leave_app(); });
}

DeviceSetup PlayRecording::device_setup(UIDeviceOrientation held) const
{
    DesktopDevice& device = machine_->device();
    return {.facts = device.facts(),
            .orientation = held,
            .status_bar_orientation = device.status_bar_orientation(),
            .status_bar_hidden = device.status_bar_hidden(),
            .output_volume = machine_->volume().value(),
            .volume_slider = machine_->volume().has_slider(),
            .calendar = machine_->calendar().available()};
}

void PlayRecording::begin(const QoroVideoAd& ad, UIDeviceOrientation held, const HostSetup& host,
                          const std::vector<Step>& steps, EventSink& next)
{
    const DeviceSetup device = device_setup(held);
    begin(recording_head(device, host, ad, steps, redacts_), device, host, next);
}

void PlayRecording::begin(const OpenedTag::Tag& tag, UIDeviceOrientation held, const HostSetup& host,
                          const std::vector<Step>& steps, EventSink& next)
{
    const DeviceSetup device = device_setup(held);
    begin(recording_head(device, host, tag.text ? FileTag : tag.address, steps, redacts_), device, host, next);
}

void PlayRecording::begin(const std::string& head, const DeviceSetup& device, const HostSetup& host, EventSink& next)
{
    recorder_.begin(head, redacts_ ? Redaction(device.facts, host) : Redaction(), machine_->loop());
    recorder_.forward_to(&next);
    machine_->loop().start_timer(FlushInterval, true, [this] { file_.flush(); });
}

bool PlayRecording::flush()
{
    file_.flush();
    return !file_.has_failed();
}

LineSink PlayRecording::redacted(LineSink sink) const
{
    return [sink = std::move(sink), this](std::string_view line) { sink(recorder_.redaction().of(line)); };
}

} // namespace qoro
