// Life of the host, its cycle and the driver's reports. The other workers are in workers.cpp.
#include "host_under_test.h"

#include <chrono>

namespace tavmir::soak
{

namespace
{

HostUnderTest* active = nullptr;

const int kReadKey = 200; // hostKey of one-shot reads; writes have 100 and up

host::LinkOptions linkTo(int port, int replyTimeoutMs)
{
    host::LinkOptions options;
    options.host = "127.0.0.1";
    options.port = port;
    options.replyTimeoutMs = replyTimeoutMs;
    options.reconnectMinMs = 2;
    options.reconnectMaxMs = 40;
    return options;
}

std::vector<int> keysOf(const QList<RW_VAR>& list)
{
    std::vector<int> keys;
    for (int i = 0; i < list.size(); ++i) {
        keys.push_back(list.at(i).varKey);
    }
    return keys;
}

} // namespace

HostUnderTest::HostUnderTest(int port, int replyTimeoutMs, std::uint64_t seed)
    : words_(), link_(linkTo(port, replyTimeoutMs),
                      [this](const host::FeedEntry& entry) { figures_.take(entry); }),
      seed_(seed)
{
    active = this;
    words_.defaultStation = kStation;
    words_.comStation = 7;
    words_.retryLimit = 1;
    words_.writeMode = 2;
    SetComInfo(&words_);
    RegistCallBackFuncIntf(&HostUnderTest::varDone, &HostUnderTest::commFail);
    QList<Label_Type_Info> labels;
    labels.append(soakLabel());
    PassVarName_2(&labels);
    rebuild(0);
}

HostUnderTest::~HostUnderTest()
{
    stopWork();
    stopCycle();
    active = nullptr;
}

void HostUnderTest::start()
{
    cycle_ = std::thread([this] { runCycle(); });
    for (int i = 0; i < 2; ++i) {
        const auto seed = seed_ + static_cast<std::uint64_t>(i);
        workers_.emplace_back([this, i, seed] { runReader(i, seed + 10); });
        workers_.emplace_back([this, i, seed] { runWriter(i, seed + 20); });
    }
    workers_.emplace_back([this] { runOperator(seed_ + 30); });
}

void HostUnderTest::stopWork()
{
    stopWork_ = true;
    for (std::thread& worker : workers_) {
        worker.join();
    }
    workers_.clear();
}

void HostUnderTest::stopCycle()
{
    stopCycle_ = true;
    link_.stop();
    if (cycle_.joinable()) {
        cycle_.join();
    }
}

bool HostUnderTest::tick(Worker worker)
{
    ++progress_[worker];
    return !stopWork_;
}

void HostUnderTest::found(const std::string& finding)
{
    const std::lock_guard<std::mutex> guard(findingsMutex_);
    if (findings_.size() < 20) {
        findings_.push_back(finding);
    }
}

std::vector<std::string> HostUnderTest::findings() const
{
    const std::lock_guard<std::mutex> guard(findingsMutex_);
    std::vector<std::string> all = findings_;
    for (const Ledger* ledger : {&writes_, &reads_}) {
        const std::vector<std::string> more = ledger->findings();
        all.insert(all.end(), more.begin(), more.end());
    }
    return all;
}

void HostUnderTest::runCycle()
{
    QByteArray reply;
    host::FeedEntry entry;
    while (!stopCycle_) {
        tick(CycleWorker);
        Protocol* request = nullptr;
        {
            const std::shared_lock<std::shared_mutex> gate(gate_);
            request = ComCommunication();
        }
        if (request == nullptr) {
            link_.idle(1);
            continue;
        }
        bool answered = false;
        if (Ethernetcontains(request->var.station)) {
            link_.idle(3);
        } else {
            const auto size = static_cast<std::size_t>(request->frameLength);
            answered = link_.exchange(request->frame.constData(), size, reply, entry.exchange) ==
                       host::ExchangeEnd::reply;
            figures_.take(entry);
        }
        const std::shared_lock<std::shared_mutex> gate(gate_);
        DataCom(&reply, answered ? reply.size() : 0);
    }
}

int HostUnderTest::varDone(int station, int hostKey, int varKey, int result)
{
    if (station != 7 || (result != 1 && result != 2)) {
        active->found("a report with station " + std::to_string(station) + " and result " +
                      std::to_string(result));
    }
    Ledger& ledger = hostKey == kReadKey ? active->reads_ : active->writes_;
    ledger.end(varKey, result == 1);
    return 0;
}

// The driver holds its list lock while it calls, and empties the list behind this call.
int HostUnderTest::commFail(QList<RW_VAR> vars, int hostKey, int flag)
{
    if (!vars.isEmpty() || flag != 1) {
        active->found("a failure report with host key " + std::to_string(hostKey));
    }
    ++active->giveUps_;
    if (PLC_driver.cycleState == 1) {
        active->writes_.drop(keysOf(PLC_driver.writeVarList));
    }
    if (PLC_driver.cycleState == 2) {
        active->reads_.drop(keysOf(PLC_driver.onceReadList));
    }
    return 0;
}

} // namespace tavmir::soak
