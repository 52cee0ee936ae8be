// The layout published in docs/binary-interface.md is the one that this compiler makes, column by
// column for this pointer size, and the page lists nothing else.
#include "record_table.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

using tavmir::probe::Member;
using tavmir::probe::RecordLayout;
using tavmir::probe::recordTable;

namespace
{

const bool kPointers32 = sizeof(void*) == 4;

// Record name to its lines: the size line, then one line per member.
typedef std::map<std::string, std::vector<std::string>> Tables;

Tables publishedTables()
{
    std::ifstream page(TAVMIR_BINARY_INTERFACE_PAGE);
    Tables tables;
    std::string line;
    std::string record;
    while (std::getline(page, line)) {
        if (line.compare(0, 5, "### `") == 0) {
            record = line.substr(5, line.size() - 6);
        } else if (line.compare(0, 3, "## ") == 0) {
            record.clear();
        } else if (!record.empty() &&
                   (line.compare(0, 3, "| `") == 0 || line.compare(0, 5, "Size ") == 0)) {
            tables[record].push_back(line);
        }
    }
    return tables;
}

// The part of a published line that belongs to this pointer size.
std::string column(const std::string& line)
{
    if (line.compare(0, 5, "Size ") == 0) {
        const std::size_t middle = line.find("; 64-bit: ");
        return kPointers32 ? line.substr(5, middle - 5)
                           : line.substr(middle + 15, line.size() - middle - 16);
    }
    std::istringstream words(line);
    std::string bar, name, offset32, size32, offset64, size64;
    words >> bar >> name >> bar >> offset32 >> bar >> size32 >> bar >> offset64 >> bar >> size64;
    return name + " " + (kPointers32 ? offset32 + " " + size32 : offset64 + " " + size64);
}

std::vector<std::string> built(const RecordLayout& record)
{
    std::ostringstream size;
    size << record.size << ", alignment " << record.alignment;
    std::vector<std::string> lines(1, size.str());
    for (const Member& member : record.members) {
        std::ostringstream line;
        line << "`" << member.name << "` " << member.offset << " " << member.size;
        lines.push_back(line.str());
    }
    return lines;
}

TEST(RecordTable, PublishedLayoutIsTheBuiltOne)
{
    const Tables tables = publishedTables();
    for (const RecordLayout& record : recordTable()) {
        SCOPED_TRACE(record.name);
        const Tables::const_iterator table = tables.find(record.name);
        ASSERT_TRUE(table != tables.end());
        std::vector<std::string> published;
        for (const std::string& line : table->second) {
            published.push_back(column(line));
        }
        EXPECT_EQ(published, built(record));
    }
    EXPECT_EQ(tables.size(), recordTable().size());
}

TEST(RecordTable, MembersFollowOneAnother)
{
    for (const RecordLayout& record : recordTable()) {
        SCOPED_TRACE(record.name);
        std::size_t end = 0;
        for (const Member& member : record.members) {
            EXPECT_GE(member.offset, end) << member.name;
            end = member.offset + member.size;
        }
        EXPECT_LE(end, record.size);
        EXPECT_LT(record.size - end, record.alignment) << "a member is missing from the table";
    }
}

} // namespace
