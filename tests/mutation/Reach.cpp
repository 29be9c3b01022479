#include "tests/mutation/Mutant.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>

// Writes, test by test, which mutants' places it passed through: into the file that QORO_REACH names, a line each with
// the test's name, its milliseconds and the mutants' numbers. What was passed before the first test stands under
// "start".

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
