// A host as somebody else would write it: its own declarations of the records and calls, made from
// the published tables, and the library's plain names looked up at run time. It must never include
// our header: that the two agree is what it shows.
#ifndef TAVMIR_TESTS_ABI_FOREIGN_HOST_H
#define TAVMIR_TESTS_ABI_FOREIGN_HOST_H

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QString>

namespace foreign
{

// Records.

struct Connection {
    int words[24]; // the driver knows the first 19; the rest is ours
};

struct Variable {
    int owner;
    int number;
    int noValues;
    int spare3;
    int spare4;
    int result;
    QString address;
    QString comment;
    int type;
    int position;
    int station;
    int elements;
    int spare12;
    int spare13;
    QByteArray bytes;
};

struct Request {
    QByteArray frame;
    int frameBytes;
    int answerBytes;
    int answerHeader;
    int state;
    Variable first;
    int spare0;
    int spare1;
    int spare2;
};

struct Label {
    QString name;
    unsigned short flags;
    int place;
    int dimensions;
    unsigned int memberCount;
    QList<int> bounds;
    QList<Label> members;
    QList<Label> type;
    QString text;
    int value1;
    int value2;
    QList<int> sizes;
    QList<QString> texts;
};

struct Polled {
    unsigned char byte0;
    unsigned char byte1;
    unsigned char station;
    unsigned char byte3;
    int word4;
    QString comment;
    QString address;
    int elements;
};

// Calls, as they are looked up.

typedef int (*VariableDone)(int link, int owner, int number, int outcome);
typedef int (*GivenUp)(QList<Variable> variables, int owner, int flag);

struct Driver {
    void (*setComInfo)(Connection*);
    void (*registerCallbacks)(VariableDone, GivenUp);
    void (*flashLocalRegister)(void*, void*, void*);
    void (*passLabels)(QList<Label>*);
    int (*addRead)(const Variable*);
    int (*addWrite)(const Variable*);
    int (*addOnceRead)(Variable*);
    int (*rebuild)(QList<Polled>*);
    Request* (*nextRequest)();
    Variable* (*answer)(QByteArray*, int);
    int (*get)(const QString&, int, int, int, QByteArray*, int);
    int (*set)(const QString&, int, const QString&, int, QByteArray*, int, int, int);
    void (*enableStation)(int, int);
    void (*enableEthernet)(int, int);
    int (*moveAddresses)();
    int (*finished)();
    void** localBits;
    void** localWords;
    void** localRegisters;
    void* context;
};

// Fills `driver` from a loaded library.
//   result  the first name that is missing, or empty
QString lookUp(void* library, Driver& driver);

} // namespace foreign

#endif
