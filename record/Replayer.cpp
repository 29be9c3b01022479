#include "record/Replayer.h"

#include "formats/JsonText.h"
#include "platform/ShortText.h"
#include "record/detail/Entries.h"

#include <utility>

namespace qoro
{

using detail::Json;
using detail::text_at;
using detail::value_at;

namespace
{

/// As it would be read from a file, where a number that is not finite is null.
Json as_read(const Value& value)
{
    std::string text;
    append_json(text, value);
    return Json::parse(text);
}

std::string shown(const Json& json)
{
    constexpr std::size_t Longest = 160;
    return shortened(json.dump(-1, ' ', false, Json::error_handler_t::replace), Longest, "...");
}

const Json Nothing;

const Json& at(const Json& entry, const char* key)
{
    const auto found = entry.is_object() ? entry.find(key) : entry.end();
    return found == entry.end() ? Nothing : *found;
}

} // namespace

std::string detail::text_at(const Json& entry, const char* key)
{
    const Json& found = at(entry, key);
    return found.is_string() ? found.get<std::string>() : "";
}

Value detail::value_at(const Json& entry, const char* key)
{
    return to_value(at(entry, key));
}

double detail::number_at(const Json& entry, const char* key)
{
    const Json& found = at(entry, key);
    return found.is_number() ? found.get<double>() : 0;
}

Replayer::Replayer(Platform& platform, const RecordedEntries& entries, EventSink& sink, EventClock& clock)
    : platform_(platform), entries_(entries), sink_(sink), clock_(clock),
      trace_(clock, TraceFormat::Json, [this](std::string_view line) { line_ = line.substr(0, line.size() - 1); })
{
}

Replayer::~Replayer() = default;

bool Replayer::has_more() const
{
    return difference_.empty() && next_ < entries_.all.size();
}

void Replayer::run()
{
    for (pass_machine_lines(); has_more(); pass_machine_lines()) {
        if (entries_.all[next_].contains("in"))
            deliver();
        else
            differ("the session ends its event here, the recorded one goes on with " + here());
    }
}

/// Delivers what arrived during a call of the machine.
void Replayer::pass(std::string_view during)
{
    for (pass_machine_lines(); has_more() && text_at(entries_.all[next_], "during") == during; pass_machine_lines())
        deliver();
}

void Replayer::pass_machine_lines()
{
    for (; has_more() && entries_.all[next_].contains("machine"); ++next_) {
        ++lines_;
        pass_machine_line(value_at(entries_.all[next_], "line"));
    }
}

/// The machine's own news. They pass through the platform, so that a tag, which follows its events, receives them too.
void Replayer::pass_machine_line(const Value& line)
{
    const NSDictionary fields = line.dictionary();
    const auto text = [&](const char* key) -> const std::string& { return fields[key].text(); };
    clock_.seconds = fields["t"].doubleValue();
    machine_speaks_ = true;
    if (text("what") == "hit")
        platform_.emit(event::ServerHit{text("method"), text("url")});
    else if (text("what") == "player")
        platform_.emit(event::PlayerFailed{text("reason")});
    else if (text("what") == "web" && text("do") == "failed")
        platform_.emit(event::PageFailed{text("url"), text("reason")});
    else if (text("what") == "web" && text("do") == "refused")
        platform_.emit(event::PageRefused{text("kind"), text("detail"), fields["times"].integer()});
    else
        differ("expected a line that the machine writes, got " + here());
    machine_speaks_ = false;
}

void Replayer::deliver()
{
    const Json& entry = entries_.all[next_];
    const std::string kind = text_at(entry, "in");
    const Value what = value_at(entry, "what");
    std::shared_ptr<const Delivery> deliver;
    if (entry.contains("id")) {
        const auto source = sources_.find(static_cast<SourceId>(value_at(entry, "id").integer()));
        if (source == sources_.end())
            return differ("the session no longer has what delivers " + here());
        deliver = source->second.deliver;
        if (!source->second.repeats)
            sources_.erase(source);
    } else {
        const auto known = kinds_.find(kind);
        if (known == kinds_.end())
            return differ("expected an entry that this program knows, got " + here());
        deliver = std::make_shared<const Delivery>(known->second);
    }
    ++next_;
    platform_.dispatch([&] { (*deliver)(what); });
}

void Replayer::differ(const std::string& what)
{
    if (!difference_.empty())
        return;
    place_ = next_;
    difference_ = what;
}

std::string Replayer::here() const
{
    return next_ < entries_.all.size() ? shown(entries_.all[next_]) : "nothing";
}

Value Replayer::read(std::string_view name, const Value& of, const std::function<Value()>&)
{
    pass(name);
    if (!has_more())
        return {};
    const Json& entry = entries_.all[next_];
    if (text_at(entry, "read") != name || at(entry, "of") != as_read(of)) {
        Json asked{{"read", name}};
        if (of)
            asked["of"] = as_read(of);
        differ("the session asks " + shown(asked) + ", the recorded one goes on with " + here());
        return {};
    }
    ++next_;
    return value_at(entry, "value");
}

void Replayer::call(std::string_view name, const std::function<void()>&)
{
    pass(name);
}

Tape::SourceId Replayer::open(std::string_view kind, const Value& of, bool repeats, Delivery deliver)
{
    pass_machine_lines();
    if (!has_more())
        return 0;
    const Json& entry = entries_.all[next_];
    if (text_at(entry, "open") != kind || at(entry, "of") != as_read(of)) {
        Json asked{{"open", kind}};
        if (of)
            asked["of"] = as_read(of);
        differ("the session opens " + shown(asked) + ", the recorded one goes on with " + here());
        return 0;
    }
    const auto id = static_cast<SourceId>(value_at(entry, "id").integer());
    ++next_;
    sources_[id] = {repeats, std::make_shared<const Delivery>(std::move(deliver))};
    return id;
}

void Replayer::close(SourceId source)
{
    // What it retains is released last, since that may close further sources.
    std::map<SourceId, Source> gone;
    if (source == 0)
        gone.swap(sources_);
    else
        gone.insert(sources_.extract(source));
}

void Replayer::receive(const Event& event)
{
    if (machine_speaks_)
        return sink_.receive(event);
    pass_machine_lines();
    if (!difference_.empty())
        return;
    const Json& entry = has_more() ? entries_.all[next_] : Nothing;
    const Json& line = at(entry, "line");
    if (line.is_object())
        clock_.seconds = detail::number_at(line, "t");
    line_.clear();
    trace_.receive(event);
    // Some events have no line.
    if (line_.empty())
        return sink_.receive(event);
    if (!has_more())
        return;
    if (Json::parse(line_) != line) {
        differ("the session traces " + shortened(line_, 160, "...") + ", the recorded one goes on with " + here());
        return;
    }
    ++next_;
    ++lines_;
    sink_.receive(event);
}

} // namespace qoro
