#pragma once

#include <bitset>
#include <cstdlib>
#include <type_traits>
#include <utility>

// Run-time support for mutated sources. A mutant is a number. The one that the environment selects is active; all
// others behave like the original source. One source location may have several mutants, numbered consecutively.

namespace qoro::mutation
{

inline constexpr int MostMutants = 8192;

/// The active mutant; 0 for none.
inline int chosen()
{
    static const int number = [] {
        const char* const name = std::getenv("QORO_MUTANT");
        return name ? std::atoi(name) : 0;
    }();
    return number;
}

/// The mutants whose locations the program has executed.
inline std::bitset<MostMutants>& reached()
{
    static std::bitset<MostMutants> places;
    return places;
}

/// Whether a mutant is active. Thread-safe: a test's threads may execute the same location.
inline bool alive(int mutant)
{
    reached().set(static_cast<std::size_t>(mutant));
    return chosen() == mutant;
}

template <class A, class B>
bool less(int mutant, const A& a, const B& b)
{
    if (alive(mutant))
        return a <= b;
    return alive(mutant + 1) ? a >= b : a < b;
}

template <class A, class B>
bool less_equal(int mutant, const A& a, const B& b)
{
    if (alive(mutant))
        return a < b;
    return alive(mutant + 1) ? a > b : a <= b;
}

template <class A, class B>
bool greater(int mutant, const A& a, const B& b)
{
    if (alive(mutant))
        return a >= b;
    return alive(mutant + 1) ? a <= b : a > b;
}

template <class A, class B>
bool greater_equal(int mutant, const A& a, const B& b)
{
    if (alive(mutant))
        return a > b;
    return alive(mutant + 1) ? a < b : a >= b;
}

template <class A, class B>
bool equal(int mutant, const A& a, const B& b)
{
    return (a == b) != alive(mutant);
}

template <class A, class B>
bool not_equal(int mutant, const A& a, const B& b)
{
    return (a == b) == alive(mutant);
}

template <class A, class B>
auto plus(int mutant, const A& a, const B& b) -> decltype(a + b)
{
    return alive(mutant) ? a - b : a + b;
}

template <class A, class B>
auto minus(int mutant, const A& a, const B& b) -> decltype(a - b)
{
    return alive(mutant) ? a + b : a - b;
}

template <class A, class B>
auto times(int mutant, const A& a, const B& b) -> decltype(a * b)
{
    return alive(mutant) ? a / b : a * b;
}

template <class A, class B>
auto divided(int mutant, const A& a, const B& b) -> decltype(a / b)
{
    return alive(mutant) ? a * b : a / b;
}

template <class A>
auto negative(int mutant, const A& a) -> decltype(-a)
{
    return alive(mutant) ? a : -a;
}

template <class Left, class Right>
bool both(int mutant, const Left& left, const Right& right)
{
    if (alive(mutant))
        return left() || right();
    if (alive(mutant + 1))
        return left();
    if (alive(mutant + 2))
        return right();
    return left() && right();
}

template <class Left, class Right>
bool either(int mutant, const Left& left, const Right& right)
{
    if (alive(mutant))
        return left() && right();
    if (alive(mutant + 1))
        return left();
    if (alive(mutant + 2))
        return right();
    return left() || right();
}

/// A condition or a boolean: negated.
inline bool flip(int mutant, bool truth)
{
    return truth != alive(mutant);
}

/// A number, a character or an enumerator: incremented.
template <class T>
T constant(int mutant, T value)
{
    if (!alive(mutant))
        return value;
    if constexpr (std::is_enum_v<T>)
        return static_cast<T>(static_cast<long long>(value) + 1);
    else
        return static_cast<T>(value + T{1});
}

/// A text: replaced.
inline const char* text(int mutant, const char* value)
{
    return alive(mutant) ? "another text" : value;
}

/// A sequence of statements. Mutants: each one removed, then each one swapped with its successor.
template <class... Statements>
void sequence(int mutant, const Statements&... statements)
{
    constexpr int count = sizeof...(statements);
    const auto run = [&](int wanted) {
        int at = 0;
        ((at++ == wanted ? statements() : void()), ...);
    };
    int left_out = -1;
    int changed = -1;
    for (int i = 0; i < count; ++i) {
        if (alive(mutant + i))
            left_out = i;
        if (i + 1 < count && alive(mutant + count + i))
            changed = i;
    }
    for (int i = 0; i < count; ++i) {
        if (i == left_out)
            continue;
        run(i == changed ? i + 1 : i == changed + 1 && changed >= 0 ? changed : i);
    }
}

} // namespace qoro::mutation
