// Speed of the search of an ad's courses, beside a plain breadth-first search that recognises no state.
// explore_bench SCENARIO [SESSIONS] [DEPTH]: a line for each. Seconds are processor time.

#include "workbench/explore/Invariants.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <sstream>
#include <string>

namespace
{

void measure(const char* name, const qoro::SearchSetup& setup, const qoro::SearchOptions& options, bool rules)
{
    const std::clock_t began = std::clock();
    const qoro::SearchResult result = rules ? qoro::explore_ad(setup, options) : qoro::search(setup.run, options);
    const double seconds = static_cast<double>(std::clock() - began) / CLOCKS_PER_SEC;
    std::printf("%-24s %8zu sessions in %6.2f s, %7.0f/s; %8zu states, %7.0f/s; %8zu merged; all of %zu moves; %zu "
                "sessions for one more\n",
                name, result.sessions, seconds, static_cast<double>(result.sessions) / seconds, result.states,
                static_cast<double>(result.states) / seconds, result.merged, result.complete_depth,
                result.next_sessions);
}

} // namespace

int main(int count, char** arguments)
{
    if (count < 2) {
        std::fputs("explore_bench SCENARIO [SESSIONS] [DEPTH]\n", stderr);
        return 2;
    }
    std::ostringstream text;
    text << std::ifstream(arguments[1]).rdbuf();
    const qoro::SearchSetup setup = qoro::search_setup(qoro::ScenarioText(text.str(), arguments[1]), false);
    qoro::SearchOptions options;
    options.sessions = count > 2 ? std::strtoull(arguments[2], nullptr, 10) : 20'000;
    options.depth = count > 3 ? std::strtoull(arguments[3], nullptr, 10) : 3;
    options.traps = false;
    measure("with recognition", setup, options, false);
    measure("and the rules of check", setup, options, true);
    options.recognise = false;
    measure("without", setup, options, false);
}
