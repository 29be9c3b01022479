#include "vast/Resolver.h"

#include "vast/CreativeChoice.h"
#include "vast/Reader.h"
#include "vast/Texts.h"
#include "vast/Wrapping.h"

#include <algorithm>
#include <utility>

namespace qoro::vast
{

namespace
{

// The standard's codes (VAST 4.3, section 2.3.6).
constexpr int UnexpectedLinearity = 201;
constexpr int BlockedCategory = 205;
constexpr int BreakShortened = 206;
constexpr int WrapperFailed = 300;
constexpr int TimedOut = 301;
constexpr int TooManyWrappers = 302;
constexpr int NoAd = 303;
constexpr int NoSupportedFile = 403;
constexpr int RequiredCompanion = 602;
constexpr int Unknown = 900;

template <typename Item>
void append(std::vector<Item>& list, const std::vector<Item>& more)
{
    list.insert(list.end(), more.begin(), more.end());
}

/// The addresses of an ad's document and of its wrappers', the innermost first.
std::vector<std::string> documents_of(const std::string& address, const Chain& chain)
{
    std::vector<std::string> documents{address};
    for (const Wrapping* each = chain.get(); each; each = each->outer.get())
        documents.push_back(each->address);
    return documents;
}

/// The ads that a wrapper permits of a document: all, or the first stand-alone one. A single ad is always permitted.
std::vector<Ad> permitted(std::vector<Ad> ads, bool multiple)
{
    if (multiple || ads.size() < 2)
        return ads;
    const auto first = std::ranges::find_if(ads, [](const Ad& ad) { return !ad.sequence; });
    if (first == ads.end())
        return {};
    return {std::move(*first)};
}

} // namespace

struct SpareAd {
    std::shared_ptr<const Ad> ad;
    /// Of its document.
    std::string address;
    Chain chain;
};

/// The resolution of one tag.
class Resolver::Run : public std::enable_shared_from_this<Run>
{
public:
    Run(Resolver& resolver, Done done) : resolver_(resolver), loop_(resolver.loop_), done_(std::move(done)) {}

    void fetch_tag(const std::string& address);
    void read_tag(Document document, const std::string& address);
    void try_spare(const SpareAd& spare);
    /// Ends without a call.
    void cancel();

private:
    /// The ads that a document, or one of its ads, leads to.
    struct Found {
        std::vector<ResolvedAd> ads = {};
        /// Without ads: why.
        int code = NoAd;
        std::string why = {};
    };
    using Then = std::function<void(Found)>;
    using Answer = std::function<void(FetchAnswer answer, bool timed_out)>;

    /// One document's ads, while they are resolved.
    struct Choice {
        std::vector<std::shared_ptr<Ad>> pod = {};
        std::vector<std::shared_ptr<Ad>> alone = {};
        /// First of alone that has not been tried.
        std::size_t next = 0;
        Chain chain = {};
        std::string address = {};
        /// Per ad of the pod.
        std::vector<Found> found = {};
        std::size_t outstanding = 0;
        Then then = {};
    };

    void begin();
    void fetch(const std::string& address, Answer answer);
    void note(const Document& document, const std::string& address, const Chain& chain);
    void resolve_ads(std::vector<Ad> ads, const std::string& address, const Chain& chain, Then then);
    void take(const std::shared_ptr<Choice>& choice, std::size_t n, Found found);
    void try_next_alone(const std::shared_ptr<Choice>& choice, Found first);
    void fill_gaps(const std::shared_ptr<Choice>& choice, std::size_t n);
    std::optional<Found> resolve_now(Ad& ad, const std::string& address, const Chain& chain);
    std::optional<Found> refuse_to_follow(const Ad& ad, const std::string& address, const Chain& chain);
    void follow(const std::shared_ptr<const Ad>& ad, const std::string& address, const Chain& chain, const Then& then);
    Found choose(Ad& ad, const std::string& address, const Chain& chain);
    Found fail(const Ad& ad, const std::string& address, const Chain& chain, int code, std::string why,
               std::vector<std::string> reasons = {});
    Found fail(FailedAd failed);
    void finish(Found found);
    void stop_timers();
    void keep_spares();

    /// Not to be used once cancelled, or done: the callback may destroy it.
    Resolver& resolver_;
    MainLoop& loop_;
    Done done_;
    /// The tag's own address; empty for a text.
    std::string tag_;
    Resolution result_;
    /// Of each document with ads, in the order in which they were read.
    std::vector<std::shared_ptr<Choice>> choices_;
    /// Error addresses of each document, with its depth.
    std::vector<std::pair<int, std::vector<std::string>>> errors_;
    /// Ends the whole resolution; 0 before it begins.
    TimerId whole_ = 0;
    /// The requests under way, by the timers that end them.
    std::vector<std::pair<TimerId, Answer>> waiting_;
    /// Ads that can be played.
    std::size_t chosen_ = 0;
    bool over_ = false;
    bool cancelled_ = false;
};

void Resolver::Run::begin()
{
    const double limit = resolver_.options_.whole_time_out;
    whole_ = loop_.start_timer(limit, false, [weak = weak_from_this()] {
        const auto self = weak.lock();
        if (!self)
            return;
        self->over_ = true;
        for (auto& [timer, answer] : std::exchange(self->waiting_, {})) {
            self->loop_.stop_timer(timer);
            answer({}, true);
        }
    });
}

void Resolver::Run::stop_timers()
{
    loop_.stop_timer(whole_);
    for (const auto& [timer, answer] : waiting_)
        loop_.stop_timer(timer);
    waiting_.clear();
}

void Resolver::Run::cancel()
{
    cancelled_ = true;
    done_ = nullptr;
    stop_timers();
}

/// Calls answer once: with the answer, or when the time is over.
void Resolver::Run::fetch(const std::string& address, Answer answer)
{
    const ResolverOptions& options = resolver_.options_;
    const std::string asked = requestable(options.expand ? options.expand(address) : address);
    if (options.requests)
        options.requests(asked);
    const auto timer = std::make_shared<TimerId>(0);
    const auto take = [weak = weak_from_this(), timer]() -> Answer {
        const auto self = weak.lock();
        if (!self || self->cancelled_)
            return nullptr;
        const auto found = std::ranges::find(self->waiting_, *timer, &std::pair<TimerId, Answer>::first);
        if (found == self->waiting_.end())
            return nullptr;
        Answer waiting = std::move(found->second);
        self->waiting_.erase(found);
        self->loop_.stop_timer(*timer);
        return waiting;
    };
    *timer = loop_.start_timer(options.time_out, false, [take] {
        if (const Answer waiting = take())
            waiting({}, true);
    });
    waiting_.emplace_back(*timer, std::move(answer));
    resolver_.fetcher_.fetch(asked, FetchKind::Page, [take](FetchAnswer received) {
        if (const Answer waiting = take())
            waiting(std::move(received), false);
    });
}

void Resolver::Run::fetch_tag(const std::string& address)
{
    tag_ = address;
    begin();
    fetch(address, [this](const FetchAnswer& answer, bool timed_out) {
        if (timed_out || !answer.ok)
            return finish(
                {.code = timed_out ? TimedOut : Unknown, .why = timed_out ? "no answer in time" : answer.error});
        if (trimmed(answer.body).empty())
            return finish({.code = NoAd, .why = "the response is empty"});
        try {
            read_tag(read_document(answer.body), answer.final_address);
        } catch (const DocumentError& error) {
            result_.malformed = true;
            finish({.code = error.code, .why = error.what()});
        }
    });
}

void Resolver::Run::read_tag(Document document, const std::string& address)
{
    if (whole_ == 0)
        begin();
    result_.version = document.version;
    result_.ignored = document.ignored;
    note(document, address, nullptr);
    resolve_ads(std::move(document.ads), address, nullptr, [this](Found found) { finish(std::move(found)); });
}

void Resolver::Run::finish(Found found)
{
    stop_timers();
    result_.ads = std::move(found.ads);
    keep_spares();
    if (result_.ads.empty()) {
        result_.error = found.code;
        result_.why = std::move(found.why);
        std::ranges::stable_sort(errors_, std::greater<>(), &std::pair<int, std::vector<std::string>>::first);
        for (const auto& [depth, addresses] : errors_)
            append(result_.errors, addresses);
    }
    // Never inside the call that began the resolution.
    loop_.post([self = shared_from_this()] {
        if (self->cancelled_)
            return;
        std::erase(self->resolver_.runs_, self);
        if (const Done done = std::exchange(self->done_, nullptr))
            done(std::move(self->result_));
    });
}

void Resolver::Run::try_spare(const SpareAd& spare)
{
    begin();
    resolve_ads({*spare.ad}, spare.address, spare.chain, [this](Found found) { finish(std::move(found)); });
}

void Resolver::Run::keep_spares()
{
    for (const auto& choice : std::exchange(choices_, {}))
        for (std::size_t n = choice->next; n < choice->alone.size(); ++n)
            result_.spares.push_back(
                std::make_shared<const SpareAd>(SpareAd{choice->alone[n], choice->address, choice->chain}));
}

// --------------------------------------------------------------------------------------------------- documents and ads

/// Keeps what is needed of a document when the tag has no ad.
void Resolver::Run::note(const Document& document, const std::string& address, const Chain& chain)
{
    result_.documents.push_back(address);
    std::vector<std::string> errors;
    for (const Ad& ad : document.ads)
        append(errors, ad.errors);
    append(errors, document.errors);
    errors_.emplace_back(depth_of(chain), std::move(errors));
}

void Resolver::Run::resolve_ads(std::vector<Ad> ads, const std::string& address, const Chain& chain, Then then)
{
    const auto choice = choices_.emplace_back(std::make_shared<Choice>());
    for (Ad& ad : ads) {
        auto& list = ad.sequence ? choice->pod : choice->alone;
        list.push_back(std::make_shared<Ad>(std::move(ad)));
    }
    std::ranges::stable_sort(choice->pod, {}, [](const auto& ad) { return *ad->sequence; });
    choice->chain = chain;
    choice->address = address;
    choice->then = std::move(then);
    if (choice->pod.empty())
        return try_next_alone(choice, {.code = NoAd, .why = "the response has no ad"});
    choice->found.resize(choice->pod.size());
    choice->outstanding = choice->pod.size();
    for (std::size_t n = 0; n < choice->pod.size(); ++n)
        if (auto found = resolve_now(*choice->pod[n], address, chain))
            take(choice, n, std::move(*found));
        else
            follow(choice->pod[n], address, chain,
                   [this, choice, n](Found followed) { take(choice, n, std::move(followed)); });
}

/// Takes what an ad of the pod leads to.
void Resolver::Run::take(const std::shared_ptr<Choice>& choice, std::size_t n, Found found)
{
    choice->found[n] = std::move(found);
    if (--choice->outstanding == 0)
        fill_gaps(choice, 0);
}

/// Tries the stand-alone ads one after the other, until one can be played.
/// @param first why the first one tried cannot be played
void Resolver::Run::try_next_alone(const std::shared_ptr<Choice>& choice, Found first)
{
    while (choice->next < choice->alone.size()) {
        const bool is_first = choice->next == 0;
        const auto ad = choice->alone[choice->next++];
        auto found = resolve_now(*ad, choice->address, choice->chain);
        if (!found)
            return follow(ad, choice->address, choice->chain,
                          [this, choice, is_first, first = std::move(first)](Found followed) {
                              if (!followed.ads.empty())
                                  choice->then(std::move(followed));
                              else
                                  try_next_alone(choice, is_first ? followed : first);
                          });
        if (!found->ads.empty())
            return choice->then(std::move(*found));
        if (is_first)
            first = std::move(*found);
    }
    choice->then(std::move(first));
}

/// Replaces the pod's ads that cannot be played with stand-alone ads.
/// @param n the first ad of the pod that has not been looked at
void Resolver::Run::fill_gaps(const std::shared_ptr<Choice>& choice, std::size_t n)
{
    const auto has_gap = [&](std::size_t position) {
        const auto& onward = choice->pod[position]->onward;
        return choice->found[position].ads.empty() && !(onward && onward->fallback_on_no_ad == false);
    };
    for (; n < choice->pod.size(); ++n)
        while (has_gap(n) && choice->next < choice->alone.size()) {
            const auto ad = choice->alone[choice->next++];
            auto found = resolve_now(*ad, choice->address, choice->chain);
            if (!found)
                return follow(ad, choice->address, choice->chain, [this, choice, n](Found followed) {
                    if (!followed.ads.empty())
                        choice->found[n] = std::move(followed);
                    fill_gaps(choice, n);
                });
            if (!found->ads.empty())
                choice->found[n] = std::move(*found);
        }
    Found all{.code = choice->found.front().code, .why = choice->found.front().why};
    for (Found& found : choice->found)
        std::ranges::move(found.ads, std::back_inserter(all.ads));
    choice->then(std::move(all));
}

/// What an ad leads to, an ad that can be played is moved to the result. Absent for a wrapper that can be followed.
std::optional<Resolver::Run::Found> Resolver::Run::resolve_now(Ad& ad, const std::string& address, const Chain& chain)
{
    if (ad.error)
        return fail(ad, address, chain, *ad.error, ad.path + ": " + ad.fault);
    if (ad.onward)
        return refuse_to_follow(ad, address, chain);
    return choose(ad, address, chain);
}

/// Why a wrapper is not followed; absent when it is.
/// @param address of the wrapper's document
std::optional<Resolver::Run::Found> Resolver::Run::refuse_to_follow(const Ad& ad, const std::string& address,
                                                                    const Chain& chain)
{
    const ResolverOptions& options = resolver_.options_;
    const std::string& onward = ad.onward->address;
    const auto refuse = [&](int code, const std::string& why) {
        return fail(ad, address, chain, code, ad.path + ": " + why);
    };
    if (over_)
        return refuse(TimedOut, "the time for the whole tag is over");
    if (depth_of(chain) >= options.wrappers)
        return refuse(TooManyWrappers, "more than " + std::to_string(options.wrappers) + " wrappers");
    if (result_.wrappers.size() >= options.documents)
        return refuse(TooManyWrappers, "more than " + std::to_string(options.documents) + " documents");
    if (!permits_wrappers(chain))
        return refuse(TooManyWrappers, "a wrapper before it permits no further ones (followAdditionalWrappers)");
    if (onward == tag_ || leads_through(chain, onward))
        return refuse(TooManyWrappers, "the wrappers lead in a circle");
    if (options.permits && !options.permits(address, onward))
        return refuse(WrapperFailed, onward + " is refused, because it leads into a private network");
    return std::nullopt;
}

void Resolver::Run::follow(const std::shared_ptr<const Ad>& ad, const std::string& address, const Chain& chain,
                           const Then& then)
{
    const std::size_t hop = result_.wrappers.size();
    result_.wrappers.push_back({.address = ad->onward->address});
    const Chain inner = std::make_shared<const Wrapping>(ad, address, chain);
    // A response without an ad has error addresses of its own.
    const auto give_up = [this, ad, address, chain, then, hop](int code, const std::string& why,
                                                               std::vector<std::string> errors = {},
                                                               std::vector<std::string> documents = {}) {
        result_.wrappers[hop].error = code;
        result_.wrappers[hop].why = why;
        append(errors, errors_of(*ad, chain));
        append(documents, documents_of(address, chain));
        then(fail({.code = code,
                   .why = ad->onward->address + ": " + why,
                   .errors = std::move(errors),
                   .id = ad->id,
                   .documents = std::move(documents)}));
    };
    fetch(ad->onward->address, [this, ad, inner, then, give_up](const FetchAnswer& answer, bool timed_out) {
        if (timed_out || !answer.ok)
            return give_up(TimedOut, timed_out ? "no answer in time" : answer.error);
        if (trimmed(answer.body).empty())
            return give_up(NoAd, "the response is empty");
        Document document;
        try {
            document = read_document(answer.body);
        } catch (const DocumentError& error) {
            return give_up(error.code, error.what());
        }
        note(document, answer.final_address, inner);
        if (document.ads.empty())
            return give_up(NoAd, "the response has no ad", std::move(document.errors), {answer.final_address});
        const bool multiple = ad->onward->allow_multiple_ads;
        std::vector<Ad> ads = permitted(std::move(document.ads), multiple);
        if (ads.empty())
            return give_up(NoAd, "the response has a pod only, and the wrapper permits no pod (allowMultipleAds)");
        resolve_ads(std::move(ads), answer.final_address, inner,
                    [ad, multiple, then, ignored = std::move(document.ignored)](Found found) {
                        for (ResolvedAd& each : found.ads) {
                            append(each.ad.ignored, ignored);
                            // The outermost document decides on the place in the pod.
                            if (ad->sequence || !multiple)
                                each.ad.sequence = ad->sequence;
                        }
                        then(std::move(found));
                    });
    });
}

/// Moves the ad to the result if it can be played.
Resolver::Run::Found Resolver::Run::choose(Ad& ad, const std::string& address, const Chain& chain)
{
    if (!ad.linear)
        return fail(ad, address, chain, UnexpectedLinearity, ad.path + ": the ad has no linear creative");
    if (const Category* const blocked = blocked_category(ad, chain))
        return fail(ad, address, chain, BlockedCategory, ad.path + ": a wrapper refuses its category " + blocked->code);
    MediaChoice media = choose_media(ad.linear->media_files, resolver_.support_, resolver_.options_.band);
    if (!media.chosen)
        return fail(ad, address, chain, NoSupportedFile, ad.path + ": none of its media files can be played",
                    std::move(media.reasons));
    if (chosen_ >= resolver_.options_.ads)
        return fail(ad, address, chain, BreakShortened,
                    ad.path + ": more than " + std::to_string(resolver_.options_.ads) + " ads");
    ResolvedAd resolved{.ad = merged(std::move(ad), chain),
                        .media = std::move(media),
                        .wrappers = depth_of(chain),
                        .documents = documents_of(address, chain)};
    if (choose_companion(resolved.ad.companions).lacks_required)
        return fail({.code = RequiredCompanion,
                     .why = resolved.ad.path + ": a required companion cannot be shown",
                     .errors = std::move(resolved.ad.errors),
                     .id = std::move(resolved.ad.id),
                     .documents = std::move(resolved.documents)});
    ++chosen_;
    Found found;
    found.ads.push_back(std::move(resolved));
    return found;
}

/// @param reasons against each media file of an ad that has none to play
Resolver::Run::Found Resolver::Run::fail(const Ad& ad, const std::string& address, const Chain& chain, int code,
                                         std::string why, std::vector<std::string> reasons)
{
    return fail({.code = code,
                 .why = std::move(why),
                 .errors = errors_of(ad, chain),
                 .id = ad.id,
                 .media_files = reasons.empty() ? std::vector<MediaFile>() : ad.linear->media_files,
                 .reasons = std::move(reasons),
                 .documents = documents_of(address, chain)});
}

Resolver::Run::Found Resolver::Run::fail(FailedAd failed)
{
    Found found{.code = failed.code, .why = failed.why};
    // Each may have the error addresses of large wrappers.
    if (result_.failed.size() < resolver_.options_.ads)
        result_.failed.push_back(std::move(failed));
    return found;
}

// ------------------------------------------------------------------------------------------------------------ Resolver

Resolver::Resolver(Fetcher& fetcher, MainLoop& loop, const MediaSupport& support, ResolverOptions options)
    : fetcher_(fetcher), loop_(loop), support_(support), options_(std::move(options))
{
}

Resolver::~Resolver()
{
    for (const auto& run : runs_)
        run->cancel();
}

void Resolver::resolve(const std::string& address, Done done)
{
    runs_.push_back(std::make_shared<Run>(*this, std::move(done)));
    runs_.back()->fetch_tag(address);
}

void Resolver::resolve_text(const std::string& text, const std::string& address, Done done)
{
    Document document = read_document(text);
    runs_.push_back(std::make_shared<Run>(*this, std::move(done)));
    runs_.back()->read_tag(std::move(document), address);
}

void Resolver::resolve_spare(const SpareAd& spare, Done done)
{
    runs_.push_back(std::make_shared<Run>(*this, std::move(done)));
    runs_.back()->try_spare(spare);
}

} // namespace qoro::vast
