#include "workbench/explore/SessionStore.h"

#include "formats/InputError.h"
#include "formats/JsonText.h"
#include "workbench/detail/Json.h"
#include "workbench/explore/Fingerprint.h"
#include "workbench/explore/StateWriter.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace qoro
{

using detail::Json;

namespace
{

enum Flag : unsigned { Open = 1, Close = 2, Closed = 4 };

std::string hexadecimal(const StateKey& key)
{
    constexpr std::string_view Digits = "0123456789abcdef";
    std::string text;
    for (const std::uint64_t half : {key.first, key.second})
        for (int shift = 60; shift >= 0; shift -= 4)
            text += Digits[(half >> static_cast<unsigned>(shift)) & 15];
    return text;
}

/// @throws InputError
StateKey key_of(const std::string& text)
{
    constexpr std::size_t Half = 16;
    StateKey key;
    const char* const middle = text.data() + std::min(Half, text.size());
    const char* const end = text.data() + text.size();
    if (text.size() != 2 * Half || std::from_chars(text.data(), middle, key.first, 16).ptr != middle ||
        std::from_chars(middle, end, key.second, 16).ptr != end)
        throw InputError("sessions", "", "expected 32 hexadecimal digits, got \"" + text + "\"");
    return key;
}

std::string text_of(const std::vector<Move>& moves)
{
    std::string text = "[";
    for (const Move& move : moves) {
        text += text.size() > 1 ? ",[" : "[";
        append_json(text, static_cast<std::int64_t>(move.kind));
        text += ',';
        append_json(text, static_cast<std::int64_t>(move.number));
        for (const double part : {move.point.x, move.point.y}) {
            text += ',';
            append_json(text, part);
        }
        text += ',';
        append_json_text(text, move.name);
        text += ']';
    }
    return text + ']';
}

std::vector<Move> moves_of(const Json& list)
{
    std::vector<Move> moves;
    for (const Json& each : list)
        moves.push_back({.kind = static_cast<Move::Kind>(each.at(0).get<int>()),
                         .number = each.at(1).get<std::int32_t>(),
                         .point = {each.at(2).get<double>(), each.at(3).get<double>()},
                         .name = each.at(4).get<std::string>()});
    return moves;
}

std::string text_of(const Passage& happened)
{
    std::string text = "[" + std::to_string(happened.sent) + (happened.ended ? ",1" : ",0");
    for (const Sign sign : happened.signs)
        text += ',' + std::to_string(sign);
    return text + ']';
}

Passage passage_in(const Json& list)
{
    Passage happened{.sent = list.at(0).get<std::uint64_t>(), .ended = list.at(1).get<int>() != 0};
    for (std::size_t n = 2; n < list.size(); ++n)
        happened.signs.push_back(list[n].get<Sign>());
    return happened;
}

/// What a state that is known already adds to a run: that it was reached, and the faults on the way.
void end_at_known(Moment& moment)
{
    moment.moves.clear();
    std::erase_if(moment.faults, [](Fault fault) { return fault != Fault::PlatformFault; });
}

} // namespace

StateKey session_of_beginning(std::size_t start)
{
    StateWriter out;
    out.add("start", start);
    return out.key();
}

StateKey session_of_move(const StateKey& from, const Move& move)
{
    StateWriter out;
    out.add("from", from.first);
    out.add("from", from.second);
    out.add("kind", move.kind);
    out.add("number", move.number);
    out.add("x", move.point.x);
    out.add("y", move.point.y);
    return out.key();
}

std::optional<CourseRun> SessionStore::find(const StateKey& session, std::int64_t at,
                                            const std::function<bool(const StateKey&)>& known) const
{
    const auto place = places_.find(session);
    if (place == places_.end())
        return std::nullopt;
    const Kept& kept = sessions_[place->second].second;
    CourseRun run;
    for (std::size_t n = 0; n < kept.moments.size(); ++n) {
        Moment moment = kept.moments[n];
        moment.at += at;
        moment.moves = lists_[kept.places[n].moves];
        moment.happened = passages_[kept.places[n].happened];
        if (known && moment.key && known(*moment.key)) {
            end_at_known(moment);
            run.merged = true;
            run.moments.push_back(std::move(moment));
            return run;
        }
        run.moments.push_back(std::move(moment));
    }
    if (kept.merged)
        return std::nullopt;
    run.rest = passages_[kept.rest];
    return run;
}

void SessionStore::add(const StateKey& session, std::int64_t at, const CourseRun& run)
{
    Kept kept{.moments = {}, .places = {}, .merged = run.merged, .rest = place_of(run.rest)};
    for (const Moment& moment : run.moments) {
        kept.places.push_back({list_of(moment.moves), place_of(moment.happened)});
        kept.moments.push_back({.at = moment.at - at,
                                .key = moment.key,
                                .open = moment.open,
                                .close = moment.close,
                                .closed = moment.closed,
                                .faults = moment.faults});
    }
    keep(session, std::move(kept));
}

void SessionStore::keep(const StateKey& session, Kept kept)
{
    const auto [place, is_new] = places_.try_emplace(session, sessions_.size());
    if (is_new) {
        sessions_.emplace_back(session, std::move(kept));
        return;
    }
    // The one that goes further.
    Kept& known = sessions_[place->second].second;
    if (kept.moments.size() > known.moments.size() || (known.merged && !kept.merged))
        known = std::move(kept);
}

void SessionStore::add_all(const SessionStore& other)
{
    for (const auto& [session, kept] : other.sessions_) {
        Kept own = kept;
        for (Places& each : own.places)
            each = {list_of(other.lists_[each.moves]), place_of(other.passages_[each.happened])};
        own.rest = place_of(other.passages_[own.rest]);
        keep(session, std::move(own));
    }
}

std::size_t SessionStore::list_of(const std::vector<Move>& moves)
{
    const auto [place, is_new] = list_places_.try_emplace(text_of(moves), lists_.size());
    if (is_new)
        lists_.push_back(moves);
    return place->second;
}

std::size_t SessionStore::place_of(const Passage& happened)
{
    const auto [place, is_new] = passage_places_.try_emplace(text_of(happened), passages_.size());
    if (is_new)
        passages_.push_back(happened);
    return place->second;
}

void SessionStore::write(std::string& out) const
{
    for (const Passage& happened : passages_)
        out += "{\"happened\":" + text_of(happened) + "}\n";
    for (const auto& list : lists_)
        out += "{\"moves\":" + text_of(list) + "}\n";
    for (const auto& [session, kept] : sessions_) {
        out += "{\"session\":\"" + hexadecimal(session) + (kept.merged ? "\",\"merged\":true" : "\"");
        out += ",\"rest\":" + std::to_string(kept.rest) + ",\"moments\":[";
        for (std::size_t n = 0; n < kept.moments.size(); ++n) {
            const Moment& moment = kept.moments[n];
            const unsigned flags =
                (moment.open ? Open : 0U) | (moment.close ? Close : 0U) | (moment.closed ? Closed : 0U);
            out += n == 0 ? "[" : ",[";
            append_json(out, moment.at);
            out += moment.key ? ",\"" + hexadecimal(*moment.key) + "\"," : std::string(",null,");
            out += std::to_string(flags) + "," + std::to_string(kept.places[n].moves) + "," +
                   std::to_string(kept.places[n].happened) + ",[";
            for (const Fault& fault : moment.faults)
                out += (&fault == moment.faults.data() ? "" : ",") + std::to_string(static_cast<int>(fault));
            out += "]]";
        }
        out += "]}\n";
    }
}

bool SessionStore::read(std::string_view line)
{
    const Json json = Json::parse(line);
    if (json.contains("moves")) {
        lists_read_.push_back(list_of(moves_of(json.at("moves"))));
        return true;
    }
    if (json.contains("happened")) {
        passages_read_.push_back(place_of(passage_in(json.at("happened"))));
        return true;
    }
    if (!json.contains("session"))
        return false;
    Kept kept{.moments = {},
              .places = {},
              .merged = json.value("merged", false),
              .rest = passages_read_.at(json.at("rest").get<std::size_t>())};
    for (const Json& each : json.at("moments")) {
        const auto flags = each.at(2).get<unsigned>();
        Moment moment{.at = each.at(0).get<std::int64_t>(),
                      .open = (flags & Open) != 0,
                      .close = (flags & Close) != 0,
                      .closed = (flags & Closed) != 0};
        if (!each.at(1).is_null())
            moment.key = key_of(each.at(1).get<std::string>());
        for (const Json& fault : each.at(5))
            moment.faults.push_back(static_cast<Fault>(fault.get<int>()));
        kept.places.push_back(
            {lists_read_.at(each.at(3).get<std::size_t>()), passages_read_.at(each.at(4).get<std::size_t>())});
        kept.moments.push_back(std::move(moment));
    }
    keep(key_of(json.at("session").get<std::string>()), std::move(kept));
    return true;
}

// --------------------------------------------------------------------------------------------------------------- files

namespace
{

constexpr std::string_view Heading = "{\"search\":";
constexpr int Format = 2;

SearchPart part_of(const Json& heading)
{
    SearchPart part;
    part.identity = {.program = heading.at("program").get<std::string>(),
                     .ad = heading.at("ad").get<std::string>(),
                     .number = heading.at("number").get<std::size_t>(),
                     .device = heading.at("device").get<std::string>(),
                     .scenario = heading.at("scenario").get<std::string>(),
                     .guard = heading.at("guard").get<bool>(),
                     .depth = heading.at("depth").get<std::size_t>(),
                     .policy_seconds = heading.at("policySeconds").get<double>()};
    part.budget = heading.at("budget").get<std::size_t>();
    part.shard = heading.at("shard").at(0).get<std::size_t>();
    part.shards = heading.at("shard").at(1).get<std::size_t>();
    return part;
}

/// States and signs have other numbers, and rules find something else, in another build.
/// @throws InputError
void require_same_build(const Json& heading, const std::string& file)
{
    if (heading.value("sources", "") != fingerprint_of_sources())
        throw InputError(file, "",
                         "it was written by another build of the program, version " +
                             heading.at("program").get<std::string>() +
                             "; expected the build that reads it: make the file again");
}

} // namespace

void write_part(std::string& out, const SearchPart& part)
{
    const SearchIdentity& of = part.identity;
    const Json heading{{"search", Format},
                       {"program", of.program},
                       {"sources", fingerprint_of_sources()},
                       {"ad", of.ad},
                       {"number", of.number},
                       {"device", of.device},
                       {"shard", {part.shard, part.shards}},
                       {"depth", of.depth},
                       {"budget", part.budget},
                       {"policySeconds", of.policy_seconds},
                       {"guard", of.guard},
                       {"scenario", of.scenario}};
    out += heading.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
    part.sessions.write(out);
    out += "{\"sessions\":" + std::to_string(part.sessions.size()) + "}\n";
}

bool is_search_part(std::string_view text)
{
    return text.starts_with(Heading);
}

std::vector<SearchPart> read_parts(std::string_view text, const std::string& file)
{
    std::vector<SearchPart> parts;
    bool open = false;
    std::size_t number = 0;
    const auto refuse = [&](const std::string& why) -> InputError {
        return InputError(file, "", "line " + std::to_string(number) + ": " + why);
    };
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        ++number;
        if (line.empty())
            continue;
        try {
            if (line.starts_with(Heading)) {
                if (open)
                    throw refuse("another search begins before the end of the last; the file is not whole");
                const Json heading = Json::parse(line);
                require_same_build(heading, file);
                parts.push_back(part_of(heading));
                open = true;
            } else if (!open) {
                throw refuse("expected the heading of a search, as explore writes it");
            } else if (!parts.back().sessions.read(line)) {
                if (Json::parse(line).at("sessions").get<std::size_t>() != parts.back().sessions.size())
                    throw refuse("sessions are missing or twice in the file");
                open = false;
            }
        } catch (const Json::exception&) {
            throw refuse("expected a line of a search, as explore writes it");
        } catch (const std::out_of_range&) {
            throw refuse("a line that it depends on is missing");
        }
    }
    if (open || parts.empty())
        throw InputError(file, "", parts.empty() ? "no search is in the file" : "the file is not whole");
    return parts;
}

} // namespace qoro
