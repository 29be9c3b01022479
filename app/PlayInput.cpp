#include "app/PlayInput.h"

#include "formats/AdFile.h"
#include "formats/AdInput.h"
#include "formats/AdRemarks.h"
#include "formats/DeviceModels.h"
#include "formats/InputError.h"
#include "formats/InputFile.h"
#include "kit/StandIn.h"
#include "platform/AddressParts.h"
#include "vast/Reader.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <iostream>
#include <utility>

namespace qoro
{

namespace
{
/// A host that allows portrait and both landscape orientations and is notified of the ad's close.
Surroundings default_surroundings()
{
    Surroundings surroundings;
    surroundings.host.autorotates = {UIInterfaceOrientationPortrait, UIInterfaceOrientationLandscapeRight,
                                     UIInterfaceOrientationLandscapeLeft};
    surroundings.host.parent = true;
    surroundings.host.root_view = surroundings.device.facts.screen;
    return surroundings;
}

void choose_device(const PlayOptions& options, Surroundings& surroundings)
{
    DeviceFacts& facts = surroundings.device.facts;
    if (const auto model = device_model(options.device)) {
        facts.screen = model->screen;
        facts.phone = model->phone;
        surroundings.host.root_view = model->screen;
    }
    if (options.phone || options.tablet)
        facts.phone = options.phone;
}

/// The screen is landscape however the device is held; the status bar is in one of the two landscape orientations.
void lock_to_landscape(Surroundings& surroundings)
{
    const auto lie_down = [](std::optional<CGSize>& size) {
        if (size && size->width < size->height)
            std::swap(size->width, size->height);
    };
    lie_down(surroundings.device.facts.screen);
    lie_down(surroundings.host.root_view);
    if (!isLandscape(surroundings.device.status_bar_orientation))
        surroundings.device.status_bar_orientation = UIInterfaceOrientationLandscapeRight;
    surroundings.host.autorotates = {UIInterfaceOrientationLandscapeRight, UIInterfaceOrientationLandscapeLeft};
}

/// Screens of the kit for the programs that the options replace.
void add_stand_ins(const PlayOptions& options, DesktopPlatform::Options& platform)
{
    if (options.fake_calendar)
        platform.calendar.stand_in = [](const std::string& event) {
            show_calendar_stand_in(Platform::current(), event);
        };
    platform.device.stand_in.takes = [composer = options.fake_composer,
                                      store = options.fake_store](const NSURL& address, bool waits) {
        const AddressParts parts = address.parts();
        if (parts.has_scheme("sms"))
            return composer;
        // The ad waits for messages and stores only.
        return store && (waits || parts.has_scheme("appstream"));
    };
    platform.device.stand_in.show = [](const NSURL& address, std::function<void()> closed) {
        show_address_stand_in(Platform::current(), address, std::move(closed));
    };
}

DesktopPlatform::Options platform_options(const PlayOptions& options, const Surroundings& surroundings)
{
    const DeviceSetup& device = surroundings.device;
    DesktopPlatform::Options platform;
    if (options.page_memory)
        platform.pages.memory = *options.page_memory;
    platform.pages.processor_seconds = options.page_processor;
    platform.device = {.facts = device.facts,
                       .orientation = device.orientation,
                       .status_bar_orientation = device.status_bar_orientation,
                       .status_bar_hidden = device.status_bar_hidden,
                       .autorotates = surroundings.host.autorotates};
    add_stand_ins(options, platform);
    platform.inspect_pages = options.inspect;
    platform.system_volume = options.system_volume;
    platform.silent = options.mute_output;
    platform.allow_private_network = options.allow_private_network;
    platform.video_cache.warn = [](const std::string& line) { std::cerr << "qoro-ad: " << line << '\n'; };
    platform.last_requests_seconds = 0; // the loop has waited for them
    if (options.host_file.empty())
        return platform;
    // With a host file, its values apply, including its defaults.
    platform.device.can_open = device.can_open;
    platform.calendar.allowed = device.calendar;
    platform.volume = device.output_volume;
    platform.volume_slider = device.volume_slider;
    return platform;
}

/// Relative paths are relative to the host file's folder.
std::map<std::string, std::string> copies_of(const Surroundings& surroundings, const std::string& host_file)
{
    std::map<std::string, std::string> copies;
    for (const auto& [address, path] : surroundings.cached) {
        const std::filesystem::path file = std::filesystem::absolute(host_file).parent_path() / path;
        std::error_code unknown;
        if (!std::filesystem::is_regular_file(file, unknown))
            throw InputError(host_file, "/host/cached",
                             "expected the path of a file for " + address + ", got \"" + path + "\"");
        copies.insert_or_assign(address, file.string());
    }
    return copies;
}

/// Reads an ad file, or a VAST tag.
void read_ad_or_tag(PlayInput& input, const PlayOptions& options)
{
    AdInput named = read_ad_input(options.ad_file);
    if (named.is_address) {
        input.tag.emplace(OpenedTag::Tag{.address = options.ad_file});
        return;
    }
    if (named.kind == InputKind::Tag) {
        try {
            vast::read_document(named.text);
        } catch (const vast::DocumentError& error) {
            throw InputError(options.ad_file, "", error.what());
        }
        input.tag.emplace(OpenedTag::Tag{.text = std::move(named.text)});
        return;
    }
    if (named.kind == InputKind::Scenario)
        throw InputError(options.ad_file, "", "expected an ad or a VAST tag, got a scenario; qoro-ad simulate runs it");
    input.ad = read_ad(named.text, options.ad_file, AdTypes::Strict);
    require_playable(*input.ad, options.ad_file);
    input.folder = std::filesystem::absolute(options.ad_file).parent_path().string();
    input.remarks = ad_remarks(*input.ad, options.ad_file);
}

} // namespace

PlayInput read_play_input(const PlayOptions& options)
{
    PlayInput input;
    read_ad_or_tag(input, options);

    Surroundings surroundings = default_surroundings();
    if (!options.host_file.empty())
        surroundings = read_surroundings(read_input_file(options.host_file), options.host_file);
    choose_device(options, surroundings);
    input.band_pixels = surroundings.device.facts.screen.value_or(CGSize{}).width *
                        std::max(device_model(options.device).value_or(DeviceModel{}).scale, 1.0);
    if (options.locked_landscape)
        lock_to_landscape(surroundings);
    if (!options.store_page.empty())
        surroundings.host.store_page = options.store_page;
    if (options.fake_store)
        surroundings.host.store_page.clear();
    input.platform = platform_options(options, surroundings);
    input.host = surroundings.host;
    input.origins = surroundings.origins;
    input.copies = copies_of(surroundings, options.host_file);
    if (input.ad)
        input.missing_files = missing_files(*input.ad, options.ad_file, input.folder,
                                            [&](const std::string& address) { return input.copies.contains(address); });
    input.orientation = device_orientation(options.orientation).value_or(UIDeviceOrientationPortrait);

    if (options.safe_areas) {
        const DeviceModel model = device_model(options.device).value_or(DeviceModel{});
        if (model.scale == 0)
            throw InputError("--safe-areas", "", "expected --device with the name of a real model, such as iphone-15");
        input.portrait_insets = model.portrait;
        input.landscape_insets = model.landscape;
    }
    if (!options.steps_file.empty())
        input.steps = read_steps(read_input_file(options.steps_file), options.steps_file, false);
    return input;
}

} // namespace qoro
