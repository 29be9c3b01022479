#include "tests/app/ShellRun.h"

#include "Places.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

// The hash of the sources, by which a file of sessions is known as another build's.

namespace qoro::test
{

namespace
{

/// A folder with two sources.
std::filesystem::path sources(const std::string& name)
{
    const std::filesystem::path root = std::filesystem::path(testing::TempDir()) / name;
    std::filesystem::remove_all(root);
    std::filesystem::create_directories(root / "rules");
    std::ofstream(root / "rules/one.cpp") << "int one;\n";
    std::ofstream(root / "rules/two.h") << "int two;\n";
    return root;
}

/// The line of the generated source that has the hash.
std::string hash_of(const std::filesystem::path& root)
{
    const std::string output = (root / "out.cpp").string();
    const ShellResult made =
        run_shell("cmake -D ROOT='" + root.string() + "' -D FOLDERS=rules -D OUTPUT='" + output +
                  "' -D HEADER=h -D FUNCTION=f -P '" QORO_SOURCE_DIR "/cmake/FingerprintFiles.cmake' && grep return '" +
                  output + "'");
    EXPECT_EQ(made.status, 0) << made.errors;
    return made.output;
}

} // namespace

TEST(Fingerprint, ChangesWithTheSourcesAndNotWithTheirPlace)
{
    const auto root = sources("fingerprint");
    const std::string hash = hash_of(root);
    EXPECT_EQ(hash_of(sources("fingerprint-elsewhere")), hash);
    std::ofstream(root / "rules/one.cpp", std::ios::app) << "int more;\n";
    const std::string changed = hash_of(root);
    EXPECT_NE(changed, hash);
    std::filesystem::rename(root / "rules/two.h", root / "rules/three.h");
    EXPECT_NE(hash_of(root), changed);
}

} // namespace qoro::test
