#include "record/RecordedScenario.h"

#include "formats/AddressPattern.h"
#include "formats/Base64.h"
#include "formats/InputError.h"
#include "formats/Scenario.h"
#include "formats/Steps.h"
#include "record/detail/Entries.h"
#include "vast/Reader.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace qoro
{

namespace
{

using detail::Json;
using detail::number_at;
using detail::text_at;

/// The signature of a picture (PNG, section 5.2) in base64: all that a simulated session looks at.
constexpr const char* Picture = "iVBORw0KGgo=";
/// Seconds of a stall that lasts to the recording's end.
constexpr double Endless = 1e6;

/// Turns the entries of one recording into steps and facts.
class Conversion
{
public:
    explicit Conversion(const Json& recording)
    {
        for (const char* key : {"device", "host", "ad"})
            made_[key] = recording.at(key);
        made_["device"]["canOpen"] = Json::array();
        note_document_address(text_at(made_["ad"], "vast"));
        for (const Json& step : recording.at("steps"))
            add(number_at(step, "at"), step);
        for (const Json& entry : recording.at("replay"))
            take(entry);
    }

    std::string text()
    {
        for (auto& [id, player] : players_)
            end_stall(player, Endless);
        if (std::ranges::none_of(steps_, [](const auto& step) { return step.second.contains("open"); }))
            add(opened_, {{"open", 0}});
        // Only steps let time pass.
        add(now_, {{"device", Json::object()}});
        std::ranges::stable_sort(steps_, {}, [](const auto& step) { return step.first; });
        Json steps = Json::array();
        for (auto& [at, step] : steps_) {
            Json timed{{"at", at}};
            timed.update(step);
            timed["at"] = at;
            steps.push_back(std::move(timed));
        }
        made_["steps"] = std::move(steps);
        return made_.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
    }

private:
    struct Player {
        std::string address;
        /// On the scenario's clock, as for the other sources.
        double created = 0;
        bool loaded = false;
        /// Position and time at which the present stall has begun.
        std::optional<std::pair<double, double>> stall = {};
        /// Whether an earlier player has shown how this video behaves.
        bool known = false;
    };
    struct Request {
        std::string address;
        double sent = 0;
    };

    /// A timer, or posted work.
    struct Event {
        double opened = 0;
        /// The same on the machine's clock.
        double really_opened = 0;
        /// Seconds; 0 for posted work.
        double interval = 0;
    };

    void take(const Json& entry)
    {
        if (entry.contains("t")) {
            now_ = std::max(now_, number_at(entry, "t"));
            if (text_at(entry, "in") != "" && !entry.contains("during"))
                simulated_now_ = simulated_time(static_cast<std::int64_t>(number_at(entry, "id")));
        }
        if (entry.contains("line"))
            now_ = std::max(now_, number_at(entry["line"], "t"));
        const Json of = entry.value("of", Json());
        if (const std::string read = text_at(entry, "read"); !read.empty())
            take_value(read, of, entry.value("value", Json()));
        else if (const std::string opened = text_at(entry, "open"); !opened.empty())
            take_source(opened, static_cast<std::int64_t>(number_at(entry, "id")), of);
        else if (const std::string kind = text_at(entry, "in"); !kind.empty())
            take_arrival(kind, static_cast<std::int64_t>(number_at(entry, "id")), entry.value("what", Json()));
    }

    void take_value(const std::string& name, const Json& of, const Json& value)
    {
        if (name == "text" && of.is_array() && !of.empty() && of[0].is_string())
            made_["text"][of[0].get<std::string>()] = value;
        else if (name == "canOpen" && of.is_string() && value == true)
            made_["device"]["canOpen"].push_back(of);
        else if (name == "copy" && of.is_string() && value.is_string())
            made_["host"]["cached"][of.get<std::string>()] = value;
        else if (name == "fetchNow" && of.is_string() && value.is_object())
            answer(of.get<std::string>(), value, number_at(value, "seconds"));
    }

    void take_source(const std::string& kind, std::int64_t id, const Json& of)
    {
        if (kind == "timer" && of.is_array() && !of.empty() && of[0].is_number())
            events_[id] = {simulated_now_, now_, of[0].get<double>()};
        else if (kind == "post")
            events_[id] = {simulated_now_, now_, 0};
        else if (kind == "fetch" && of.is_array() && !of.empty() && of[0].is_string())
            requests_[id] = {of[0].get<std::string>(), simulated_now_};
        else if (kind == "player") {
            const std::string address = of.is_string() ? of.get<std::string>() : "";
            const bool known = made_.contains("videos") && made_["videos"].contains(address);
            players_[id] = {.address = address, .created = simulated_now_, .known = known};
        }
    }

    /// When the event that arrives now occurs in the scenario, where nothing takes time but what it says: timers are
    /// punctual, and work takes none.
    /// @param id of the event's source, 0 for none
    double simulated_time(std::int64_t id) const
    {
        const auto found = events_.find(id);
        if (found == events_.end())
            return now_;
        const auto& [opened, really_opened, interval] = found->second;
        if (interval <= 0)
            return opened;
        constexpr double Rounding = 1e-6;
        return opened + interval * std::max(std::floor((now_ - really_opened) / interval + Rounding), 1.0);
    }

    void answer(const std::string& address, const Json& what, double after)
    {
        note_onward_addresses(what);
        Json made = Json::object();
        if (what.value("ok", Json()) != true)
            made["fail"] = text_at(what, "error");
        else if (what.contains("body"))
            made["body"] = what["body"];
        else if (what.contains("body64"))
            made["body64"] = what["body64"];
        else if (number_at(what, "bytes") > 0)
            made["body64"] = Picture;
        made["after"] = std::max(after, 0.0);
        made_["net"][as_given(address)] = std::move(made);
    }

    /// @param address of a tag's document, as another document or the user gives it
    void note_document_address(const std::string& address)
    {
        if (auto pattern = AddressPattern::of_document(address); pattern.has_macros())
            documents_.emplace_back(std::move(pattern), address);
    }

    /// Of a tag: where the answer leads, if it is a wrapper.
    void note_onward_addresses(const Json& what)
    {
        if (!made_["ad"].contains("vast"))
            return;
        const std::string body =
            what.contains("body64") ? from_base64(text_at(what, "body64")).value_or("") : text_at(what, "body");
        try {
            for (const vast::Ad& ad : vast::read_document(body).ads)
                if (ad.onward)
                    note_document_address(ad.onward->address);
        } catch (const vast::DocumentError&) {
            return;
        }
    }

    /// The address of a request with the macros that were replaced in it, whose values a simulated session replaces by
    /// its own.
    const std::string& as_given(const std::string& address) const
    {
        const auto document =
            std::ranges::find_if(documents_, [&](const auto& each) { return each.first.matches(address); });
        return document == documents_.end() ? address : document->second;
    }

    void take_arrival(const std::string& kind, std::int64_t id, const Json& what)
    {
        if (kind == "answer" && requests_.contains(id))
            answer(requests_[id].address, what, now_ - requests_[id].sent);
        else if (kind == "player" && players_.contains(id) && what.is_object())
            take_news(players_[id], what);
        else if (kind == "page" && what.is_object())
            take_page(what);
        else if (kind == "host" && what.is_object())
            take_deed(text_at(what, "do"), what.value("of", Json()));
        else if ((kind == "touch" || kind == "pageTouch") && what.is_object())
            add(now_, {{"touch", what.value("point", Json())}});
        else if (kind == "orientation")
            add(now_, {{"device", {{"orientation", what}}}});
        else if (kind == "statusBar")
            add(now_, {{"device", {{"statusBarOrientation", what}}}});
        else if (kind == "volume")
            add(now_, {{"device", {{"outputVolume", what}}}});
        else if (kind == "background" || kind == "foreground" || kind == "active")
            add(now_, {{"app", kind}});
        else if (kind == "interrupted")
            add(now_, {{"interrupt", what}});
        else if (kind == "rotated")
            add(now_, {{"call", {"didRotateFromInterfaceOrientation", what}}});
        else if (kind == "appeared")
            add(now_, {{"call", Json::array({"viewDidAppear"})}});
    }

    void take_deed(const std::string& deed, const Json& of)
    {
        if (deed == "open" || deed == "openTag")
            opened_ = now_;
        if (deed == "openTag" && of.is_object() && (of.contains("document") || of.contains("document64")))
            take_document(of);
        if (deed == "close")
            add(now_, {{"call", Json::array({"closeAction"})}});
    }

    /// The document of a tag that is a file.
    void take_document(const Json& of)
    {
        Json document = Json::object();
        for (const auto& [key, as] : {std::pair("document", "body"), std::pair("document64", "body64")})
            if (of.contains(key))
                document[as] = of[key];
        note_onward_addresses(document);
        made_["net"][text_at(made_["ad"], "vast")] = std::move(document);
    }

    void take_page(const Json& what)
    {
        const std::string news = text_at(what, "news");
        if (news == "message") {
            Json script = Json::array({what.value("command", Json())});
            const Json arguments = what.value("arguments", Json());
            for (std::size_t n = 0; arguments.is_array() && n < arguments.size(); ++n)
                script.push_back(arguments[n]);
            add(now_, {{"script", std::move(script)}});
        } else if (news == "died") {
            add(now_, {{"page", "dies"}});
        } else if (news == "responds" && what.value("responds", Json()) == false) {
            add(now_, {{"page", "hangs"}});
        }
    }

    void take_news(Player& player, const Json& what)
    {
        if (player.known)
            return;
        const auto load = static_cast<int>(number_at(what, "load"));
        const double position = number_at(what, "position");
        Json& video = made_["videos"][player.address];
        if (!player.loaded && (load & MPMovieLoadStatePlayable) != 0) {
            player.loaded = true;
            video["loadAfter"] = std::max(now_ - player.created, 0.0);
        }
        if (number_at(what, "duration") > 0)
            video["duration"] = what["duration"];
        if ((load & MPMovieLoadStateStalled) != 0 && !player.stall)
            player.stall = {position, now_};
        else if ((load & MPMovieLoadStateStalled) == 0 && player.stall)
            end_stall(player, now_ - player.stall->second);
        if (text_at(what, "news") == "finish" &&
            static_cast<int>(number_at(what, "reason")) == MPMovieFinishReasonPlaybackError)
            video[player.loaded ? "error" : "errorForGood"] = position;
        if (video.is_null())
            video = Json::object();
    }

    void end_stall(Player& player, double seconds)
    {
        if (player.stall)
            made_["videos"][player.address]["stalls"].push_back({player.stall->first, seconds});
        player.stall.reset();
    }

    /// Steps that a simulated session cannot perform are left out.
    void add(double at, Json step)
    {
        step["at"] = at;
        try {
            read_steps(Json::array({step}).dump(), "step", true);
            steps_.emplace_back(at, std::move(step));
        } catch (const InputError&) {
            return;
        }
    }

    Json made_ = Json::object();
    std::vector<std::pair<double, Json>> steps_;
    /// Addresses of a tag's documents that have macros.
    std::vector<std::pair<AddressPattern, std::string>> documents_;
    std::map<std::int64_t, Request> requests_;
    std::map<std::int64_t, Player> players_;
    std::map<std::int64_t, Event> events_;
    /// Time of the event that is being read: on the machine's clock, and on the scenario's.
    /// @{
    double now_ = 0;
    double simulated_now_ = 0;
    /// @}
    double opened_ = 0;
};

} // namespace

std::string scenario_of_recording(const std::string& text, const std::string& file)
{
    read_scenario(text, file);
    const Json recording = Json::parse(text);
    for (const char* key : {"device", "host", "ad", "steps", "replay"})
        if (!recording.contains(key) || !recording[key].is_structured())
            throw InputError(file, "", std::string("expected a recording with \"") + key + "\"");
    return Conversion(recording).text();
}

} // namespace qoro
