// What a host runtime compiles against: the records, callbacks, entry points and
// globals of libtavmir_kx_tcp.so.1. Valid C++98 and later, for Qt 4.8 and Qt 5.
//
// Life of the driver, as a host sees it:
//
//   load library ──▶ SetComInfo ──▶ RegistCallBackFuncIntf ──▶ FlashLocalRegister
//        ──▶ PassVarName_2 ──▶ AddListReadVar / ReCreatReadVarList
//        ──▶ on the communication thread, again and again:
//              Protocol* p = ComCommunication();     null twice in a row: nothing to send
//              send p->frame, wait for the answer
//              RW_VAR* r = DataCom(&reply, received); r->status 0: will be resent
//        ──▶ on other threads: GetRegisterData, SetRegisterData,
//              AddListWriteVar, AddListOnceReadVar, ReCreatReadVarList
//        ──▶ unload library (no call may be running)
//
// Nothing here throws: a host that asks for more memory than there is ends the process.
// Diagnostic lines are written from inside calls, some with `listMutex` (a rebuild) or
// `cacheMutex` (a reply) held: a message handler must not call the driver. Results are integers.
// The driver keeps pointers to what the host owns (`ComInfo`, the local areas) and never frees
// them; what it stores from records and lists are copies.
//
// Record sizes and member positions are a binary interface: the host is compiled
// apart from the driver. No member may be added, removed or moved.
#ifndef TAVMIR_KX_TCP_HOST_INTERFACE_H
#define TAVMIR_KX_TCP_HOST_INTERFACE_H

#include <QtCore/QtGlobal>

#if QT_VERSION >= 0x060000
#error "Qt 6 keeps entries of a list inline, where those in flight would move: use Qt 4.8 or 5"
#endif

#include <QtCore/QByteArray>
#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QMap>
#include <QtCore/QMutex>
#include <QtCore/QString>

#if defined(__GNUC__)
#define TAVMIR_KX_TCP_EXPORT __attribute__((visibility("default")))
#else
#define TAVMIR_KX_TCP_EXPORT
#endif

// No exception leaves the driver, not one out of a host's callback either: it ends the process,
// rather than leave a lock behind that nobody opens again.
#if __cplusplus >= 201103L
#define TAVMIR_KX_TCP_NOTHROW noexcept
#else
#define TAVMIR_KX_TCP_NOTHROW throw()
#endif

// ---------------------------------------------------------------------------
// Records
// ---------------------------------------------------------------------------

// The host's connection record: at least these 19 words of 32 bits; a host may
// append words of its own. Owned by the host for the driver's whole lifetime.
// Words named `hostWord…` are the host's; the driver leaves 0 to 5 alone.
struct ComInfo {
    qint32 hostWord0;
    qint32 hostWord1;
    qint32 hostWord2;
    qint32 hostWord3;
    qint32 hostWord4;
    qint32 hostWord5;
    qint32 defaultStation; // word 6: station of every variable while `stationMode` is 0
    qint32 retryLimit;     // word 7: failures tolerated before a request is given up
    qint32 retryCount;     // word 8: failures since the last give-up; counted by the driver
    qint32 stationMode;    // word 9: not 0: a variable keeps its own station
    qint32 hostWord10;     // word 10: set to 0 by SetComInfo
    qint32 replyQuota;     // word 11: good replies that end a turn; 1 with each new request
    qint32 replyCount;     // word 12: good replies so far; 0 with each new request
    qint32 hostWord13;     // word 13: set to 0 by SetComInfo
    qint32 hostWord14;     // word 14: copied into `hostData3` of every element made
    qint32 hostWord15;     // word 15: copied into `hostData4` of every element made
    qint32 writeMode;      // word 16: 2: writes go to the controller; else caches only
    qint32 scanDone;       // word 17: 1: full pass done or nothing to send; 0: given up, rebuilt
    qint32 comStation;     // word 18: first argument of `varDoneCallback`
};

// One variable, or one element of it, as host and driver exchange it.
struct RW_VAR {
    qint32 hostKey;        // word 0: 0..11 also refines the failure codes
    qint32 varKey;         // word 1: (hostKey, varKey) names the variable in callbacks
    qint32 hostData2;      // word 2: not 0: the reply to this request carries no values
    qint32 hostData3;      // word 3: host value, carried
    qint32 hostData4;      // word 4: host value, carried
    qint32 status;         // word 5: read list: -1 marks the head in flight; result: code
    QString addressText;   // the address, for example "Main.Axis[1].Pos"
    QString auxText;       // host text, carried
    qint32 dataType;       // 1 bit, 4 word, 6 and 7 double word, 10 text word
    qint32 elementAddress; // in bits
    qint32 station;        // low byte goes into the request frame
    qint32 count;          // elements
    qint32 hostData12;     // host value, carried
    qint32 hostData13;     // host value, carried
    QByteArray value;      // write: value bytes in the order in which they are sent

    RW_VAR()
        : hostKey(0), varKey(0), hostData2(0), hostData3(0), hostData4(0), status(0), dataType(0),
          elementAddress(0), station(0), count(0), hostData12(0), hostData13(0)
    {
    }
};

// Kept for the host interface; no entry point makes one.
struct EXTENDVAR {
    qint32 hostData0;
    qint32 hostData1;
    qint32 hostData2;
    QByteArray value;

    EXTENDVAR() : hostData0(0), hostData1(0), hostData2(0) {}
};

// One request in flight: owned by the driver, valid until `DataCom` finishes it.
//
// Requests and answers begin with the same header, all fields big-endian:
//
//   0 .. 1          2 .. 3   4 .. 5              6         7          8               from 9
//   transaction id  0        bytes from 6 on     station   function   element count   entries
//
//   function   bits 'd' read, 'e' write; words and texts 'f', 'g'; double words 'l', 'm'
//   entry      of a read request: the element's address, 4 bytes; of a write request and of the
//              answer to a read: these and 1, 2 or 4 bytes of value; the answer to a write has none
//
// An answer belongs to the request when its bytes 0 to 3 and 6 to 8 are those of the request, its
// bytes 4 and 5 count what follows them, and the entries of the answer to a read have the addresses
// asked for, in their order; the host compares them before it hands the answer to `DataCom`, and
// goes on waiting when they differ. A refusal has the function with its top bit set besides, and
// its reason in byte 8: hand over 0 bytes.
struct Protocol {
    QByteArray frame;       // the bytes to send, exactly
    qint32 frameLength;     // bytes in `frame`
    qint32 replyLength;     // bytes expected; 0: no reply, -1: any length
    qint32 replyDataOffset; // reply bytes before the first element: 9 read, 0 write
    qint32 replyState;      // 0 when the record is made
    RW_VAR var;             // the first element of the batch
    qint32 hostData0;       // the last three are the host's; the driver never reads them
    qint32 hostData1;
    qint32 hostData2;

    Protocol()
        : frameLength(0), replyLength(0), replyDataOffset(0), replyState(0), hostData0(0),
          hostData1(0), hostData2(0)
    {
    }
};

// One node of the tree of label, variable and type descriptions. All offsets, addresses
// and sizes count bits.
struct Label_Type_Info {
    QString name;                       // compared exactly, letter case included
    quint16 typeFlags;                  // low byte: data type; 0x100 array, 0x200 structure
                                        // type, 0x400 a bit suffix may follow
    qint32 offset;                      // variable: its address; member: from structure start
    qint32 dimensionCount;              // array dimensions; read only with 0x100
    quint32 memberCount;                // leading `members` that a name search looks at
    QList<int> arrayBounds;             // radix of index texts, then low, high per dimension;
                                        // its size is high - low: high is above the last index
    QList<Label_Type_Info> members;     // members of a structure type
    QList<Label_Type_Info> elementType; // first entry: the structure type of a type-12
                                        // variable, or the variables of a label
    QString extraText;                  // carried
    qint32 extraValue1;                 // carried
    qint32 extraValue2;                 // carried
    QList<int> elementSizes;            // first entry: words of a text, stride of a structure
    QList<QString> extraTexts;          // carried

    Label_Type_Info()
        : typeFlags(0), offset(0), dimensionCount(0), memberCount(0), extraValue1(0), extraValue2(0)
    {
    }
};

// One polled variable, as the host hands it to `ReCreatReadVarList`. Positions are those
// of a 32-bit panel:
//
//   0    1    2        3    4 .. 7    8 .. 11   12 .. 15      16 .. 19
//   host host station  host host      auxText   addressText   count
struct HOSTVAR {
    quint8 hostByte0;
    quint8 hostByte1;
    quint8 station; // the variable's own station, used while `stationMode` is not 0
    quint8 hostByte3;
    qint32 hostWord4;
    QString auxText; // copied into `auxText` of every element
    QString addressText;
    qint32 count; // elements; for 32-bit types counted in 16-bit units

    HOSTVAR() : hostByte0(0), hostByte1(0), station(0), hostByte3(0), hostWord4(0), count(0) {}
};

// ---------------------------------------------------------------------------
// Callbacks
// ---------------------------------------------------------------------------

// Both are called from inside `DataCom`, on the thread that called it, with `listMutex`
// held: they must not block, and must not call `AddListWriteVar`, `AddListOnceReadVar`,
// `ReCreatReadVarList`, `ComCommunication` or `DataCom`, nor `SetRegisterData` while
// `writeMode` is 2; these would wait for that mutex for ever, or upset the turn that is about to
// end. `GetRegisterData` is allowed. What they return is ignored.
// Nor may they touch what that turn still uses: `readVarList`, `protocolList`, `batchElements`,
// `batchCount`, `cycleState`, `retVar`, the lock itself. `writeVarList` and `onceReadList` they
// may change; that, `commFailed`, `comStation` and another callback count from the next report on.

// A write or one-shot read of the variable (hostKey, varKey) ended.
//   station  ComInfo::comStation
//   result   1 completed, 2 failed
typedef int (*VarDoneCallback)(int station, int hostKey, int varKey, int result);

// A request was given up: the failures since the last give-up exceed `retryLimit`.
//   vars     always empty
//   hostKey  that of the variable whose poll ended last
//   flag     always 1
typedef int (*CommFailCallback)(QList<RW_VAR> vars, int hostKey, int flag);

// ---------------------------------------------------------------------------
// The driver context
// ---------------------------------------------------------------------------

// All state of the driver. One instance exists, `PLC_driver`. A host that reads or changes
// members follows the column of locks:
//   list     hold `listMutex`
//   cache    hold `cacheMutex`
//   station  hold `stationMutex`
//   cycle    only on the communication thread, between calls of the cycle
//   set-up   only before the cycle starts
// Read entries in place and keep no copy of a list: a list that is shared moves its entries when
// it is changed next, and the request in flight points at them. For the same reason the first
// `batchCount` entries of the list that it covers (`cycleState` says which) must not be taken out,
// replaced or moved until its turn has ended, under the lock neither.
// The driver itself never holds two of the mutexes. A callback that reads values takes
// `cacheMutex` while `listMutex` is held, so a host that locks `cacheMutex` itself must not wait
// for `listMutex` meanwhile.
class TAVMIR_KX_TCP_EXPORT Communication_Protocol
{
public:
    Communication_Protocol();
    ~Communication_Protocol();

    // Reply bytes that one element of `dataType` takes (4 address bytes and its value):
    // 5 for type 1, 8 for 6 and 7, 6 for every other number. Any thread, no lock.
    int get_data_type_size(int dataType);

    ComInfo* comInfo;                  // set-up: the host's record
    QList<RW_VAR> readVarList;         // cycle: polled, head is next; entries keep their place
                                       // in memory until the turn that covers them has ended
    QList<RW_VAR> pendingReadList;     // list: a rebuilt read list, taken when nothing is in flight
    QList<RW_VAR> writeVarList;        // list: writes in arrival order; those of the request in
                                       // flight keep their place in memory as polled ones do
    QList<RW_VAR> onceReadList;        // list: one-shot reads, at most 1024; likewise
    QList<RW_VAR> auxVarList;          // not used
    QList<Protocol> protocolList;      // cycle: requests; the head is in flight
    QList<EXTENDVAR> extendVarList;    // not used
    VarDoneCallback varDoneCallback;   // set-up
    CommFailCallback commFailCallback; // set-up
    QMutex listMutex;
    QMutex cacheMutex;
    QMutex stationMutex;
    QMap<int, int> stationMap;      // station: the disabled stations, each with value 0
    RW_VAR retVar;                  // cycle: what `DataCom` returns
    qint32 cycleState;              // cycle: in flight: 0 read, 1 write, 2 one-shot; 100 none yet
    qint32 writeTurns;              // cycle: write turns in a row
    qint32 onceReadTurns;           // cycle: one-shot turns in a row
    qint32 scanCount;               // turn ends towards a full pass
    bool commFailed;                // a request was given up and no good reply came since
    qint32 batchCount;              // cycle: valid entries of `batchElements`
    RW_VAR* batchElements[255];     // cycle: into the list that the request covers
    quint16 transactionCounter;     // cycle: transaction id of the next request
    unsigned char sendBuffer[1026]; // cycle: the frame under construction
    QHash<QString, Label_Type_Info> labelTable; // set-up: by label name; see PassVarName_2
    QHash<int, unsigned char> byteCache;        // cache: type 1, by element address
    QHash<int, unsigned short> wordCache;       // cache: types 4 and 10
    QHash<int, unsigned int> dwordCache;        // cache: types 6 and 7
};

// ---------------------------------------------------------------------------
// Globals
// ---------------------------------------------------------------------------

extern TAVMIR_KX_TCP_EXPORT Communication_Protocol PLC_driver;

// The host's local areas, as `FlashLocalRegister` stored them; null before. The driver
// never reads them.
extern TAVMIR_KX_TCP_EXPORT void* LB;
extern TAVMIR_KX_TCP_EXPORT void* LW;
extern TAVMIR_KX_TCP_EXPORT void* RWI;

// ---------------------------------------------------------------------------
// Entry points with plain names
// ---------------------------------------------------------------------------

extern "C" {

// Stores the connection record and sets its words 10 and 13 to 0.
//   comInfo  at least 19 words, owned by the host, kept until the library is unloaded.
//            A null pointer is a host error.
// Thread: any, before every other call. Locks: none.
TAVMIR_KX_TCP_EXPORT void SetComInfo(ComInfo* comInfo) TAVMIR_KX_TCP_NOTHROW;

// Stores the two callbacks; a null one is not called.
// Thread: any, before the cycle starts. Locks: none.
TAVMIR_KX_TCP_EXPORT void RegistCallBackFuncIntf(VarDoneCallback varDone,
                                                 CommFailCallback commFail) TAVMIR_KX_TCP_NOTHROW;

// Stores the three local areas in `LB`, `LW`, `RWI`.
// Thread: any, before the cycle starts. Locks: none.
TAVMIR_KX_TCP_EXPORT void FlashLocalRegister(void* lb, void* lw, void* rwi) TAVMIR_KX_TCP_NOTHROW;

// Adds the labels to the label table; a name already there is replaced, the last one wins.
//   labels  owned by the host, may be released after the call; null or empty: nothing happens.
//           Shared with the table until either is changed: a reference, pointer or iterator into
//           a record, of the list or of the table, that was taken before the call must not be
//           written through after it.
// Nothing is validated: an address that needs a record which contradicts itself (a member
// count above the number of members, bounds missing, no structure type) is refused when it
// is parsed; below a structure variable it resolves to data type 0 instead, which
// `ReCreatReadVarList` takes as a type that cannot be polled.
// Thread: any, while no other thread is inside a call that parses addresses
// (`AddListOnceReadVar`, `ReCreatReadVarList`, `GetRegisterData`, `SetRegisterData`) or this one.
// Locks: none.
TAVMIR_KX_TCP_EXPORT void PassVarName_2(QList<Label_Type_Info>* labels) TAVMIR_KX_TCP_NOTHROW;

// Appends a copy of the record to the polled list, unparsed and unchecked.
//   var     null is a host error, and so is a `dataType` other than 1, 4, 6, 7, 10: its
//           request would go out with the function code of the request before it.
//   result  entries in the polled list
// Thread: any, but only before the cycle starts. Locks: none.
TAVMIR_KX_TCP_EXPORT int AddListReadVar(const RW_VAR* var) TAVMIR_KX_TCP_NOTHROW;

// Queues a write of one element, as it stands.
//   var     `value` holds 1, 2 or 4 bytes for types 1; 4 and 10; 6 and 7, sent in that order;
//           missing bytes are sent as zero. `count` is 1: each further one would store a
//           value under a neighbouring key of the cache. `hostData2` must not be 0: with 0 the
//           acknowledgement would be decoded as values. Null is a host error. A `dataType`
//           that has no write encoding is dropped with a diagnostic line, and with it the
//           neighbours of that type in its batch; no callback reports them.
//   result  entries in the write list
// Thread: any but a callback. Locks: takes `listMutex`.
TAVMIR_KX_TCP_EXPORT int AddListWriteVar(const RW_VAR* var) TAVMIR_KX_TCP_NOTHROW;

// Parses `addressText` and queues one-element reads that are done once.
//   var     in: hostKey, varKey, addressText, station, count; the other members are copied
//           into each entry. `hostData2` must be 0, otherwise the values are not stored.
//           `count` counts elements, for the 32-bit types 16-bit units; it is cut to 1 for
//           an address that is no array element, and to the array's last dimension; for a
//           text it is cut to the text's width only.
//           out: dataType, station, count = 1, elementAddress behind the last element; when
//           the data type cannot be read, dataType and station only; when the address is
//           refused, nothing. Null is a host error.
//   result  entries in the one-shot list (at most 1024: what does not fit is dropped), or 0
//           when the address is refused or its data type cannot be read
// Elements already queued are not queued twice.
// Thread: any but a callback. Locks: takes `listMutex` after parsing.
TAVMIR_KX_TCP_EXPORT int AddListOnceReadVar(RW_VAR* var) TAVMIR_KX_TCP_NOTHROW;

// Rebuilds the polled list out of the host's variables: one entry per element, without
// duplicates, ordered by class (bits, words, double words) and address. The cycle takes it
// over when nothing is in flight. Writes one diagnostic line for each entry of the new list.
//   vars    owned by the host; null counts as empty. A refused address is skipped with a
//           diagnostic line. A text that is no array element makes one entry, its first word.
//   result  entries of the new list; 0 also when the list is empty or a variable's data type
//           cannot be polled
// An address whose data type is not 1, 4, 6, 7 or 10 is a host error: the call returns 0
// with `listMutex` still locked, and the next call into the lists waits for ever: check
// addresses first.
// Thread: any but a callback. Locks: takes `listMutex`.
TAVMIR_KX_TCP_EXPORT int ReCreatReadVarList(QList<HOSTVAR>* vars) TAVMIR_KX_TCP_NOTHROW;

// The request to send next, or null when there is none (`scanDone` is then 1).
//   result  owned by the driver; valid until `DataCom` returns. After a failure the same
//           request is returned again. With nothing to poll, null also stands between five
//           turns of writes or one-shot reads and the next five: a host that sleeps when there
//           is nothing to send asks once more before it does.
// Thread: the communication thread only. Locks: takes `listMutex` for a short time.
TAVMIR_KX_TCP_EXPORT Protocol* ComCommunication() TAVMIR_KX_TCP_NOTHROW;

// Takes the answer to the request in flight.
//   reply     the received bytes; may be null when nothing came
//   received  number of bytes received, 0 when nothing came in time
//   result    the driver's result record; `status` is
//               0         failed, the request will be returned again
//               1         good (or nothing was in flight)
//               11..22    given up: reply refused
//               41..52    given up: no answer
//               71..82    given up: wrong length
//             each band plus `hostKey` of the request's first element when that is 0..11
// A reply is judged by its length alone, and stored by position under the addresses that
// were asked for: the host hands over only the reply that belongs to the request (see `Protocol`).
// Thread: the communication thread only. Locks: takes `cacheMutex`, then `listMutex`, which
// is held while the callbacks run.
TAVMIR_KX_TCP_EXPORT RW_VAR* DataCom(QByteArray* reply, int received) TAVMIR_KX_TCP_NOTHROW;

// Copies cached values into `data`, least significant byte first; a value never received
// reads as zero.
//   address  an address text; "label.variable[index].member" or with a bit "….b[5]"
//   data     receives: type 1: `count` bytes; 4 and 10: 2 bytes an element; 6 and 7: 4 bytes
//            for each two of `count`; a bit address: `count` bytes of 0 or 1. A text yields
//            all its words, an array element at most the size of its last dimension, any other
//            address one element; the rest stays zero. Null: the values go nowhere.
//   count    elements; for types 6 and 7 in 16-bit units; below 1: no elements
//   result   0 when the address is refused (`data` is then 2 * count zero bytes), else 1
// Thread: any, also a callback; not beside `PassVarName_2`. Locks: takes `cacheMutex`.
TAVMIR_KX_TCP_EXPORT int GetRegisterData(const QString& address, int unused2, int unused3,
                                         int unused4, QByteArray* data,
                                         int count) TAVMIR_KX_TCP_NOTHROW;

// Hands in values to write: queued for the controller while `writeMode` is 2, otherwise only
// stored in the caches.
//   address  as for GetRegisterData
//   text     copied into `auxText`
//   station  used while `stationMode` is not 0
//   data     the values, least significant byte first, laid out as GetRegisterData returns
//            them; missing bytes are written as zero; a bit address: one byte a bit. Null
//            counts as empty.
//   count    elements; for types 6 and 7 in 16-bit units; not used for a bit address
//   hostKey, varKey  name the write in `varDoneCallback`
//   result   0 when the address or its data type is refused, else the number of queued
//            writes, read without a lock: informative only
// The cache shows a queued value from the time its request is built; when the write fails, it
// goes on showing it until the element is read again.
// A bit write sends the whole word with the named bits changed, the others as the cache
// holds them (zero when never read): read the word first.
// Thread: any; two things are not guarded by a lock and the host must keep them apart from
// the cycle and from each other: a bit write looks its word up in the cache, and the result
// is the unguarded size of the write list. Not beside `PassVarName_2`. Locks: takes
// `listMutex` to queue (so not from a callback while `writeMode` is 2), `cacheMutex` to store.
TAVMIR_KX_TCP_EXPORT int SetRegisterData(const QString& address, int unused2, const QString& text,
                                         int station, QByteArray* data, int count, int hostKey,
                                         int varKey) TAVMIR_KX_TCP_NOTHROW;

// Marks a station as disabled (`enable` 0) or enabled (1); other values do nothing. A
// negative station enables all. Requests are not affected: the host asks
// `Ethernetcontains`. Thread: any. Locks: takes `stationMutex`.
TAVMIR_KX_TCP_EXPORT void EnCommStation(int station, int enable) TAVMIR_KX_TCP_NOTHROW;

// The same under another name.
TAVMIR_KX_TCP_EXPORT void EnableEthernet(int station, int enable) TAVMIR_KX_TCP_NOTHROW;

// Always -1: moving addresses is not supported.
TAVMIR_KX_TCP_EXPORT int PLCAddressChangeIntef() TAVMIR_KX_TCP_NOTHROW;

// Always 1.
TAVMIR_KX_TCP_EXPORT int QueryFinishFlag() TAVMIR_KX_TCP_NOTHROW;

} // extern "C"

// ---------------------------------------------------------------------------
// Entry points with C++ names
// ---------------------------------------------------------------------------

// True when the station is disabled. Thread: any. Locks: takes `stationMutex`.
TAVMIR_KX_TCP_EXPORT bool Ethernetcontains(int station) TAVMIR_KX_TCP_NOTHROW;

// A message handler of Qt 4's shape that appends each message with a time stamp to
// "/tmp/debug.log"; the host may install it (the driver never does). A line that cannot be
// written is lost silently. A host that installed it takes it out before the library is unloaded.
//   type  not looked at
//   msg   in the locale's encoding; null counts as empty
// Thread: any; takes no lock. Lines of several threads may interleave.
TAVMIR_KX_TCP_EXPORT void customMessageHandler(QtMsgType type,
                                               const char* msg) TAVMIR_KX_TCP_NOTHROW;

#endif
