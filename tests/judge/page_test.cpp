// The page that people read says what the tables say.
#include "judge/rule_table.h"
#include "judge/script.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace tavmir::judge
{

namespace
{

std::string textOf(const char* name)
{
    std::ifstream file(name);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

std::string cell(const std::string& text)
{
    return "| " + text + " ";
}

} // namespace

TEST(CheckHostPage, ListsEachRuleInTheWordsOfTheTable)
{
    const std::string page = textOf(TAVMIR_CHECK_HOST_PAGE);
    for (const RuleRow& row : kRules) {
        const std::string line =
            cell(std::string("`") + row.name + "`") + cell(row.sentence) + cell(row.needs) + "|\n";
        EXPECT_NE(page.find(line), std::string::npos) << line;
    }
}

TEST(CheckHostPage, ListsEachSituationInTheWordsOfTheTable)
{
    const std::string page = textOf(TAVMIR_CHECK_HOST_PAGE);
    const std::string manual = textOf(TAVMIR_CONTROLLER_MANUAL);
    for (int i = 0; i < kPlays; ++i) {
        const PlayRow& row = rowOf(static_cast<Play>(i));
        const std::string name = row.name;
        const std::string line =
            cell("`" + name + "`") + cell(row.help) + cell("`" + std::string(row.keys) + "`");
        EXPECT_NE(page.find(line + "|\n"), std::string::npos) << line;
        const std::string entry = "- *" + name + "*: " + row.help + "; " + row.keys + ".\n";
        EXPECT_NE(manual.find(entry), std::string::npos) << entry;
    }
}

} // namespace tavmir::judge
