// What the library file offers and needs, as the linker's tools see it.
#include "support/child_process.h"
#include "support/qt_printers.h"

#include <QtCore/QRegExp>
#include <QtCore/QSet>

#include <gtest/gtest.h>

using namespace tavmir::test;

namespace
{

QStringList plainNames()
{
    return QStringList() << "SetComInfo"
                         << "RegistCallBackFuncIntf"
                         << "FlashLocalRegister"
                         << "PassVarName_2"
                         << "AddListReadVar"
                         << "AddListWriteVar"
                         << "AddListOnceReadVar"
                         << "ReCreatReadVarList"
                         << "ComCommunication"
                         << "DataCom"
                         << "GetRegisterData"
                         << "SetRegisterData"
                         << "EnCommStation"
                         << "EnableEthernet"
                         << "PLCAddressChangeIntef"
                         << "QueryFinishFlag";
}

QStringList globals()
{
    return QStringList() << "PLC_driver"
                         << "LB"
                         << "LW"
                         << "RWI";
}

// As the demangler prints them.
QStringList cppNames()
{
    return QStringList()
           << "Communication_Protocol::Communication_Protocol()"
           << "Communication_Protocol::~Communication_Protocol()"
           << "Communication_Protocol::get_data_type_size(int)"
           << "passRetValue(RW_VAR const&, RW_VAR&)"
           << "Ethernetcontains(int)"
           << "GetDriverReturnValue(int)"
           << "SwitchErrorReturn(int)"
           << "DealDataOfLocalArea(QByteArray*, int)"
           << "DealDataOfRemoteArea(QByteArray*, int)"
           << "customMessageHandler(QtMsgType, char const*)"
           << "get_label_address_info(QString const&, ControlInformationM&)"
           << "get_label_address_1(Label_Type_Info const&, QStringList const&, int, "
              "ControlInformationM&)"
           << "get_label_address_2(Label_Type_Info const&, QStringList const&, int, "
              "ControlInformationM&)"
           << "get_label_address_array_memory_index(QString, int, QList<int> const&, unsigned "
              "int&, unsigned int*)"
           << "get_label_address_query(QStringList const&, int)"
           << "ReadRegister()"
           << "ReadAnalog()"
           << "Remote_ReadVar(RW_VAR*)"
           << "WriteRegister()"
           << "WriteAnalog()"
           << "Remote_WriteVar(RW_VAR*)"
           << "CheckGetData(QByteArray const*, int)"
           << "SaveToLocalDataErea(QByteArray*)"
           << "CalSUM(unsigned char*, unsigned short)"
           << "CalCRC(unsigned char*, unsigned short)"
           << "CalLRC(unsigned char*, unsigned short)"
           << "CalXOR(unsigned char*, unsigned short)"
           << "DigitalToASCII(int)"
           << "ASCIIToDigital(int)"
           << "WriteDataToLocal(RW_VAR*)";
}

struct Symbol {
    char kind;
    QString name;
};

QList<Symbol> exportedSymbols()
{
    QList<Symbol> symbols;
    const ProcessResult nm =
        runProcess(TAVMIR_NM, QStringList() << "-D"
                                            << "-C"
                                            << "--defined-only" << TAVMIR_DRIVER_FILE);
    EXPECT_TRUE(nm.finished && nm.exitStatus == 0) << nm.errors.toUtf8().constData();
    QRegExp line("[0-9a-fA-F]+ (.) (.*)");
    for (const QString& text : nm.output.split('\n')) {
        if (line.exactMatch(text)) {
            symbols << Symbol{line.cap(1).at(0).toLatin1(), line.cap(2)};
        }
    }
    return symbols;
}

// Long type names of the Qt that is used instead of the short ones of the list.
QString normalised(QString name)
{
    name.replace("QList<QString>", "QStringList");
    return name;
}

QSet<QString> exportedNames()
{
    QSet<QString> names;
    for (const Symbol& symbol : exportedSymbols()) {
        names << normalised(symbol.name);
    }
    return names;
}

QStringList dynamicEntries(const char* tag)
{
    QStringList values;
    const ProcessResult readelf =
        runProcess(TAVMIR_READELF, QStringList() << "-dW" << TAVMIR_DRIVER_FILE);
    EXPECT_TRUE(readelf.finished && readelf.exitStatus == 0);
    QRegExp line(QString(".*\\(%1\\).*\\[(.*)\\].*").arg(QLatin1String(tag)));
    for (const QString& text : readelf.output.split('\n')) {
        if (line.exactMatch(text)) {
            values << line.cap(1);
        }
    }
    return values;
}

TEST(LibraryFile, OffersEveryPlainName)
{
    const QSet<QString> names = exportedNames();
    for (const QString& name : plainNames() + globals()) {
        EXPECT_TRUE(names.contains(name)) << name.toUtf8().constData();
    }
}

TEST(LibraryFile, OffersEveryCppName)
{
    const QSet<QString> names = exportedNames();
    for (const QString& name : cppNames()) {
        EXPECT_TRUE(names.contains(name)) << name.toUtf8().constData();
    }
}

TEST(LibraryFile, OffersNothingElseOfItsOwn)
{
    if (TAVMIR_INSTRUMENTED) {
        GTEST_SKIP() << "the instrumentation adds names of its own to the file";
    }
    const QStringList offered = plainNames() + globals() + cppNames();
    for (const Symbol& symbol : exportedSymbols()) {
        const bool instantiatedTemplate = QByteArray("WVuwv").contains(symbol.kind);
        if (instantiatedTemplate) {
            continue;
        }
        EXPECT_TRUE(offered.contains(normalised(symbol.name)))
            << symbol.kind << ' ' << symbol.name.toUtf8().constData();
    }
}

TEST(LibraryFile, BearsItsSoname)
{
    EXPECT_EQ(dynamicEntries("SONAME"), QStringList() << "libtavmir_kx_tcp.so.1");
}

TEST(LibraryFile, NeedsQtCoreAndTheRuntimesOnly)
{
    if (TAVMIR_INSTRUMENTED) {
        GTEST_SKIP() << "the instrumentation needs its own runtime";
    }
    const QRegExp runtime(QLatin1String(
        "libstdc\\+\\+\\.so\\.6|libgcc_s\\.so\\.1|lib(c|m|pthread)\\.so\\.6|libpthread\\.so\\.0|"
        "ld-linux.*"));
    const QRegExp qtCore("libQt5Core\\.so\\.5|libQtCore\\.so\\.4");
    int qtCores = 0;
    for (const QString& needed : dynamicEntries("NEEDED")) {
        if (qtCore.exactMatch(needed)) {
            ++qtCores;
            continue;
        }
        EXPECT_TRUE(runtime.exactMatch(needed)) << needed.toUtf8().constData();
    }
    EXPECT_EQ(qtCores, 1);
}

} // namespace
