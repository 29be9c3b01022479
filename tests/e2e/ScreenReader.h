#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace qoro::test
{

/// One object of a program's windows as assistive technology sees it.
struct Spoken {
    std::string role;
    std::string name;
    bool focusable = false;
    bool focused = false;
    bool pressed = false;
    /// Whether it can be used now.
    bool enabled = false;

    friend bool operator==(const Spoken&, const Spoken&) = default;
};

/// Reads a program's windows through the accessibility bus, as a screen reader does.
class ScreenReader
{
public:
    /// @param process PID of the program
    explicit ScreenReader(int process) : process_(process) {}

    /// How to compare names.
    enum Match { Whole, Beginning };

    /// All objects announced now, in tree order. Slow: each object takes bus calls.
    std::vector<Spoken> everything();
    /// The object with a role and name; absent if it is not announced now.
    std::optional<Spoken> announces(const std::string& role, const std::string& name, Match match = Whole);
    /// Waits for an object with a role and name; absent on timeout.
    std::optional<Spoken> find(const std::string& role, const std::string& name, Match match = Whole);
    /// Waits until no object with a role and name is announced.
    bool loses(const std::string& role, const std::string& name);
    /// Name of the object with the keyboard focus; empty for none.
    std::string focused();
    /// Waits until the named object has the keyboard focus.
    bool focuses(const std::string& name);
    /// Performs the action of the named control; returns whether the control exists.
    bool use(const std::string& name);

private:
    int process_;
};

} // namespace qoro::test
