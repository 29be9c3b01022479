#include "tests/vast/Corpus.h"

#include "Places.h"
#include "tests/vast/Tags.h"

#include <algorithm>
#include <filesystem>

namespace qoro::test
{

namespace
{

using Json = nlohmann::json;
namespace fs = std::filesystem;

const fs::path& documents()
{
    static const fs::path folder = fs::path(QORO_SOURCE_DIR) / "tests/vast/documents";
    return folder;
}

} // namespace

std::vector<std::string> corpus_names()
{
    std::vector<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(documents()))
        if (entry.path().extension() == ".xml" && entry.path().parent_path().filename() != "net")
            names.push_back(fs::relative(entry.path(), documents()).replace_extension().string());
    std::ranges::sort(names);
    return names;
}

std::string corpus_document(const std::string& name)
{
    return document_text((documents() / (name + ".xml")).string());
}

Json corpus_expectation(const std::string& name)
{
    return Json::parse(document_text((documents() / (name + ".json")).string()));
}

World corpus_network(const std::string& name)
{
    World world;
    const fs::path folder = (documents() / name).parent_path();
    if (!fs::exists(folder / "net"))
        return world;
    for (const auto& entry : fs::directory_iterator(folder / "net"))
        world.net["http://ads.example/" + entry.path().filename().string()].body = document_text(entry.path().string());
    if (!fs::exists(folder / "net.json"))
        return world;
    const Json others = Json::parse(document_text((folder / "net.json").string()));
    for (const auto& [address, answer] : others.items()) {
        NetAnswer& other = world.net[address];
        other.ok = !answer.contains("fail");
        other.error = answer.value("fail", "");
        other.after = answer.value("after", 0.0);
        if (answer.contains("file"))
            other.body = document_text((folder / "net" / (answer["file"].get<std::string>() + ".xml")).string());
    }
    return world;
}

std::string whole_corpus()
{
    std::string all;
    for (const auto& entry : fs::recursive_directory_iterator(documents()))
        if (entry.path().extension() == ".xml")
            all += document_text(entry.path().string());
    return all;
}

std::string test_name(std::string name)
{
    std::ranges::replace_if(
        name, [](char c) { return c == '/' || c == '-' || c == '.'; }, '_');
    return name;
}

} // namespace qoro::test
