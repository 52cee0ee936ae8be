#include "checked/small_host.h"

namespace tavmir::checked_tests
{

namespace
{

void poll(void (*change)(RW_VAR&))
{
    setUp();
    RW_VAR var = test::element(4, 3000);
    change(var);
    AddListReadVar(&var);
}

void write(void (*change)(RW_VAR&))
{
    setUp();
    RW_VAR var = goodWrite();
    change(var);
    AddListWriteVar(&var);
}

void readOnce(const char* address, int count, int hostData2 = 0)
{
    setUp();
    RW_VAR var;
    var.addressText = address;
    var.count = count;
    var.hostData2 = hostData2;
    AddListOnceReadVar(&var);
}

void set(const char* address, int bytes, int count)
{
    setUp();
    QByteArray data(bytes, '\1');
    SetRegisterData(address, 0, QString(), 1, &data, count, 1, 1);
}

void setBits(int bytes)
{
    setUpPolling(QList<const char*>() << "Main.W");
    turn();
    QByteArray data(bytes, '\1');
    SetRegisterData("Main.W.b[12]", 0, QString(), 1, &data, 1, 1, 1);
}

void writeABit(bool readBefore)
{
    setUpPolling(QList<const char*>() << "Main.W");
    if (readBefore) {
        turn();
    }
    QByteArray data(1, '\1');
    SetRegisterData("Main.W.b[3]", 0, QString(), 1, &data, 1, 1, 1);
}

void good(RW_VAR&) {}

} // namespace

std::vector<HostPair> recordHosts()
{
    return {
        {"null-argument",
         [] {
             setUp();
             AddListWriteVar(nullptr);
         },
         [] { write(&good); }},
        {"read-var-type", [] { poll([](RW_VAR& var) { var.dataType = 5; }); },
         [] { poll([](RW_VAR& var) { var.dataType = 10; }); }},
        {"read-var-host-data2", [] { poll([](RW_VAR& var) { var.hostData2 = 1; }); },
         [] { poll(&good); }},
        {"write-var-type", [] { write([](RW_VAR& var) { var.dataType = 3; }); },
         [] { write([](RW_VAR& var) { var.dataType = 10; }); }},
        {"write-var-host-data2", [] { write([](RW_VAR& var) { var.hostData2 = 0; }); },
         [] { write([](RW_VAR& var) { var.hostData2 = 7; }); }},
        {"write-var-count", [] { write([](RW_VAR& var) { var.count = 2; }); },
         [] { write(&good); }},
        {"write-var-value-size", [] { write([](RW_VAR& var) { var.value = hex("01"); }); },
         [] {
             write([](RW_VAR& var) {
                 var.dataType = 6;
                 var.value = hex("01 00 00 00");
             });
         }},
        {"once-read-host-data2", [] { readOnce("Main.W", 1, 1); },
         [] { readOnce("Main.W", 1, 0); }},
        {"once-read-overflow", [] { readOnce("Main.Row[0]", 1025); },
         [] { readOnce("Main.Row[0]", 1024); }},
        {"set-data-size", [] { set("Main.D", 2, 2); }, [] { set("Main.D", 4, 2); }},
        {"set-data-size", [] { setBits(5); }, [] { setBits(4); }},
        {"count-below-one", [] { set("Main.W", 0, 0); }, [] { set("Main.W", 2, 1); }},
        {"count-below-one", [] { setUpPolling(QList<const char*>() << "Main.W", 0); },
         [] { setUpPolling(QList<const char*>() << "Main.W", 1); }},
        {"count-below-one", [] { setUpPolling(QList<const char*>() << "Main.Row[0]", 0); },
         [] { setUpPolling(QList<const char*>() << "Main.Text", 0); }},
        {"count-below-one", [] { readOnce("Main.Row[0]", 0); }, [] { readOnce("Main.W", 0); }},
        {"count-below-one", [] { readOnce("Main.Text", 0); }, [] { readOnce("Main.Text", -1); }},
        {"count-past-variable", [] { set("Main.W", 4, 2); }, [] { set("Main.Row[0]", 4, 2); }},
        {"count-past-variable", [] { set("Main.Text", 18, 9); }, [] { set("Main.Text", 16, 8); }},
        {"bit-write-unread", [] { writeABit(false); }, [] { writeABit(true); }},
        {"bit-write-unread",
         [] {
             setUp();
             QByteArray bit;
             GetRegisterData("Main.W.b[3]", 0, 0, 0, &bit, 1);
             bit.fill('\1', 1);
             SetRegisterData("Main.W.b[3]", 0, QString(), 1, &bit, 1, 1, 1);
         },
         [] {
             setUpPolling(QList<const char*>() << "Main.W");
             QByteArray bit;
             GetRegisterData("Main.W.b[3]", 0, 0, 0, &bit, 1);
             turn();
             SetRegisterData("Main.W.b[3]", 0, QString(), 1, &bit, 1, 1, 1);
         }},
        {"rebuild-type",
         [] {
             setUpPolling(QList<const char*>() << "Main.W"
                                               << "Main.Axis[1]");
         },
         [] {
             setUpPolling(QList<const char*>() << "Main.W"
                                               << "Main.Nope");
         }},
    };
}

} // namespace tavmir::checked_tests
