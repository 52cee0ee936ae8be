// Texts looked at.
#include "query_numbers.h"

#include "json_writer.h"

#include <cmath>

namespace tavmir::host
{

page::Answer answerOf(std::string json)
{
    page::Answer answer;
    answer.body = std::move(json);
    return answer;
}

page::Answer problem(unsigned status, const QString& text)
{
    page::Answer answer;
    answer.status = status;
    JsonWriter(answer.body).beginObject().key("error").text(text).endObject();
    return answer;
}

qint64 AskedFor::whole(const char* name, qint64 otherwise, qint64 low, qint64 high)
{
    const std::string* given = query_.find(name);
    if (given == nullptr) {
        return otherwise;
    }
    bool isNumber = false;
    // Moments may have a fraction.
    const double number = QString::fromStdString(*given).toDouble(&isNumber);
    const bool fits = isNumber && std::isfinite(number) && number >= static_cast<double>(low) &&
                      number <= static_cast<double>(high);
    if (!fits && problem_.isEmpty()) {
        problem_ = QString("%1: must be a number from %2 to %3").arg(name).arg(low).arg(high);
    }
    return fits ? static_cast<qint64>(number) : otherwise;
}

QString AskedFor::text(const char* name) const
{
    const std::string* given = query_.find(name);
    return given == nullptr ? QString() : QString::fromStdString(*given);
}

} // namespace tavmir::host
