#include "tests/support/RecordingPlatform.h"

#include "platform/Numbers.h"

namespace qoro::test
{

namespace
{

std::string text_of(const Value& value)
{
    if (value.is_null())
        return "null";
    if (value.is_array()) {
        std::string list;
        for (const Value& entry : value.array())
            list += (list.empty() ? "" : ",") + text_of(entry);
        return "[" + list + "]";
    }
    std::string text = value.stringValue().text();
    for (const NSDictionary::Entry& entry : value.dictionary())
        text += (text.empty() ? "" : ",") + entry.key + ":" + text_of(entry.value);
    return text;
}

std::string text_of(const Field::Content& content)
{
    struct Writer {
        std::string operator()(std::nullptr_t) const { return "null"; }
        std::string operator()(bool flag) const { return flag ? "true" : "false"; }
        std::string operator()(std::int64_t number) const { return std::to_string(number); }
        std::string operator()(double number) const { return shortest_text(number); }
        std::string operator()(float number) const { return shortest_text(number); }
        std::string operator()(std::string_view text) const { return std::string(text); }
        std::string operator()(const Value* value) const { return text_of(*value); }
    };
    return std::visit(Writer(), content);
}

struct CountedPlayer : ScriptedPlayer {
    CountedPlayer(PlayerListener& news, RecordingPlatform& on_platform) : ScriptedPlayer(news), platform(on_platform) {}
    ~CountedPlayer() override
    {
        ++platform.players_gone;
        if (platform.player == this)
            platform.player = nullptr;
    }
    RecordingPlatform& platform;
};

struct CountedWebEngine : RecordingWebEngine {
    explicit CountedWebEngine(RecordingPlatform& on_platform) : platform(on_platform) {}
    ~CountedWebEngine() override
    {
        if (platform.web == this)
            platform.web = nullptr;
    }
    RecordingPlatform& platform;
};

} // namespace

std::unique_ptr<PlayerEngine> RecordingPlatform::make_player(const NSURL&, PlayerListener& listener)
{
    auto made = std::make_unique<CountedPlayer>(listener, *this);
    player = made.get();
    return made;
}

std::unique_ptr<WebEngine> RecordingPlatform::make_web_engine(WebListener& listener, PageKind kind)
{
    auto made = std::make_unique<CountedWebEngine>(*this);
    made->listener = &listener;
    made->kind = kind;
    web = made.get();
    return made;
}

std::shared_ptr<const DecodedImage> RecordingPlatform::decode(const NSData& bytes)
{
    ++decodings;
    return bytes.view().starts_with("PNG") ? std::make_shared<const Picture>() : nullptr;
}

void RecordingPlatform::receive(const Event& event)
{
    describe(event, [this](std::string_view what, std::span<const Field> fields) {
        std::string line(what);
        for (const Field& field : fields)
            line += " " + std::string(field.key) + "=" + text_of(field.content);
        transcript.push_back(line);
    });
}

} // namespace qoro::test
