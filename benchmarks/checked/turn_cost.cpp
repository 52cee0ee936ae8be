// One polling turn of a right host: the request of 38 words and the reply that belongs to it. Run
// on the driver and on the checked one, it says what the checks cost. Usage: tavmir_turn_cost TURNS
// [TIMES]    prints the fastest of TIMES means, in ns of CPU time
//
// The turns are made inside the function `tavmir_measured_calls`, for tools that count
// instructions.
#include "support/quiet_messages.h"
#include "tavmir_kx_tcp/host_interface.h"

#include <ctime>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace
{

const int kWords = 38; // one full batch
const int kHeaderBytes = 9;

ComInfo connection;
QByteArray reply;

void prepare()
{
    connection.defaultStation = 1;
    SetComInfo(&connection);
    RegistCallBackFuncIntf(nullptr, nullptr);
    for (int i = 0; i < kWords; ++i) {
        RW_VAR var;
        var.dataType = 4;
        var.elementAddress = 64 * i;
        var.station = 1;
        var.count = 1;
        AddListReadVar(&var);
    }
    const Protocol* const request = ComCommunication();
    reply = request->frame.left(kHeaderBytes);
    for (int i = 0; i < kWords; ++i) {
        reply += request->frame.mid(kHeaderBytes + 4 * i, 4) + QByteArray(2, '\1');
    }
    reply[4] = static_cast<char>((reply.size() - 6) >> 8);
    reply[5] = static_cast<char>((reply.size() - 6) & 0xFF);
    DataCom(&reply, reply.size());
}

// The list is as long as the batch: only the transaction changes from turn to turn.
void turn()
{
    const Protocol* const request = ComCommunication();
    char* const bytes = reply.data();
    bytes[0] = request->frame.at(0);
    bytes[1] = request->frame.at(1);
    if (DataCom(&reply, reply.size())->status != 1) {
        std::abort();
    }
}

double nowNs()
{
    timespec now = timespec();
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return 1e9 * static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec);
}

} // namespace

extern "C" __attribute__((noinline)) void tavmir_measured_calls(long turns)
{
    for (long i = 0; i < turns; ++i) {
        turn();
    }
}

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: tavmir_turn_cost TURNS [TIMES]\n");
        return 2;
    }
    tavmir::bench::discardMessages();
    prepare();
    const long turns = std::atol(argv[1]);
    const int times = argc > 2 ? std::atoi(argv[2]) : 1;
    double fastest = 0;
    for (int i = 0; i < times; ++i) {
        const double begun = nowNs();
        tavmir_measured_calls(turns);
        const double took = (nowNs() - begun) / static_cast<double>(turns);
        fastest = i == 0 ? took : std::min(fastest, took);
    }
    std::printf("%.0f\n", fastest);
    return 0;
}
