#include "Places.h"
#include "platform/Events.h"

#include <gmock/gmock.h>

#include <fstream>
#include <string>
#include <utility>
#include <vector>

// The table of the trace in docs/simulator.md has one row for each event that is written, and no others.

namespace qoro
{
namespace
{

/// "what | do | field, field"
std::string row_of(std::string_view what, std::string_view action, const std::vector<std::string>& fields)
{
    std::string row = std::string(what) + " | " + std::string(action) + " | ";
    for (const std::string& field : fields)
        row += (row.ends_with("| ") ? "" : ", ") + field;
    return row;
}

template <typename Type>
void add_row(std::vector<std::string>& rows)
{
    if constexpr (!Type::table.what.empty()) {
        std::vector<std::string> names;
        std::apply([&](const auto&... fields) { (names.emplace_back(fields.documented()), ...); }, Type::table.fields);
        rows.push_back(row_of(Type::table.what, Type::table.action, names));
    }
}

std::vector<std::string> rows_of_tables()
{
    std::vector<std::string> rows;
    [&]<std::size_t... Index>(std::index_sequence<Index...>)
    {
        (add_row<std::variant_alternative_t<Index, Event>>(rows), ...);
    }
    (std::make_index_sequence<std::variant_size_v<Event>>());
    return rows;
}

/// The texts in backquotes.
std::vector<std::string> quoted_in(const std::string& cell)
{
    std::vector<std::string> texts;
    for (std::size_t begin = cell.find('`'); begin != std::string::npos;) {
        const std::size_t end = cell.find('`', begin + 1);
        texts.push_back(cell.substr(begin + 1, end - begin - 1));
        begin = cell.find('`', end + 1);
    }
    return texts;
}

std::vector<std::string> cells_of(const std::string& line)
{
    std::vector<std::string> cells;
    for (std::size_t begin = 1; begin < line.size();) {
        const std::size_t end = line.find('|', begin);
        cells.push_back(line.substr(begin, end - begin));
        begin = end + 1;
    }
    return cells;
}

std::vector<std::string> rows_of_document()
{
    std::ifstream file(QORO_SOURCE_DIR "/docs/simulator.md");
    std::vector<std::string> rows;
    bool inside = false;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("## "))
            inside = line == "## The trace";
        if (!inside || !line.starts_with("| `") || line.starts_with("| `what` |"))
            continue;
        const std::vector<std::string> cells = cells_of(line);
        const std::vector<std::string> what = quoted_in(cells.at(0));
        const std::vector<std::string> action = quoted_in(cells.at(1));
        rows.push_back(row_of(what.at(0), action.empty() ? "" : action[0], quoted_in(cells.at(2))));
    }
    return rows;
}

TEST(TraceDocument, HasEachEventWithItsFieldsAndNoOther)
{
    EXPECT_THAT(rows_of_document(), testing::UnorderedElementsAreArray(rows_of_tables()));
}

TEST(TraceDocument, OnlyAFirstPictureAndTheCloseOfAnAdAreNotWritten)
{
    EXPECT_EQ(rows_of_tables().size(), std::variant_size_v<Event> - 2);
    EXPECT_TRUE(event::FirstPictureShown::table.what.empty());
    EXPECT_TRUE(event::AdClosed::table.what.empty());
}

} // namespace
} // namespace qoro
