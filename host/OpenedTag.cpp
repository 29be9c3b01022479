#include "host/OpenedTag.h"

#include "formats/AdFile.h"
#include "formats/LogLines.h"
#include "host/HostFunctions.h"
#include "host/OpenedAd.h"
#include "host/Rehearsal.h"
#include "host/TagPage.h"
#include "host/TagPresence.h"
#include "host/TagTracking.h"
#include "kit/NetworkZone.h"
#include "kit/ScreenTexts.h"
#include "platform/HostCall.h"
#include "platform/QoroAdManager.h"
#include "vast/AdDescription.h"
#include "vast/CreativeChoice.h"
#include "vast/Reader.h"
#include "vast/Texts.h"

#include <algorithm>
#include <chrono>
#include <random>
#include <stdexcept>
#include <utility>

namespace qoro
{

namespace
{

/// Seconds without progress of the video after which the viewer can leave.
constexpr double NothingMoves = 15;
/// VAST 2.0 to 4.3, inline and wrapper (AdCOM, list "Creative Subtypes - Audio/Video").
const std::vector<int> Versions{2, 3, 5, 6, 7, 8, 11, 12, 13, 14, 15, 16};

// The standard's codes (VAST 4.3, section 2.3.6).
constexpr int BreakShortened = 206;
constexpr int GeneralError = 400;

double machine_time()
{
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

/// For a session without steps.
struct NoControls final : SessionControls {
    void bring_news(const MPMoviePlayerController&, const PlayerNews&) override {}
    void change_device(const DeviceChange&) override {}
};

/// Lets the tag open an ad.
class OpensAd
{
public:
    explicit OpensAd(Platform& platform) : presence_(platform.shared<TagPresence>()) { presence_.opens_ad = true; }
    ~OpensAd() { presence_.opens_ad = false; }
    OpensAd(const OpensAd&) = delete;
    OpensAd& operator=(const OpensAd&) = delete;

private:
    TagPresence& presence_;
};

vast::FailedAd failure_of(const vast::ResolvedAd& resolved, int code, const std::string& why)
{
    return {
        .code = code, .why = why, .errors = resolved.ad.errors, .id = resolved.ad.id, .documents = resolved.documents};
}

} // namespace

class OpenedTag::Run final : public std::enable_shared_from_this<Run>, public EventSink
{
public:
    Run(Platform& platform, OnEnd on_end, HostSetup host, TagOptions options);
    ~Run() override;
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    void rehearse(Rehearsal rehearsal) { rehearsal_.emplace(std::move(rehearsal)); }
    void begin(const Tag& tag);
    void close(ClosedBy closer);
    bool leave_screen() { return opened_ && opened_->leave_screen(); }
    void leave();

private:
    void receive(const Event& event) override;
    vast::ResolverOptions resolver_options();
    void make_resolver();
    void resolved(vast::Resolution resolution);
    void open_next();
    void open(vast::ResolvedAd ad);
    void try_spare();
    Rehearsal rest_of_rehearsal();
    std::string expanded(const std::string& address, vast::AddressKind kind, std::optional<int> code = {});
    vast::MacroValues macros_of(const vast::ResolvedAd& ad) const;
    void ad_failed(int code, const std::string& why);
    void ad_ended(AdOutcome outcome);
    void report(const vast::FailedAd& failed);
    void send_errors(const vast::FailedAd& failed);
    void shorten();
    void end();

    Platform& platform_;
    OnEnd on_end_;
    HostSetup host_;
    TagOptions options_;
    const vast::CommonMediaSupport common_;
    std::optional<HostsSupport> support_;
    NoControls no_controls_;
    std::optional<Rehearsal> rehearsal_;
    /// Receives every event as well; null when the platform had no sink.
    EventSink* before_ = nullptr;
    bool open_ = false;
    std::unique_ptr<vast::Resolver> resolver_;
    std::vector<vast::ResolvedAd> ads_;
    /// In the order in which they are to be tried.
    std::vector<std::shared_ptr<const vast::SpareAd>> spares_;
    std::vector<vast::Ignored> ignored_;
    /// Index of the ad that plays, or is about to.
    std::size_t n_ = 0;
    std::shared_ptr<TagTracking> tracking_;
    std::unique_ptr<OpenedAd> opened_;
    /// Why the ad that plays has failed; absent for one that has not.
    std::optional<std::string> failure_;
    /// An ad has been opened.
    bool has_opened_ = false;
    /// No further ad opens.
    bool over_ = false;
    TagOutcome outcome_;
};

OpenedTag::Run::Run(Platform& platform, OnEnd on_end, HostSetup host, TagOptions options)
    : platform_(platform), on_end_(std::move(on_end)), host_(std::move(host)), options_(std::move(options))
{
    if (host_.guard)
        host_.guard->nothing_moves = NothingMoves;
    options_.clock = options_.clock
                         ? guarded<double>("TagOptions::clock", platform, std::move(options_.clock), machine_time)
                         : machine_time;
    const auto machine_random = [] { return static_cast<std::uint32_t>(std::random_device{}()); };
    options_.random = options_.random ? guarded<std::uint32_t>("TagOptions::random", platform,
                                                               std::move(options_.random), machine_random)
                                      : machine_random;
    options_.macros.request.random = options_.random;
    if (!options_.macros.ad_break.transaction_id)
        options_.macros.ad_break.transaction_id = vast::make_transaction_id(options_.random);
    const ConsentStrings& consent = host_.consent;
    vast::MacroValues::Regulation& regulation = options_.macros.regulation;
    regulation.gdpr = consent.gdpr_applies;
    regulation.tcf_string = consent.tcf;
    regulation.us_privacy = consent.us_privacy;
    regulation.gpp_string = consent.gpp;
    if (!consent.gpp_sections.empty())
        regulation.gpp_section_ids.emplace(consent.gpp_sections.begin(), consent.gpp_sections.end());
    support_.emplace(options_.support ? *options_.support : common_, platform);
}

OpenedTag::Run::~Run()
{
    leave();
}

vast::ResolverOptions OpenedTag::Run::resolver_options()
{
    vast::ResolverOptions options = options_.resolver;
    options.requests = [this, also = options.requests](const std::string& address) {
        platform_.emit(event::VastRequested{address});
        if (also)
            call_host("ResolverOptions::requests", &platform_, [&] { also(address); });
    };
    options.expand = [this](const std::string& address) { return expanded(address, vast::AddressKind::Document); };
    options.permits = [this, permits = options.permits](const std::string& from, const std::string& to) {
        bool permitted = permits || from.empty() || !leads_inward(from, to);
        if (permits)
            permitted =
                call_host("ResolverOptions::permits", &platform_, [&] { permitted = permits(from, to); }) && permitted;
        return permitted;
    };
    if (options.band.width == 0)
        options.band.width = platform_.device().facts().screen.value_or(CGSize{375, 812}).width;
    return options;
}

void OpenedTag::Run::make_resolver()
{
    resolver_ = std::make_unique<vast::Resolver>(platform_.fetcher(), platform_.loop(), *support_, resolver_options());
}

void OpenedTag::Run::begin(const Tag& tag)
{
    OpenedAd::leave_platform(platform_);
    if (std::exchange(platform_.shared<TagPresence>().is_open, true))
        throw std::logic_error("another tag is open on this platform");
    // Before the first event.
    before_ = platform_.event_sink();
    platform_.set_event_sink(this);
    open_ = true;
    const auto done = [weak = weak_from_this()](vast::Resolution resolution) {
        if (const auto self = weak.lock())
            self->resolved(std::move(resolution));
    };
    make_resolver();
    if (tag.text)
        resolver_->resolve_text(*tag.text, tag.address, done);
    else
        resolver_->resolve(tag.address, done);
}

void OpenedTag::Run::receive(const Event& event)
{
    if (before_ && !call_host("EventSink", nullptr, [&] { before_->receive(event); }))
        before_ = nullptr;
    if (host_.log && !call_host("HostSetup::log", nullptr, [&] { pass_tag_line(host_.log, event); }))
        host_.log = nullptr;
    if (const auto tracking = tracking_)
        tracking->receive(event);
}

void OpenedTag::Run::resolved(vast::Resolution resolution)
{
    resolver_.reset();
    if (over_)
        return;
    ads_ = std::move(resolution.ads);
    spares_ = std::move(resolution.spares);
    ignored_ = std::move(resolution.ignored);
    for (vast::FailedAd& failed : resolution.failed) {
        // Without an ad, the addresses of all documents are requested.
        if (ads_.empty())
            failed.errors.clear();
        report(failed);
    }
    // The observer may have closed the tag.
    if (over_ || !ads_.empty())
        return open_next();
    outcome_.error = resolution.error;
    outcome_.why = resolution.why;
    platform_.emit(event::VastWithoutAd{*resolution.error, resolution.why});
    send_errors({.code = *resolution.error,
                 .why = resolution.why,
                 .errors = resolution.errors,
                 .documents = resolution.documents});
    end();
}

void OpenedTag::Run::report(const vast::FailedAd& failed)
{
    platform_.emit(event::VastFailed{failed.code, failed.why});
    send_errors(failed);
}

void OpenedTag::Run::send_errors(const vast::FailedAd& failed)
{
    if (options_.observer)
        call_host("TagObserver::ad_failed", &platform_, [&] { options_.observer->ad_failed(failed); });
    platform_.dispatch([&] {
        for (const std::string& address : failed.errors)
            QoroAdManager::sharedInstance().send_vast_tracker(expanded(address, vast::AddressKind::Error, failed.code),
                                                              "error");
    });
}

/// An address that belongs to no ad that plays.
std::string OpenedTag::Run::expanded(const std::string& address, vast::AddressKind kind, std::optional<int> code)
{
    vast::MacroValues values = options_.macros;
    values.request.kind = kind;
    values.request.error_code = code;
    values.request.time = options_.clock();
    return vast::requestable(vast::expand(address, values));
}

// ------------------------------------------------------------------------------------------------------------- the ads

void OpenedTag::Run::open_next()
{
    if (over_ || n_ == ads_.size())
        return end();
    open(ads_[n_]);
}

/// A stand-alone ad takes the place of an ad that has failed; without one, the next ad follows.
void OpenedTag::Run::try_spare()
{
    if (over_ || spares_.empty())
        return open_next();
    const auto spare = spares_.front();
    spares_.erase(spares_.begin());
    make_resolver();
    resolver_->resolve_spare(*spare, [weak = weak_from_this()](vast::Resolution resolution) {
        const auto self = weak.lock();
        if (!self)
            return;
        self->resolver_.reset();
        if (self->over_)
            return;
        for (const vast::FailedAd& failed : resolution.failed)
            self->report(failed);
        if (resolution.ads.empty())
            return self->try_spare();
        self->ads_.insert(self->ads_.begin() + static_cast<std::ptrdiff_t>(self->n_),
                          std::make_move_iterator(resolution.ads.begin()),
                          std::make_move_iterator(resolution.ads.end()));
        self->open_next();
    });
}

void OpenedTag::Run::open(vast::ResolvedAd resolved)
{
    vast::MacroValues values = macros_of(resolved);
    const auto expand = [&](const std::string& address) {
        values.request.time = options_.clock();
        return vast::expand(address, values);
    };
    std::string& video = resolved.ad.linear->media_files[*resolved.media.chosen].address;
    video = expand(video);
    values.player.asset = video;
    vast::replace_addresses(resolved, expand);
    const vast::Ad& ad = resolved.ad;
    const std::optional<std::int64_t> sequence = ad.sequence;
    const auto text = [](const std::string& value) { return value.empty() ? EventText() : EventText(value); };
    platform_.emit(event::VastAdBegun{text(ad.id), sequence, text(ad.title), resolved.wrappers, video});
    const std::vector<vast::Ignored> not_shown = vast::not_shown(ad);
    for (const auto* list : {&std::as_const(ignored_), &ad.ignored, &not_shown})
        for (const vast::Ignored& ignored : *list)
            platform_.emit(event::VastIgnored{ignored.element, ignored.why, ignored.path});
    ignored_.clear();
    if (options_.observer)
        call_host("TagObserver::ad_begins", &platform_,
                  [&] { options_.observer->ad_begins(resolved, n_, ads_.size()); });
    // The observer may have closed the tag, or destroyed it.
    if (over_)
        return;

    const vast::Surroundings surroundings{.page = tag_page_address(resolved, n_),
                                          .button = platform_.translation().translate(screen_texts::FirstOffer),
                                          .closes_at_end = n_ + 1 < ads_.size()};
    platform_.dispatch(
        [&] { QoroAdManager::sharedInstance().supply_page(surroundings.page, ad_page(resolved, surroundings)); });
    const auto description = read_ad(ad_description(resolved, surroundings), "VAST", AdTypes::Strict);
    failure_.reset();
    tracking_ = std::make_shared<TagTracking>(platform_, resolved, TagMacros{values, options_.clock},
                                              [weak = weak_from_this()](int code, const std::string& why) {
                                                  if (const auto self = weak.lock())
                                                      self->ad_failed(code, why);
                                              });
    const OpensAd opens(platform_);
    try {
        opened_ = std::make_unique<OpenedAd>(
            platform_, description,
            [weak = weak_from_this()](const AdOutcome& outcome) {
                if (const auto self = weak.lock())
                    self->ad_ended(outcome);
            },
            host_, rest_of_rehearsal());
        has_opened_ = true;
    } catch (const std::logic_error& error) {
        tracking_.reset();
        spares_.clear();
        report(failure_of(resolved, GeneralError, error.what()));
        if (outcome_.ads.empty() && !outcome_.error) {
            outcome_.error = GeneralError;
            outcome_.why = error.what();
        }
        ++n_;
        open_next();
    }
}

/// The steps that the ad performs: at first all of them, later those that are still to come.
Rehearsal OpenedTag::Run::rest_of_rehearsal()
{
    const auto created = [this](const std::shared_ptr<QoroVideoWebViewController>& controller) {
        tracking_->attach(controller);
        if (rehearsal_ && rehearsal_->created)
            rehearsal_->created(controller);
    };
    if (!rehearsal_) {
        // The controller has forced the device upright, but the viewer holds it as before.
        const auto held = platform_.device().orientation();
        const auto prepared = [this, held] {
            if (platform_.device().orientation() == held)
                return;
            platform_.device().force_orientation(held);
            platform_.device_orientation_changed();
        };
        return {{}, no_controls_, prepared, 0, created};
    }
    Rehearsal rest{{}, rehearsal_->controls, rehearsal_->prepared, 0, created};
    const double now = platform_.loop().now();
    for (const Step& step : rehearsal_->steps) {
        if (!has_opened_ || (step.at > now && !std::holds_alternative<OpenStep>(step.what)))
            rest.steps.push_back(step);
        else if (rest.steps.empty())
            ++rest.first;
    }
    return rest;
}

vast::MacroValues OpenedTag::Run::macros_of(const vast::ResolvedAd& resolved) const
{
    const vast::Ad& ad = resolved.ad;
    vast::MacroValues values = options_.macros;
    values.ad_break.ad_type = ad.type;
    values.ad_break.universal_ad_ids = ad.universal_ad_ids;
    values.ad_break.ad_count = static_cast<int>(n_ + 1);
    if (!ad.blocked_categories.empty())
        values.ad_break.blocked_categories.emplace();
    for (const vast::Category& category : ad.blocked_categories)
        values.ad_break.blocked_categories->push_back(category.code);
    values.capabilities.vast_versions = Versions;
    values.capabilities.abilities = {
        .skip = true, .mute = true, .autoplay = true, .muted_autoplay = false, .fullscreen = true, .icon = true};
    values.player.inventory =
        vast::MacroValues::Player::Inventory{.skippable = ad.linear->skip_offset.has_value(), .autoplayed = true};
    values.player.pod_sequence = ad.sequence;
    if (!ad.serving_id.empty())
        values.player.ad_serving_id = ad.serving_id;
    return values;
}

/// The ad closes after the event in which it has failed.
void OpenedTag::Run::ad_failed(int code, const std::string& why)
{
    failure_ = why;
    platform_.emit(event::VastFailed{code, why});
    platform_.loop().post([weak = weak_from_this(), n = n_] {
        const auto self = weak.lock();
        if (self && self->opened_ && self->n_ == n)
            self->opened_->close(ClosedBy::Host);
    });
}

void OpenedTag::Run::ad_ended(AdOutcome outcome)
{
    const std::size_t ended = n_++;
    // Failed without a report of the player: it was never shown.
    if (outcome.end == AdEnd::Failed && !failure_) {
        failure_ = outcome.error.value_or("the ad cannot be shown");
        platform_.emit(event::VastFailed{GeneralError, *failure_});
        tracking_->send_error(GeneralError);
    }
    const bool was_played = tracking_->has_started();
    if (failure_ && !was_played) {
        outcome.end = AdEnd::Failed;
        outcome.error = failure_;
    }
    outcome_.ads.push_back(outcome);
    opened_.reset();
    tracking_.reset();
    if (options_.observer)
        call_host("TagObserver::ad_ended", &platform_, [&] { options_.observer->ad_ended(ended, outcome); });
    if (failure_ && !was_played)
        try_spare();
    else
        open_next();
}

// ------------------------------------------------------------------------------------------------------------- the end

void OpenedTag::Run::close(ClosedBy closer)
{
    if (over_)
        return;
    shorten();
    if (opened_)
        return opened_->close(closer);
    resolver_.reset();
    end();
}

/// The ads that have not begun will not be played.
void OpenedTag::Run::shorten()
{
    over_ = true;
    for (std::size_t n = n_ + (opened_ ? 1 : 0); n < ads_.size(); ++n) {
        report(failure_of(ads_[n], BreakShortened, ads_[n].ad.path + ": the host ended the break before the ad"));
    }
}

void OpenedTag::Run::end()
{
    over_ = true;
    if (!outcome_.ads.empty()) {
        outcome_.error.reset();
        outcome_.why.clear();
    }
    platform_.loop().post([weak = weak_from_this()] {
        const auto self = weak.lock();
        if (!self)
            return;
        const OnEnd on_end = std::exchange(self->on_end_, nullptr);
        // The host may open the next tag.
        self->leave();
        if (on_end)
            call_host("OpenedTag::OnEnd", &self->platform_, [&] { on_end(self->outcome_); });
    });
}

void OpenedTag::Run::leave()
{
    if (!std::exchange(open_, false))
        return;
    platform_.shared<TagPresence>().is_open = false;
    on_end_ = nullptr;
    if (!over_)
        shorten();
    resolver_.reset();
    opened_.reset();
    tracking_.reset();
    if (platform_.event_sink() == this)
        platform_.set_event_sink(before_);
}

// ---------------------------------------------------------------------------------------------------------- OpenedTag

OpenedTag::OpenedTag(Platform& platform, const Tag& tag, OnEnd on_end, HostSetup host, TagOptions options)
    : run_(std::make_shared<Run>(platform, std::move(on_end), std::move(host), std::move(options)))
{
    run_->begin(tag);
}

OpenedTag::OpenedTag(Platform& platform, const Tag& tag, OnEnd on_end, HostSetup host, TagOptions options,
                     Rehearsal rehearsal)
    : run_(std::make_shared<Run>(platform, std::move(on_end), std::move(host), std::move(options)))
{
    run_->rehearse(std::move(rehearsal));
    run_->begin(tag);
}

OpenedTag::~OpenedTag()
{
    run_->leave();
}

void OpenedTag::close(ClosedBy closer)
{
    run_->close(closer);
}

bool OpenedTag::leave_screen()
{
    return run_->leave_screen();
}

} // namespace qoro
