// A minimal host that links the driver: it polls one word of a controller that this file plays.
#include <tavmir_kx_tcp/host_interface.h>

#include <cstdio>

int main()
{
    static ComInfo link = ComInfo();
    SetComInfo(&link);
    RW_VAR element;
    element.dataType = 4;
    element.elementAddress = 3000;
    element.station = 1;
    element.count = 1;
    if (AddListReadVar(&element) != 1)
        return 1;
    const Protocol* request = ComCommunication();
    if (request == 0)
        return 1;
    std::printf("request %s\n", request->frame.toHex().constData());
    QByteArray reply = QByteArray::fromHex("00000000000901660100000bb81234");
    const int status = DataCom(&reply, reply.size())->status;
    std::printf("status %d, cached %04x\n", status, unsigned(PLC_driver.wordCache.value(3000)));
    return 0;
}
