// The manual page says what the program says: no option and no fault more, none less.
#include "controller/fault_kinds.h"
#include "controller/options.h"
#include "test_client.h"

#include <QtCore/QFile>
#include <QtCore/QRegularExpression>

#include <gtest/gtest.h>

using namespace tavmir::controller;

namespace
{

QString manualPage()
{
    QFile file(TAVMIR_CONTROLLER_MANUAL);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return QString::fromUtf8(file.readAll());
}

// The entries of the list that follows a line, "- *name*: words", each on one line.
QStringList listAfter(const QString& page, const QString& line)
{
    const int at = page.indexOf("\n" + line + "\n\n- ");
    EXPECT_GE(at, 0) << line.toStdString();
    const QString list = page.mid(at + line.size() + 3).section("\n\n", 0, 0);
    QStringList entries;
    for (const QString& entry : list.split(QRegularExpression("(^|\n)- "))) {
        if (!entry.isEmpty()) {
            entries.append(entry.simplified());
        }
    }
    return entries;
}

// Of each match, its only group.
QStringList allMatches(const QString& text, const char* pattern)
{
    QStringList found;
    auto matches = QRegularExpression(pattern).globalMatch(text);
    while (matches.hasNext()) {
        found.append(matches.next().captured(1));
    }
    found.sort();
    return found;
}

} // namespace

TEST(ManualPage, ListsTheFaultsInTheWordsOfTheTable)
{
    QStringList faults;
    for (const FaultRow& row : kFaultTable) {
        if (row.kind != FaultKind::None) {
            faults.append(QString("*%1*: %2.").arg(row.name, row.help));
        }
    }
    EXPECT_EQ(listAfter(manualPage(), "The kinds of faults:").join('\n').toStdString(),
              faults.join('\n').toStdString());
}

TEST(ManualPage, ListsTheOptionsOfTheHelp)
{
    tavmir::test::haveApplication();
    const QString help = parseCommandLine({"tavmir-controller", "--help"}).printOnly;
    const QStringList options = allMatches(help, "(?m)^  (?:-., )?(--[a-z-]+)");
    EXPECT_GT(options.size(), 10);
    EXPECT_EQ(allMatches(manualPage(), "(?m)^- \\*(--[a-z-]+)\\*").join(' ').toStdString(),
              options.join(' ').toStdString());
}

TEST(ManualPage, ShowsEachOptionInItsSynopsis)
{
    const QString page = manualPage();
    const QString synopsis = page.section("# SYNOPSIS", 1).section("# DESCRIPTION", 0, 0);
    for (const QString& option : allMatches(page, "(?m)^- \\*(--[a-z-]+)\\*")) {
        const bool onlyPrints = option == "--help" || option == "--version";
        EXPECT_EQ(synopsis.contains("[" + option), !onlyPrints) << option.toStdString();
    }
}
