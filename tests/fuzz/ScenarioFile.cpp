// A scenario file, then its session.

#include "tests/fuzz/FuzzSession.h"
#include "tests/fuzz/FuzzTarget.h"

namespace qoro
{

void fuzz::run_input(std::string_view input)
{
    try {
        run_session(read_scenario(input, "scenario.json"));
    } catch (const InputError& error) {
        require_one_line(error);
    }
}

} // namespace qoro
