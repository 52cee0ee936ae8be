// Objects.
#include "json_view.h"

#include <QtCore/QJsonArray>

namespace tavmir::host
{

void JsonView::show(const std::vector<ValueRow>& rows, const LineState& state)
{
    QJsonArray values;
    for (const ValueRow& row : rows) {
        values << jsonOf(row);
    }
    console_.print(jsonLine({{"time", utcText(WallClock::now())},
                             {"connected", state.connected},
                             {"state", state.words},
                             {"values", values}}));
}

void JsonView::change(const ValueRow& row, WallClock::time_point time)
{
    QJsonObject object = jsonOf(row);
    object.remove("ageMs");
    object.insert("time", utcText(time));
    console_.print(jsonLine(object));
}

void JsonView::message(const QString& text)
{
    console_.say(text);
}

void JsonView::close(const QStringList&, const QJsonObject& json)
{
    console_.print(jsonLine({{"statistics", json}}));
}

} // namespace tavmir::host
