#include "tests/mutation/Mutant.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>

// Records the mutants' locations that each test executes in the file QORO_REACH: one line per test, with its name, its
// milliseconds and the mutants' numbers. Locations executed before the first test are listed under "start".

namespace qoro::mutation
{

namespace
{

class ReachListener : public testing::EmptyTestEventListener
{
public:
    explicit ReachListener(const std::string& path) : file_(path) {}

    void OnTestProgramStart(const testing::UnitTest&) override { write("start", 0); }

    void OnTestStart(const testing::TestInfo&) override { reached().reset(); }

    void OnTestEnd(const testing::TestInfo& test) override
    {
        write(std::string(test.test_suite_name()) + "." + test.name(), test.result()->elapsed_time());
    }

private:
    void write(const std::string& name, long long milliseconds)
    {
        file_ << name << ' ' << milliseconds;
        for (std::size_t mutant = 1; mutant < reached().size(); ++mutant) {
            if (reached().test(mutant))
                file_ << ' ' << mutant;
        }
        file_ << '\n' << std::flush;
    }

    std::ofstream file_;
};

const bool listening = [] {
    if (const char* const path = std::getenv("QORO_REACH"))
        testing::UnitTest::GetInstance()->listeners().Append(new ReachListener(path));
    return true;
}();

} // namespace

} // namespace qoro::mutation
