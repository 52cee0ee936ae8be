#include "admission.h"

#include "frame_limits.h"

#include <utility>

namespace tavmir::controller
{

Gatekeeper::Gatekeeper(AdmissionRules rules)
    : rules_(std::move(rules)), rate_(rules_.mostRequestsPerSecond)
{
}

Verdict Gatekeeper::judge(const Request& request, std::int64_t nowUs)
{
    Verdict verdict;
    const std::int64_t waitUs = rate_.waitUs(nowUs);
    verdict.aboveRate = waitUs > 0;
    if (verdict.aboveRate && !rules_.delaysAboveRate) {
        verdict.exceptionCode = kDeviceBusy;
        return verdict;
    }
    verdict.waitUs = waitUs;
    rate_.take(nowUs);
    if (rules_.stations && !rules_.stations->test(request.station)) {
        verdict.unknownStation = true;
        verdict.isAnswered = !rules_.silentForOthers;
        verdict.exceptionCode = kStationDoesNotAnswer;
        return verdict;
    }
    if (request.exceptionCode != 0) {
        return verdict;
    }
    verdict.exceptionCode = refusalOf(rules_.refused, request);
    verdict.refusedAddress = verdict.exceptionCode != 0;
    return verdict;
}

} // namespace tavmir::controller
