#include "app/SearchState.h"

#include "formats/InputError.h"
#include "platform/Numbers.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <utility>

namespace qoro
{

namespace
{

constexpr std::chrono::seconds Interval{10};
/// Part of the time that may be spent on writing: one in so many.
constexpr int WritingShare = 20;

} // namespace

std::string difference_of(const SearchIdentity& wanted, const SearchIdentity& found)
{
    if (found.program != wanted.program)
        return "it was written by version " + found.program + ", this is " + wanted.program;
    if (found.ad != wanted.ad)
        return "it is of the ad " + found.ad + ", not of " + wanted.ad;
    if (found.number != wanted.number)
        return "it is of another ad of the tag";
    if (found.device != wanted.device)
        return "its device is " + (found.device.empty() ? "the scenario's own" : found.device) + ", not " +
               (wanted.device.empty() ? "the scenario's own" : wanted.device);
    if (found.depth != wanted.depth)
        return "its --depth is " + std::to_string(found.depth) + ", not " + std::to_string(wanted.depth);
    if (found.guard != wanted.guard)
        return found.guard ? "it was made with --guard" : "it was made without --guard";
    if (found.policy_seconds != wanted.policy_seconds)
        return "its --policy-seconds is " + shortest_text(found.policy_seconds) + ", not " +
               shortest_text(wanted.policy_seconds);
    if (found.scenario != wanted.scenario)
        return "the ad, its page or its video has changed since";
    return "";
}

std::string read_sessions(const std::string& file)
{
    std::ostringstream text;
    std::ifstream named;
    if (file != "-") {
        named.open(file, std::ios::binary);
        if (!named)
            throw InputError(file, "", std::strerror(errno));
    }
    std::istream& in = file == "-" ? std::cin : named;
    // An empty file would set the failure bit of the target.
    if (in.peek() != std::istream::traits_type::eof())
        text << in.rdbuf();
    return std::move(text).str();
}

SearchState::SearchState(std::string file, std::vector<SearchPart> wanted)
    : file_(std::move(file)), parts_(std::move(wanted)), due_(Clock::now() + Interval)
{
    std::error_code unknown;
    if (file_.empty() || !std::filesystem::exists(file_, unknown))
        return;
    std::vector<SearchPart> found = read_parts(read_sessions(file_), file_);
    const auto refuse = [this](const std::string& why) {
        return InputError(file_, "", "the file is of another search: " + why + "; name another file for --state");
    };
    if (found.size() != parts_.size())
        throw refuse("it has " + std::to_string(found.size()) + " devices, not " + std::to_string(parts_.size()));
    for (std::size_t n = 0; n < parts_.size(); ++n) {
        if (const std::string why = difference_of(parts_[n].identity, found[n].identity); !why.empty())
            throw refuse(why);
        if (found[n].shard != parts_[n].shard || found[n].shards != parts_[n].shards)
            throw refuse("its shard is " + std::to_string(found[n].shard) + "/" + std::to_string(found[n].shards));
        parts_[n].sessions = std::move(found[n].sessions);
    }
}

std::string SearchState::text() const
{
    std::string text;
    for (const SearchPart& part : parts_)
        write_part(text, part);
    return text;
}

void SearchState::write()
{
    if (file_.empty())
        return;
    const auto began = Clock::now();
    const std::string unfinished = file_ + ".part";
    std::ofstream out(unfinished, std::ios::binary);
    out << text();
    out.close();
    if (!out || std::rename(unfinished.c_str(), file_.c_str()) != 0) {
        const std::string why = std::strerror(errno);
        std::remove(unfinished.c_str());
        throw InputError(file_, "", "can't be written: " + why);
    }
    const auto ended = Clock::now();
    due_ = ended + std::max<Clock::duration>(Interval, (ended - began) * WritingShare);
}

void SearchState::write_if_due()
{
    if (Clock::now() >= due_)
        write();
}

} // namespace qoro
