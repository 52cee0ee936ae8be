// libmodbus, called as its manual shows it.
#include "side_by_side/client.h"
#include "side_by_side/modbus_plan.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <modbus/modbus.h>

namespace tavmir
{
namespace bench
{

namespace
{

class LibmodbusClient : public Client
{
public:
    ~LibmodbusClient() override { disconnect(); }

    const char* name() const override { return "libmodbus"; }

    void connectTo(int port, Layout layout) override
    {
        plan_ = ModbusPlan(layout);
        context_ = modbus_new_tcp("127.0.0.1", port);
        if (!context_ || modbus_connect(context_) != 0) {
            fail();
        }
    }

    Done readFor(std::chrono::milliseconds duration) override
    {
        Done done;
        const auto end = std::chrono::steady_clock::now() + duration;
        while (std::chrono::steady_clock::now() < end) {
            if (modbus_read_registers(context_, plan_.address(), plan_.registers(),
                                      values_ + plan_.address()) != plan_.registers()) {
                fail();
            }
            done.values += plan_.registers();
            ++done.requests;
            plan_.advance();
        }
        return done;
    }

    void disconnect() override
    {
        if (!context_) {
            return;
        }
        modbus_close(context_);
        modbus_free(context_);
        context_ = nullptr;
    }

private:
    [[noreturn]] static void fail()
    {
        std::fprintf(stderr, "libmodbus: %s\n", modbus_strerror(errno));
        std::exit(1);
    }

    modbus_t* context_ = nullptr;
    ModbusPlan plan_{Layout::scattered};
    uint16_t values_[2 * kValues] = {};
};

} // namespace

std::unique_ptr<Client> makeLibmodbusClient()
{
    return std::make_unique<LibmodbusClient>();
}

} // namespace bench
} // namespace tavmir
