// Writes that the page asks for, and who carries them out.
#ifndef TAVMIR_PAGE_WRITE_DESK_H
#define TAVMIR_PAGE_WRITE_DESK_H

#include "feed/outcome.h"
#include "feed/quality.h"
#include "project/address_resolver.h"

#include <QtCore/QStringList>

#include <functional>
#include <optional>
#include <string>

namespace tavmir::host
{

struct PageWrite {
    QString address;
    QString value;                 // as it was typed
    std::optional<QString> expect; // what stood there when it was typed; none: whatever it was
};

struct ParsedWrite {
    PageWrite write;
    QString problem; // not empty: refused
};

// {"address","value","expect"}, the last one optional. Any bytes.
ParsedWrite parseWrite(const std::string& body);

// What was read after a write.
struct ReadBackValue {
    QString text; // "–": it could not be read
    std::optional<double> number;
    ValueQuality quality;
};

// What became of a write.
struct WriteEnd {
    Outcome outcome;
    QString text;                          // "written", or why not
    QString line;                          // "Main.Setpoint = 5: written; 5 stands there"
    std::optional<ReadBackValue> readBack; // none: nothing was read, as nothing was sent
};

// {"outcome","text","old","readBack"}
//   old  what was shown before; null: nothing
std::string writeJson(const WriteEnd& end, const QString& old);

class WriteDesk
{
public:
    virtual ~WriteDesk() = default;

    // What may be written. Any thread.
    virtual bool isOpen() const = 0;
    virtual bool permits(const project::Element& element) const = 0;
    // The addresses that may; empty: all. And the same in words.
    virtual QStringList only() const = 0;
    virtual QString words() const = 0;

    struct Refusal {
        unsigned status = 400; // of HTTP
        QString problem;
    };
    using Done = std::function<void(const WriteEnd& end)>;

    // Takes it and returns at once, or says why not. On the page's thread.
    //   done  called once, on any thread
    virtual std::optional<Refusal> write(const PageWrite& write, Done done) = 0;
};

} // namespace tavmir::host

#endif
