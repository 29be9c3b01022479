// Runs a fuzz target once over each file of its corpus, without libFuzzer: fuzz_NAME DIRECTORY

#include "tests/fuzz/FuzzTarget.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

namespace
{

/// Far longer than an input of a few kilobytes takes, even on a busy machine.
constexpr std::chrono::seconds Longest{5};

std::vector<std::filesystem::path> files_in(const char* directory)
{
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(directory))
        files.push_back(entry.path());
    std::ranges::sort(files);
    return files;
}

std::string content_of(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    qoro::fuzz::require(file.is_open(), "a file of the corpus can be read");
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace

int main(int argc, char** argv)
{
    qoro::fuzz::require(argc == 2, "the corpus' directory is the only argument");
    const std::vector<std::filesystem::path> files = files_in(argv[1]);
    qoro::fuzz::require(!files.empty(), "the corpus has files");
    for (const std::filesystem::path& file : files) {
        // Printed before the run, so that the last line names the input after a crash.
        std::cout << file.string() << std::endl;
        const std::string input = content_of(file);
        const auto begin = std::chrono::steady_clock::now();
        qoro::fuzz::run_input(input);
        qoro::fuzz::require(std::chrono::steady_clock::now() - begin < Longest, "an input takes less than 5 seconds");
    }
}
