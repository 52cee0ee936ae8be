// Tries as operations of the session's own.
#include "search_tries.h"

namespace tavmir::host
{

void SearchTries::begin(CulpritSearch& search, const std::vector<PolledElement>& polled,
                        Clock::time_point now)
{
    if (id_ || now < search.nextAt()) {
        return;
    }
    id_ = state_.operations.admitAlone(OperationKind::read);
    if (!id_) {
        return;
    }
    end_.reset();
    state_.operations.given(*id_);
    bool areTaken = true;
    const std::vector<size_t> variables = search.next(now);
    for (const size_t variable : variables) {
        areTaken = give(polled[variable]) && areTaken;
    }
    if (variables.empty() || !areTaken) {
        state_.operations.ended(*id_, QString());
    }
    if (variables.empty()) {
        id_.reset();
    }
}

bool SearchTries::give(const PolledElement& polled)
{
    const DriverKeys keys = driverKeys(*id_);
    RW_VAR variable;
    variable.hostKey = keys.hostKey;
    variable.varKey = keys.varKey;
    variable.addressText = polled.element.addressText;
    variable.station = polled.station;
    variable.count = project::driverCount(polled.element);
    return state_.api.addOnceRead(&variable) != 0;
}

bool SearchTries::isCarriedBy(const RequestInFlight& request) const
{
    return id_ && request.carries(*id_);
}

void SearchTries::requestEnded(const RequestInFlight& request, const Exchange& last)
{
    if (!isCarriedBy(request)) {
        return;
    }
    if (last.isGood()) {
        end_ = end_.value_or(End{TryEnd::answered, 0});
    } else if (last.end == ExchangeEnd::exception &&
               CulpritSearch::blamesAddress(last.exceptionCode)) {
        end_ = End{TryEnd::refused, last.exceptionCode};
    } else {
        end_ = End();
    }
}

std::optional<SearchTries::End> SearchTries::takeEnd()
{
    if (!id_ || state_.operations.isPending(*id_)) {
        return std::nullopt;
    }
    id_.reset();
    return end_.value_or(End());
}

} // namespace tavmir::host
