#include "tests/e2e/ScreenReader.h"

#include <atspi/atspi.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <thread>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/asan_interface.h>
#include <sanitizer/lsan_interface.h>

/// libatspi loses a path now and then when a control goes while it is being read. Only a slow look shows whose memory
/// it is; the programs that the tests start are not slowed down by it.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libatspi\n";
}
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options()
{
    return "fast_unwind_on_malloc=0";
}
#endif

namespace qoro::test
{

namespace
{

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds Glance{50};

struct Unref {
    void operator()(void* object) const { g_object_unref(object); }
};
using Accessible = std::unique_ptr<AtspiAccessible, Unref>;

std::string taken(char* text)
{
    std::string words = text ? text : "";
    g_free(text);
    return words;
}

std::vector<Accessible> children_of(AtspiAccessible* parent)
{
    std::vector<Accessible> children;
    const int count = atspi_accessible_get_child_count(parent, nullptr);
    for (int n = 0; n < count; ++n)
        if (AtspiAccessible* child = atspi_accessible_get_child_at_index(parent, n, nullptr))
            children.emplace_back(child);
    return children;
}

/// Null as long as the program has not shown itself on the bus.
Accessible program(int process)
{
    static const bool started = atspi_init() == 0;
    if (!started)
        return nullptr;
    const Accessible desktop(atspi_get_desktop(0));
    for (Accessible& application : children_of(desktop.get()))
        if (atspi_accessible_get_process_id(application.get(), nullptr) == static_cast<unsigned>(process))
            return std::move(application);
    return nullptr;
}

void walk(AtspiAccessible* thing, const std::function<void(AtspiAccessible*)>& meet)
{
    meet(thing);
    for (const Accessible& child : children_of(thing))
        walk(child.get(), meet);
}

Spoken spoken(AtspiAccessible* thing)
{
    Spoken says{.role = taken(atspi_accessible_get_role_name(thing, nullptr)),
                .name = taken(atspi_accessible_get_name(thing, nullptr))};
    const std::unique_ptr<AtspiStateSet, Unref> states(atspi_accessible_get_state_set(thing));
    const auto has = [&](AtspiStateType state) { return atspi_state_set_contains(states.get(), state) != 0; };
    says.focusable = has(ATSPI_STATE_FOCUSABLE);
    says.focused = has(ATSPI_STATE_FOCUSED);
    says.pressed = has(ATSPI_STATE_PRESSED);
    says.enabled = has(ATSPI_STATE_SENSITIVE);
    return says;
}

bool waited_until(const std::function<bool()>& comes, double seconds)
{
    const auto until = Clock::now() + std::chrono::duration<double>(seconds);
    while (!comes()) {
        if (Clock::now() >= until)
            return false;
        std::this_thread::sleep_for(Glance);
    }
    return true;
}

} // namespace

std::vector<Spoken> ScreenReader::everything()
{
    std::vector<Spoken> told;
    if (const Accessible found = program(process_))
        walk(found.get(), [&](AtspiAccessible* thing) { told.push_back(spoken(thing)); });
    return told;
}

std::optional<Spoken> ScreenReader::find(const std::string& role, const std::string& name, double seconds)
{
    std::optional<Spoken> found;
    waited_until(
        [&] {
            for (const Spoken& each : everything())
                if (each.role == role && each.name == name)
                    found = each;
            return found.has_value();
        },
        seconds);
    return found;
}

bool ScreenReader::loses(const std::string& role, const std::string& name, double seconds)
{
    return waited_until(
        [&] {
            const std::vector<Spoken> told = everything();
            return std::ranges::none_of(told,
                                        [&](const Spoken& each) { return each.role == role && each.name == name; });
        },
        seconds);
}

bool ScreenReader::use(const std::string& name)
{
    bool used = false;
    if (const Accessible found = program(process_))
        walk(found.get(), [&](AtspiAccessible* thing) {
            if (used || taken(atspi_accessible_get_name(thing, nullptr)) != name)
                return;
            const std::unique_ptr<AtspiAction, Unref> action(atspi_accessible_get_action_iface(thing));
            used = action && atspi_action_do_action(action.get(), 0, nullptr);
        });
    return used;
}

} // namespace qoro::test
