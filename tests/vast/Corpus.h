#pragma once

#include "formats/World.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

// The documents of tests/vast/documents/: NAME.xml, and NAME.json with what is expected of it.
//
// - The description, as `qoro-ad import --describe` prints it, without the words for people; an expected reason is a
//   part of the actual one. "failed", the ads that cannot be played, is compared where it is given. A refused document
//   has {"refused": {"code", "begins"}} instead.
// - "session": the trackers of a whole session, [event, address] in the order of sending. The video is as long as the
//   (first) ad's Duration, or 30 seconds. The viewer watches to the end and then closes the ad. [TIMESTAMP],
//   [CACHEBUSTING] and [TRANSACTIONID] are any value of that macro.
// - "scenario", optional: keys that replace those of the session's scenario, such as "steps".
//
// The documents in the folder net/ beside a document are on http://ads.example/; net.json there lists the addresses
// that answer otherwise.

namespace qoro::test
{

/// Names of the documents, such as "ads/pod", in order.
std::vector<std::string> corpus_names();
/// A document's bytes.
std::string corpus_document(const std::string& name);
/// What is expected of a document.
nlohmann::json corpus_expectation(const std::string& name);
/// The network that answers to a document's wrappers.
World corpus_network(const std::string& name);
/// All documents, those of the network too, one after the other.
std::string whole_corpus();
/// A name with letters that names of tests may have.
std::string test_name(std::string name);

} // namespace qoro::test
