// What the tools say in each fault, word by word: every cell of the tables in docs/reliability.md
// is what a program says on a line with that fault. After a change of words, the failing test says
// each row as it should be now.
#include "faulty_line.h"
#include "shown_words.h"

#include <gtest/gtest.h>

#include <QtCore/QFile>

#include <chrono>
#include <csignal>
#include <future>
#include <thread>

namespace tavmir::host
{

// Of a failing test's parameter.
static void PrintTo(const LineFault& fault, std::ostream* stream)
{
    *stream << fault.name;
}

namespace
{

const QString kHost = TAVMIR_HOST_PROGRAM;
constexpr char kHeading[] = "## What the tools say in each fault";
constexpr int kPauseMs = 700;       // before a controller comes
constexpr int kDurationSeconds = 4; // late replies come within it

struct Commands {
    const char* name;
    QStringList formats;
};

const std::vector<Commands>& commands()
{
    static const std::vector<Commands> all = {
        {"read", {"table", "json", "csv"}},
        {"write", {"table", "json", "csv"}},
        {"run", {"table", "json", "csv"}},
    };
    return all;
}

// The table of a command: its lines from the one behind the heading's on.
QStringList tableOf(const QString& command)
{
    QFile page(TAVMIR_RELIABILITY_PAGE);
    EXPECT_TRUE(page.open(QIODevice::ReadOnly));
    const QString chapter =
        QString::fromUtf8(page.readAll()).section(kHeading, 1).section("\n## ", 0, 0);
    const QString section = chapter.section(QString("\n### `%1`\n").arg(command), 1);
    QStringList lines;
    for (const QString& line : section.section("\n### ", 0, 0).split('\n')) {
        if (line.startsWith("| ")) {
            lines << line;
        }
    }
    return lines;
}

QStringList cellsOf(const QString& line)
{
    return line.mid(2, line.size() - 4).split(" | ");
}

QString rowOf(const QStringList& cells)
{
    return "| " + cells.join(" | ") + " |";
}

void pause(int ms)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

Said endOf(Program& program)
{
    const int status = program.waitForEnd();
    return {program.output(), program.errors(), status};
}

QStringList argumentsOf(const QString& command, const FaultyLine& line, const LineFault& fault,
                        const QString& format)
{
    QStringList arguments = {command,      line.project(), "--connect",
                             line.place(), "--format",     format};
    if (command == "run") {
        return arguments << "--interval"
                         << "100";
    }
    for (const QString& address : fault.before) {
        arguments << (command == "write" ? address + "=1" : address);
    }
    arguments << (command == "write" ? QString("%1=%2").arg(kLevel).arg(kLevelBecomes)
                                     : QString(kLevel));
    return arguments;
}

// What the run showed last, as far as its lines are whole, is the controller's value.
bool showsTheValue(const QString& output, const QString& format)
{
    const Said whole = {output.left(output.lastIndexOf('\n') + 1), "", 0};
    const QString value = QString("value %1").arg(kLevelIs);
    const QString cell = cellOfRun(whole, format, {});
    // A table has no word for a good value: nothing stands behind it.
    return format == "table" ? cell.contains(value + ";")
                             : cell.contains(value) && cell.contains("quality good");
}

// A run that goes on while the controller goes and comes back.
Said runOverReturn(FaultyLine& line, const QStringList& arguments, const QString& format)
{
    const auto isGood = [&](const QString& output) { return showsTheValue(output, format); };
    const auto isNotGood = [&](const QString& output) { return !isGood(output); };
    line.controllerComes();
    Program run(kHost, arguments);
    EXPECT_TRUE(run.showsError("connected to"));
    EXPECT_TRUE(run.showsOutput(isGood));
    line.controllerGoes();
    EXPECT_TRUE(run.showsNewError("lost " + line.place()));
    EXPECT_TRUE(run.showsOutput(isNotGood));
    pause(kPauseMs); // for attempts that fail
    line.controllerComes();
    EXPECT_TRUE(run.showsNewError("connected to"));
    EXPECT_TRUE(run.showsOutput(isGood));
    run.signal(SIGINT);
    return endOf(run);
}

Said sayingOf(const QString& command, const LineFault& fault, const QString& format)
{
    FaultyLine line(fault);
    QStringList arguments = argumentsOf(command, line, fault, format);
    const bool returns = fault.made == LineFault::Made::ByItsReturn;
    if (command == "run" && returns) {
        return runOverReturn(line, arguments, format);
    }
    if (command == "run") {
        arguments << "--duration" << QString::number(kDurationSeconds);
    } else if (returns) {
        arguments << "--timeout"
                  << "60000";
    }
    Program program(kHost, arguments);
    if (returns) {
        pause(kPauseMs);
        line.controllerComes();
    }
    return endOf(program);
}

QString cellOf(const QString& command, const LineFault& fault, const QString& format)
{
    const Said said = sayingOf(command, fault, format);
    return command == "run" ? cellOfRun(said, format, fault.chancy) : cellOfCommand(said, format);
}

QStringList rowFor(const QString& command, const QStringList& formats, const LineFault& fault)
{
    std::vector<std::future<QString>> cells;
    for (const QString& format : formats) {
        cells.push_back(
            std::async(std::launch::async, [&, format] { return cellOf(command, fault, format); }));
    }
    QStringList row(fault.name);
    for (std::future<QString>& cell : cells) {
        row << cell.get();
    }
    return row;
}

// A cell may hold alternatives, where chance decides: "this" or "that", each in its own words.
bool isOneOf(const QString& measured, const QString& cell)
{
    return cell.split(" *or* ").contains(measured);
}

class FaultWords : public testing::TestWithParam<LineFault>
{
};

} // namespace

TEST_P(FaultWords, AreThoseOfTheTable)
{
    const LineFault& fault = GetParam();
    for (const Commands& command : commands()) {
        QStringList written;
        for (const QString& line : tableOf(command.name)) {
            if (cellsOf(line).first() == fault.name) {
                written = cellsOf(line);
            }
        }
        const QStringList measured = rowFor(command.name, command.formats, fault);
        for (int i = 0; i < measured.size(); ++i) {
            EXPECT_TRUE(isOneOf(measured[i], written.value(i)))
                << "docs/reliability.md, " << command.name << ", says\n  "
                << written.value(i).toStdString() << "\nand the program\n  "
                << measured[i].toStdString();
        }
        if (HasFailure()) {
            ADD_FAILURE() << "the row of " << command.name << " as it is now:\nROW " << command.name
                          << " " << rowOf(measured).toStdString();
        }
    }
}

INSTANTIATE_TEST_SUITE_P(EachFault, FaultWords, testing::ValuesIn(lineFaults()),
                         [](const testing::TestParamInfo<LineFault>& row) {
                             return QString(row.param.name).replace(' ', '_').toStdString();
                         });

TEST(FaultWordsTable, HasEachFaultOnceAndNoOther)
{
    for (const Commands& command : commands()) {
        QStringList expected = {"fault"};
        for (const LineFault& fault : lineFaults()) {
            expected << fault.name;
        }
        QStringList found;
        for (const QString& line : tableOf(command.name)) {
            found << cellsOf(line).first();
            EXPECT_EQ(command.formats.size() + 1, cellsOf(line).size()) << line.toStdString();
        }
        EXPECT_EQ(expected.join(", ").toStdString(), found.join(", ").toStdString())
            << command.name;
    }
}

} // namespace tavmir::host
