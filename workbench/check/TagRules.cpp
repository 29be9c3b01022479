#include "workbench/check/CheckedSession.h"
#include "workbench/check/RuleFunctions.h"

#include <algorithm>

namespace qoro
{

std::vector<Suspicion> tag_without_ad(const CheckedSession& session)
{
    std::vector<Suspicion> suspicions;
    for (const CheckedLine& line : session.lines())
        if (line.what == "vast" && (line.act == "noAd" || line.act == "failed"))
            suspicions.push_back(
                {.sentence = (line.act == "noAd" ? "the tag leads to no ad: " : "an ad of the tag cannot be played: ") +
                             line.why,
                 .path = line.path,
                 .key = line.act + line.path + line.why,
                 .at = line.at});
    return suspicions;
}

std::vector<Suspicion> tag_ignored(const CheckedSession& session)
{
    std::vector<Suspicion> suspicions;
    for (const CheckedLine& line : session.lines())
        if (line.what == "vast" && line.act == "ignored")
            suspicions.push_back({.sentence = line.name + " has no effect: " + line.why,
                                  .path = line.path,
                                  .key = line.path + line.why,
                                  .at = line.at});
    return suspicions;
}

} // namespace qoro
