#include "ledger.h"

#include <algorithm>

namespace tavmir::soak
{

namespace
{

constexpr std::size_t kRememberedFailures = 256; // more than a batch has

} // namespace

int Ledger::begin(const Operation& operation)
{
    const std::lock_guard<std::mutex> guard(mutex_);
    ++figures_.begun;
    open_[++lastKey_] = operation;
    return lastKey_;
}

void Ledger::end(int key, bool succeeded)
{
    const std::lock_guard<std::mutex> guard(mutex_);
    const auto found = open_.find(key);
    if (found == open_.end()) {
        findings_.push_back("operation " + std::to_string(key) + " ended twice");
        return;
    }
    ++(succeeded ? figures_.succeeded : figures_.failed);
    settle(key, found->second, succeeded);
    open_.erase(found);
    if (!succeeded) {
        lastFailed_.push_back(key);
    }
    if (lastFailed_.size() > kRememberedFailures) {
        lastFailed_.erase(lastFailed_.begin());
    }
}

void Ledger::drop(const std::vector<int>& keys)
{
    const std::lock_guard<std::mutex> guard(mutex_);
    for (const int key : keys) {
        const auto found = open_.find(key);
        if (found != open_.end()) {
            ++figures_.dropped;
            // Of several elements the first may have gone out already.
            if (found->second.values.size() > 1) {
                settle(key, found->second, false);
            }
            open_.erase(found);
            lastFailed_.push_back(key);
            continue;
        }
        if (std::find(lastFailed_.begin(), lastFailed_.end(), key) == lastFailed_.end()) {
            findings_.push_back("operation " + std::to_string(key) + " was queued after its end");
        }
    }
    lastFailed_.clear();
}

void Ledger::settle(int key, const Operation& operation, bool succeeded)
{
    for (std::size_t i = 0; i < operation.values.size(); ++i) {
        Slot& slot = slots_[Place(operation.area, operation.index + static_cast<int>(i))];
        if (key < slot.lastKey) {
            continue; // reports of one batch come from its back
        }
        if (!succeeded) {
            slot.uncertain[key] = operation.values[i];
            continue;
        }
        slot.lastKey = key;
        slot.lastValue = operation.values[i];
        slot.uncertain.erase(slot.uncertain.begin(), slot.uncertain.lower_bound(key));
    }
}

std::size_t Ledger::open() const
{
    const std::lock_guard<std::mutex> guard(mutex_);
    return open_.size();
}

Figures Ledger::figures() const
{
    const std::lock_guard<std::mutex> guard(mutex_);
    return figures_;
}

std::vector<std::string> Ledger::findings() const
{
    const std::lock_guard<std::mutex> guard(mutex_);
    return findings_;
}

bool Ledger::mayBeLeft(Area area, int index, std::uint32_t value) const
{
    const std::lock_guard<std::mutex> guard(mutex_);
    const auto found = slots_.find(Place(area, index));
    if (found == slots_.end()) {
        return value == 0;
    }
    const Slot& slot = found->second;
    return slot.lastValue == value ||
           std::any_of(slot.uncertain.begin(), slot.uncertain.end(),
                       [&](const auto& entry) { return entry.second == value; });
}

} // namespace tavmir::soak
