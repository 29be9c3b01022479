#include "record/Recorder.h"

#include "formats/JsonText.h"

#include <utility>

namespace qoro
{

namespace
{

/// Sets a variable for a scope.
template <typename T>
class Set
{
public:
    Set(T& variable, T value) : variable_(variable), before_(std::exchange(variable, value)) {}
    ~Set() { variable_ = before_; }
    Set(const Set&) = delete;
    Set& operator=(const Set&) = delete;

private:
    T& variable_;
    const T before_;
};

void append_pair(std::string& out, const char* key, const Value& value)
{
    out += ",\"";
    out += key;
    out += "\":";
    append_json(out, value);
}

} // namespace

Recorder::Recorder(Platform& platform, RecordSink sink)
    : platform_(platform), sink_(std::move(sink)), trace_(clock_, TraceFormat::Json, [this](std::string_view line) {
          std::string entry = R"({"line":)";
          entry += line.substr(0, line.size() - 1);
          // Of the machine's own, which the session does not bring about.
          entry += inside_ ? "}" : R"(,"machine":true})";
          write(entry);
      })
{
}

Recorder::~Recorder() = default;

void Recorder::begin(std::string_view head, Redaction redaction, const MainLoop& machine)
{
    machine_ = &machine;
    redaction_ = std::move(redaction);
    sink_.begin(redaction_.of(head));
    records_ = true;
    platform_.shared<InboundHook>().watch = this;
    platform_.set_event_sink(this);
}

void Recorder::end()
{
    if (!std::exchange(records_, false))
        return;
    platform_.shared<InboundHook>().watch = nullptr;
}

void Recorder::write(std::string_view entry)
{
    if (records_)
        sink_.add(redaction_.of(entry));
}

void Recorder::host(std::string_view what, const std::function<void()>& work, const Value& of)
{
    NSDictionary content{{"do", what}};
    if (of)
        content.setObject(of, "of");
    arrive("host", 0, content, work);
}

void Recorder::outside(const std::function<void()>& work)
{
    call("outside", work);
}

Value Recorder::read(std::string_view name, const Value& of, const std::function<Value()>& real)
{
    if (!inside_)
        return real();
    Value value;
    {
        const Set during(during_, name);
        const Set leaves(inside_, false);
        value = real();
    }
    entry_ = R"({"read":)";
    append_json_text(entry_, name);
    if (of)
        append_pair(entry_, "of", of);
    append_pair(entry_, "value", value);
    entry_ += '}';
    write(entry_);
    return value;
}

void Recorder::call(std::string_view name, const std::function<void()>& real)
{
    const Set during(during_, inside_ ? name : during_);
    const Set leaves(inside_, false);
    real();
}

Tape::SourceId Recorder::open(std::string_view kind, const Value& of, bool, Delivery)
{
    const SourceId id = next_source_++;
    if (!inside_)
        return id;
    entry_ = R"({"open":)";
    append_json_text(entry_, kind);
    append_pair(entry_, "id", static_cast<std::int64_t>(id));
    if (of)
        append_pair(entry_, "of", of);
    entry_ += '}';
    write(entry_);
    return id;
}

void Recorder::arrive(std::string_view kind, SourceId source, const Value& what, const std::function<void()>& deliver)
{
    if (!records_ || inside_)
        return deliver();
    entry_ = R"({"in":)";
    append_json_text(entry_, kind);
    entry_ += R"(,"t":)";
    append_json(entry_, machine_->now());
    if (source != 0)
        append_pair(entry_, "id", static_cast<std::int64_t>(source));
    if (what)
        append_pair(entry_, "what", what);
    if (!during_.empty())
        append_pair(entry_, "during", during_);
    entry_ += '}';
    write(entry_);
    const Set during(during_, std::string_view());
    const Set enters(inside_, true);
    platform_.dispatch(deliver);
}

void Recorder::come_in(std::string_view kind, const std::function<Value()>& describe, const std::function<void()>& work)
{
    // What the session causes itself is not recorded, so it is not described: that would ask the ports for values that
    // a replay does not have.
    if (!records_ || inside_)
        return work();
    arrive(kind, 0, describe(), work);
}

void Recorder::receive(const Event& event)
{
    clock_.seconds = machine_->now();
    trace_.receive(event);
    if (next_)
        next_->receive(event);
}

} // namespace qoro
