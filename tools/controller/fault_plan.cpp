#include "fault_plan.h"

#include <QtCore/QStringList>

#include <utility>

namespace tavmir::controller
{

namespace
{

constexpr std::uint64_t kSeedStep = 0x9E3779B97F4A7C15; // sets the draws of the rules apart

FaultKind kindNamed(const QString& name)
{
    for (const FaultRow& row : kFaultTable) {
        if (name == row.name) {
            return row.kind;
        }
    }
    return FaultKind::None;
}

QString kindList()
{
    QStringList names;
    for (const FaultRow& row : kFaultTable) {
        names.append(row.name);
    }
    return names.mid(1).join(", ");
}

int findMark(const QString& text)
{
    for (int i = 0; i < text.size(); ++i) {
        if (text[i] == '=' || text[i] == '@' || text[i] == '%') {
            return i;
        }
    }
    return -1;
}

} // namespace

std::optional<FaultRule> parseFaultRule(const QString& text, QString* problem)
{
    const auto fail = [problem](const QString& why) {
        *problem = why;
        return std::nullopt;
    };
    const int mark = findMark(text);
    if (mark < 0) {
        return fail(QString("\"%1\" is none of KIND=P, KIND@N, KIND%N").arg(text));
    }
    FaultRule rule;
    rule.kind = kindNamed(text.left(mark));
    if (rule.kind == FaultKind::None) {
        return fail(QString("unknown fault \"%1\"; there are %2").arg(text.left(mark), kindList()));
    }
    const QString number = text.mid(mark + 1);
    bool isNumber = false;
    if (text[mark] == '=') {
        rule.probability = number.toDouble(&isNumber);
        if (!isNumber || !(rule.probability >= 0 && rule.probability <= 1)) {
            return fail(QString("\"%1\" is no probability from 0 to 1").arg(number));
        }
        return rule;
    }
    rule.when = text[mark] == '@' ? FaultRule::When::Once : FaultRule::When::Every;
    rule.number = number.toULongLong(&isNumber);
    if (!isNumber || rule.number == 0) {
        return fail(QString("\"%1\" is no number of a request, 1 or more").arg(number));
    }
    return rule;
}

FaultPlan::FaultPlan(std::vector<FaultRule> rules, std::uint64_t seed)
    : rules_(std::move(rules)), detail_(seed)
{
    for (std::size_t i = 0; i < rules_.size(); ++i) {
        draws_.emplace_back(seed + (i + 1) * kSeedStep);
    }
}

FaultKind FaultPlan::next()
{
    ++requests_;
    FaultKind kind = FaultKind::None;
    for (std::size_t i = 0; i < rules_.size(); ++i) {
        if (applies(i) && kind == FaultKind::None) {
            kind = rules_[i].kind;
        }
    }
    return kind;
}

bool FaultPlan::applies(std::size_t rule)
{
    const FaultRule& its = rules_[rule];
    switch (its.when) {
    case FaultRule::When::Probability:
        return draws_[rule].fraction() < its.probability;
    case FaultRule::When::Once:
        return requests_ == its.number;
    case FaultRule::When::Every:
        return requests_ % its.number == 0;
    }
    return false;
}

} // namespace tavmir::controller
