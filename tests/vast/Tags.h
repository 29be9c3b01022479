#pragma once

#include "simulator/SimulatedPlatform.h"
#include "vast/Resolver.h"

#include <optional>
#include <string>

namespace qoro::test
{

/// Resolves tags in virtual time, with a network that the test defines.
class Tags
{
public:
    /// Answers by address; any other address answers with an empty body.
    World world;
    vast::ResolverOptions options;

    /// Lets http://ads.example/NAME answer.
    void serve(const std::string& name, const std::string& body, double after = 0);
    vast::Resolution resolve(const std::string& address);
    vast::Resolution resolve_text(const std::string& text, const std::string& address = "http://ads.example/tag.xml");

    /// How often the last tag called back.
    int calls = 0;
    /// Seconds that the last tag took.
    double took = 0;
    /// What the last tag requested.
    std::vector<std::string> requests;

private:
    template <typename Begin>
    vast::Resolution run(Begin&& begin);
};

/// The text of a file of the corpus.
std::string document_text(const std::string& path);

/// A document with these ads.
std::string vast_of(const std::string& ads);
/// An ad that can be played.
std::string inline_ad(const std::string& id, const std::string& attributes = "");
/// An ad that leads to another document.
std::string wrapper_of(const std::string& address, const std::string& attributes = "");

} // namespace qoro::test
