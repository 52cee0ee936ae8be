// Numbers and texts behind the "?" of an address.
#ifndef TAVMIR_PAGE_QUERY_NUMBERS_H
#define TAVMIR_PAGE_QUERY_NUMBERS_H

#include "page_content.h"

#include <QtCore/QString>

#include <string>

namespace tavmir::host
{

// A JSON text.
page::Answer answerOf(std::string json);

// {"error":"…"} with that status.
page::Answer problem(unsigned status, const QString& text);

// The latest moment that is taken, milliseconds since 1970, and the largest number.
constexpr qint64 kLastMs = qint64(1) << 52;

// Questions with what was wrong with them.
class AskedFor
{
public:
    explicit AskedFor(const page::Query& query) : query_(query) {}

    // A whole number, or another one where it is left out. One outside of the bounds is refused.
    qint64 whole(const char* name, qint64 otherwise, qint64 low, qint64 high);
    // A text; null where it is left out.
    QString text(const char* name) const;

    // Empty: all was right. "limit: must be a whole number from 1 to 1000".
    QString problem() const { return problem_; }

private:
    const page::Query& query_;
    QString problem_;
};

} // namespace tavmir::host

#endif
