#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace qoro::test
{

/// One thing of a program's windows as assistive technology meets it.
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

/// Reads the windows of a program through the accessibility bus, as a screen reader does.
class ScreenReader
{
public:
    /// @param process the program's number
    explicit ScreenReader(int process) : process_(process) {}

    /// How a name is compared.
    enum Match { Whole, Beginning };

    /// Everything that is announced now, in the tree's order. Slow: each thing is asked over the bus.
    std::vector<Spoken> everything();
    /// Something of a role and a name, if it is announced now.
    std::optional<Spoken> tells(const std::string& role, const std::string& name, Match match = Whole);
    /// Waits for something of a role and a name; absent when it did not come.
    std::optional<Spoken> find(const std::string& role, const std::string& name, Match match = Whole);
    /// Waits until nothing of a role and a name is told of any more.
    bool loses(const std::string& role, const std::string& name);
    /// The name of what has the keyboard; empty for nothing.
    std::string focused();
    /// Waits until something of a name has the keyboard.
    bool focuses(const std::string& name);
    /// Does what a control of a name does. Answers whether there was one.
    bool use(const std::string& name);

private:
    int process_;
};

} // namespace qoro::test
