// Runs a fuzz target over each file of its corpus and over random mutants of them, the same ones in each run, without
// libFuzzer: fuzz_NAME DIRECTORY MUTANTS

#include "tests/fuzz/FuzzTarget.h"
#include "tests/fuzz/Mutator.h"

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
/// Written before the mutant runs, to reproduce a crash.
constexpr const char* LastMutant = "last-mutant";
/// Maximum number of bytes that a mutant has more than the file of the corpus.
constexpr std::size_t Growth = 64;

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

void run(const std::string& input)
{
    const auto begin = std::chrono::steady_clock::now();
    qoro::fuzz::run_input(input);
    qoro::fuzz::require(std::chrono::steady_clock::now() - begin < Longest, "an input takes less than 5 seconds");
}

std::string mutant_of(std::string text, unsigned seed)
{
    const std::size_t size = text.size();
    text.resize(size + Growth);
    auto* const data = reinterpret_cast<std::uint8_t*>(text.data());
    // Null where a target has no mutator of its own.
    text.resize(LLVMFuzzerCustomMutator ? LLVMFuzzerCustomMutator(data, size, text.size(), seed)
                                        : LLVMFuzzerMutate(data, size, text.size()));
    return text;
}

} // namespace

int main(int argc, char** argv)
{
    qoro::fuzz::require(argc == 3, "the arguments are the corpus' directory and the number of mutants");
    const std::vector<std::filesystem::path> files = files_in(argv[1]);
    qoro::fuzz::require(!files.empty(), "the corpus has files");
    for (const std::filesystem::path& file : files) {
        // Printed before the run, so that the last line names the input after a crash.
        std::cout << file.string() << std::endl;
        run(content_of(file));
    }
    const unsigned mutants = static_cast<unsigned>(std::stoul(argv[2]));
    std::cout << "mutants; the last one is saved as " << std::filesystem::absolute(LastMutant).string() << std::endl;
    for (unsigned seed = 0; seed < mutants; ++seed) {
        const std::string mutant = mutant_of(content_of(files[seed % files.size()]), seed);
        std::ofstream(LastMutant, std::ios::binary) << mutant;
        run(mutant);
    }
    std::filesystem::remove(LastMutant);
}
