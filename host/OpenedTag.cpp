#include "host/OpenedTag.h"

#include "formats/AdFile.h"
#include "host/OpenedAd.h"
#include "host/TagTracking.h"
#include "kit/NetworkZone.h"
#include "kit/ScreenTexts.h"
#include "platform/HostCall.h"
#include "platform/QoroAdManager.h"
#include "vast/AdDescription.h"
#include "vast/Reader.h"
#include "vast/Texts.h"

#include <algorithm>
#include <chrono>
#include <random>
#include <utility>

namespace qoro
{

namespace
{

/// Seconds without progress of the video after which the viewer can leave.
constexpr double NothingMoves = 15;
/// VAST 2.0 to 4.3, inline and wrapper (AdCOM, list "Creative Subtypes - Audio/Video").
const std::vector<int> Versions{2, 3, 5, 6, 7, 8, 11, 12, 13, 14, 15, 16};

double machine_time()
{
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

/// For a session without steps.
struct NoControls final : SessionControls {
    void bring_news(const MPMoviePlayerController&, const PlayerNews&) override {}
    void change_device(const DeviceChange&) override {}
};

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
    void resolved(vast::Resolution resolution);
    void report_failures(const vast::Resolution& resolution);
    void open_next();
    void open(const vast::ResolvedAd& ad);
    Rehearsal rest_of_rehearsal();
    vast::MacroValues macros_of(const vast::ResolvedAd& ad) const;
    void ad_failed(int code, const std::string& why);
    void ad_ended(const AdOutcome& outcome);
    void send_errors(const std::vector<std::string>& addresses, int code);
    void end();

    Platform& platform_;
    OnEnd on_end_;
    HostSetup host_;
    TagOptions options_;
    const vast::CommonMediaSupport common_;
    NoControls no_controls_;
    std::optional<Rehearsal> rehearsal_;
    /// Receives every event as well; null when the platform had no sink.
    EventSink* before_ = nullptr;
    bool open_ = false;
    std::unique_ptr<vast::Resolver> resolver_;
    std::vector<vast::ResolvedAd> ads_;
    std::vector<vast::Ignored> ignored_;
    /// Index of the ad that plays, or is about to.
    std::size_t n_ = 0;
    std::shared_ptr<TagTracking> tracking_;
    std::unique_ptr<OpenedAd> opened_;
    /// No further ad opens.
    bool over_ = false;
    TagOutcome outcome_;
};

OpenedTag::Run::Run(Platform& platform, OnEnd on_end, HostSetup host, TagOptions options)
    : platform_(platform), on_end_(std::move(on_end)), host_(std::move(host)), options_(std::move(options))
{
    if (host_.guard)
        host_.guard->nothing_moves = NothingMoves;
    if (!options_.clock)
        options_.clock = machine_time;
    if (!options_.random)
        options_.random = [] { return static_cast<std::uint32_t>(std::random_device{}()); };
    options_.macros.request.random = options_.random;
    const ConsentStrings& consent = host_.consent;
    vast::MacroValues::Regulation& regulation = options_.macros.regulation;
    regulation.gdpr = consent.gdpr_applies;
    regulation.tcf_string = consent.tcf;
    regulation.us_privacy = consent.us_privacy;
    regulation.gpp_string = consent.gpp;
    if (!consent.gpp_sections.empty())
        regulation.gpp_section_ids.emplace(consent.gpp_sections.begin(), consent.gpp_sections.end());
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
            also(address);
    };
    options.expand = [this](const std::string& address) {
        vast::MacroValues values = options_.macros;
        values.request.kind = vast::AddressKind::Document;
        values.request.time = options_.clock();
        return vast::requestable(vast::expand(address, values));
    };
    if (!options.permits)
        options.permits = [](const std::string& from, const std::string& to) {
            return from.empty() || !leads_inward(from, to);
        };
    if (options.band.width == 0)
        options.band.width = platform_.device().facts().screen.value_or(CGSize{375, 812}).width;
    return options;
}

void OpenedTag::Run::begin(const Tag& tag)
{
    before_ = platform_.event_sink();
    const auto done = [weak = weak_from_this()](vast::Resolution resolution) {
        if (const auto self = weak.lock())
            self->resolved(std::move(resolution));
    };
    resolver_ = std::make_unique<vast::Resolver>(platform_.fetcher(), platform_.loop(),
                                                 options_.support ? *options_.support : common_, resolver_options());
    if (tag.text)
        resolver_->resolve_text(*tag.text, tag.address, done);
    else
        resolver_->resolve(tag.address, done);
    platform_.set_event_sink(this);
    open_ = true;
}

void OpenedTag::Run::receive(const Event& event)
{
    if (before_ && !call_host("EventSink", nullptr, [&] { before_->receive(event); }))
        before_ = nullptr;
    if (const auto tracking = tracking_)
        tracking->receive(event);
}

void OpenedTag::Run::resolved(vast::Resolution resolution)
{
    resolver_.reset();
    if (over_)
        return;
    report_failures(resolution);
    ads_ = std::move(resolution.ads);
    ignored_ = std::move(resolution.ignored);
    if (!ads_.empty())
        return open_next();
    outcome_.error = resolution.error;
    outcome_.why = resolution.why;
    platform_.emit(event::VastWithoutAd{*resolution.error, resolution.why});
    send_errors(resolution.errors, *resolution.error);
    end();
}

void OpenedTag::Run::report_failures(const vast::Resolution& resolution)
{
    for (const vast::FailedAd& failed : resolution.failed) {
        platform_.emit(event::VastFailed{failed.code, failed.why});
        // Without an ad, the addresses of all documents are requested.
        if (!resolution.ads.empty())
            send_errors(failed.errors, failed.code);
    }
}

void OpenedTag::Run::send_errors(const std::vector<std::string>& addresses, int code)
{
    vast::MacroValues values = options_.macros;
    values.request.kind = vast::AddressKind::Error;
    values.request.error_code = code;
    values.request.time = options_.clock();
    platform_.dispatch([&] {
        for (const std::string& address : addresses)
            QoroAdManager::sharedInstance().send_vast_tracker(vast::requestable(vast::expand(address, values)),
                                                              "error");
    });
}

// ------------------------------------------------------------------------------------------------------------- the ads

void OpenedTag::Run::open_next()
{
    if (n_ < ads_.size())
        open(ads_[n_]);
    else
        end();
}

void OpenedTag::Run::open(const vast::ResolvedAd& resolved)
{
    const vast::Ad& ad = resolved.ad;
    const std::optional<std::int64_t> sequence = ad.sequence;
    const auto text = [](const std::string& value) { return value.empty() ? EventText() : EventText(value); };
    platform_.emit(event::VastAdBegun{text(ad.id), sequence, text(ad.title), resolved.wrappers,
                                      ad.linear->media_files[*resolved.media.chosen].address});
    for (const auto* list : {&std::as_const(ignored_), &ad.ignored})
        for (const vast::Ignored& ignored : *list)
            platform_.emit(event::VastIgnored{ignored.element, ignored.why, ignored.path});
    ignored_.clear();
    if (options_.observer)
        call_host("TagObserver", &platform_, [&] { options_.observer->ad_begins(resolved, n_, ads_.size()); });

    const vast::Surroundings surroundings{.page = page_address(n_),
                                          .button = platform_.translation().translate(screen_texts::FirstOffer),
                                          .closes_at_end = n_ + 1 < ads_.size()};
    platform_.dispatch(
        [&] { QoroAdManager::sharedInstance().supply_page(surroundings.page, ad_page(resolved, surroundings)); });
    const auto description = read_ad(ad_description(resolved, surroundings), "VAST", AdTypes::Strict);
    tracking_ = std::make_shared<TagTracking>(platform_, resolved, TagMacros{macros_of(resolved), options_.clock},
                                              [weak = weak_from_this()](int code, const std::string& why) {
                                                  if (const auto self = weak.lock())
                                                      self->ad_failed(code, why);
                                              });
    opened_ = std::make_unique<OpenedAd>(
        platform_, description,
        [weak = weak_from_this()](const AdOutcome& outcome) {
            if (const auto self = weak.lock())
                self->ad_ended(outcome);
        },
        host_, rest_of_rehearsal());
}

/// The steps that the ad performs: at first all of them, later those that are still to come.
Rehearsal OpenedTag::Run::rest_of_rehearsal()
{
    const auto created = [this](const std::shared_ptr<QoroVideoWebViewController>& controller) {
        tracking_->attach(controller);
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
        if (n_ == 0 || (step.at > now && !std::holds_alternative<OpenStep>(step.what)))
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
    platform_.emit(event::VastFailed{code, why});
    platform_.loop().post([weak = weak_from_this(), n = n_] {
        const auto self = weak.lock();
        if (self && self->opened_ && self->n_ == n)
            self->opened_->close(ClosedBy::Host);
    });
}

void OpenedTag::Run::ad_ended(const AdOutcome& outcome)
{
    const std::size_t ended = n_++;
    outcome_.ads.push_back(outcome);
    opened_.reset();
    tracking_.reset();
    if (options_.observer)
        call_host("TagObserver", &platform_, [&] { options_.observer->ad_ended(ended, outcome); });
    if (over_)
        end();
    else
        open_next();
}

// ------------------------------------------------------------------------------------------------------------- the end

void OpenedTag::Run::close(ClosedBy closer)
{
    if (std::exchange(over_, true))
        return;
    if (opened_)
        return opened_->close(closer);
    resolver_.reset();
    end();
}

void OpenedTag::Run::end()
{
    over_ = true;
    platform_.loop().post([weak = weak_from_this()] {
        const auto self = weak.lock();
        if (!self)
            return;
        if (const OnEnd on_end = std::exchange(self->on_end_, nullptr))
            call_host("OpenedTag::OnEnd", &self->platform_, [&] { on_end(self->outcome_); });
    });
}

void OpenedTag::Run::leave()
{
    if (!std::exchange(open_, false))
        return;
    on_end_ = nullptr;
    over_ = true;
    resolver_.reset();
    opened_.reset();
    tracking_.reset();
    if (platform_.event_sink() == this)
        platform_.set_event_sink(before_);
}

// ---------------------------------------------------------------------------------------------------------- OpenedTag

/// In a domain without servers (RFC 2606, section 2). Not https, so that the page may show pictures of http servers.
std::string OpenedTag::page_address(std::size_t n)
{
    return "http://vast.invalid/" + std::to_string(n) + ".html";
}

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
