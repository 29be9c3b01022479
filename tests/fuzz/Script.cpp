// Messages of the creative's script: a JSON list of lists, each a command and its arguments.

#include "formats/JsonText.h"
#include "tests/fuzz/FuzzSession.h"
#include "tests/fuzz/FuzzTarget.h"
#include "tests/support/AdSession.h"

#include <algorithm>
#include <string>
#include <vector>

namespace qoro
{

namespace
{

constexpr std::size_t MostMessages = 40;

void say(AdSession& session, const NSArray& message)
{
    const NSArray arguments(std::vector<Value>(std::min(message.begin() + 1, message.end()), message.end()));
    fuzz::shorten(arguments);
    const ScriptAnswer answer = session.script_says(message[0].string().text(), arguments);
    fuzz::require(!answer.error || answer.value.is_null(), "a refused command has no result");
    std::string json;
    append_json(json, answer.value);
    fuzz::require_json(json);
}

void say_all(const NSArray& messages, const World& world)
{
    const bool by_news = world.video.manual;
    AdSession session(world);
    session.open();
    if (by_news)
        session.plays();
    session.let_pass(1);
    for (std::size_t i = 0; i < std::min(messages.count(), MostMessages); ++i) {
        if (const NSArray message = messages[i].array(); message.count() > 0)
            say(session, message);
        session.let_pass(0.3);
    }
    session.let_pass(5);
    session.tap(session->btnClose);
    session.let_pass(5);
}

} // namespace

void fuzz::run_input(std::string_view input)
{
    const NSArray messages = values_of(input);
    say_all(messages, AdSession::manual_world());
    World driven_by_itself;
    driven_by_itself.video.duration = 4;
    say_all(messages, driven_by_itself);
}

} // namespace qoro
