// What a program said of one variable, without what differs from one run to the next: as cells of
// the tables in docs/reliability.md.
#ifndef TAVMIR_TESTS_HOST_SHOWN_WORDS_H
#define TAVMIR_TESTS_HOST_SHOWN_WORDS_H

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace tavmir::host
{

struct Said {
    QString output;
    QString errors;
    int exitStatus = -1;
};

constexpr char kLevel[] = "Main.Level"; // the variable
constexpr int kLevelIs = 1500;          // as the controller holds it
constexpr int kLevelBecomes = 7;        // as it is written

// format  "table", "json" or "csv"
// Of `read` and `write`: the line or record of the variable, and the exit status. "`Main.Level =
// 1500`; exit 0".
QString cellOfCommand(const Said& said, const QString& format);

// Of `run`: what it showed last, and which counters of its statistics are not 0. "`connected to
// HOST:PORT`, value 1500; time-outs, retries; exit 0".
//   chancy  counters that may be 0 or not, and are left out
QString cellOfRun(const Said& said, const QString& format, const QStringList& chancy);

} // namespace tavmir::host

#endif
