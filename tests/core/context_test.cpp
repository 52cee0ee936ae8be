// The driver context: what its construction leaves and says, and the order of its members.
#include "support/driver_test.h"

#include <cstdint>
#include <memory>
#include <type_traits>
#include <vector>

using namespace tavmir::test;

namespace
{

class Context : public DriverTest
{
};

const char* const kName = "Communication_Protocol";

TEST_F(Context, ConstructionWritesOneTraceLine)
{
    const std::unique_ptr<Communication_Protocol> context(new Communication_Protocol);
    const QStringList expected(
        expectedLine({kName, " ", quoted(kName), " ", 46, "TRACE ", "----"}));
    EXPECT_EQ(diagnostics.lines(), expected);
    ASSERT_EQ(diagnostics.types().size(), 1u);
    EXPECT_EQ(diagnostics.types().front(), QtDebugMsg);
}

TEST_F(Context, ConstructionGivesEveryMemberItsDefault)
{
    static Communication_Protocol context;
    EXPECT_EQ(context.comInfo, nullptr);
    EXPECT_TRUE(context.readVarList.isEmpty());
    EXPECT_TRUE(context.pendingReadList.isEmpty());
    EXPECT_TRUE(context.writeVarList.isEmpty());
    EXPECT_TRUE(context.onceReadList.isEmpty());
    EXPECT_TRUE(context.auxVarList.isEmpty());
    EXPECT_TRUE(context.protocolList.isEmpty());
    EXPECT_TRUE(context.extendVarList.isEmpty());
    EXPECT_EQ(context.varDoneCallback, nullptr);
    EXPECT_EQ(context.commFailCallback, nullptr);
    EXPECT_TRUE(isFree(context.listMutex));
    EXPECT_TRUE(isFree(context.cacheMutex));
    EXPECT_TRUE(isFree(context.stationMutex));
    EXPECT_TRUE(context.stationMap.isEmpty());
    EXPECT_EQ(context.retVar.status, 0);
    EXPECT_EQ(context.retVar.hostKey, 0);
    EXPECT_TRUE(context.retVar.addressText.isEmpty());
    EXPECT_TRUE(context.retVar.value.isEmpty());
    EXPECT_EQ(context.cycleState, 100);
    EXPECT_EQ(context.writeTurns, 0);
    EXPECT_EQ(context.onceReadTurns, 0);
    EXPECT_EQ(context.scanCount, 0);
    EXPECT_FALSE(context.commFailed);
    EXPECT_EQ(context.batchCount, 0);
    for (const RW_VAR* batchElement : context.batchElements) {
        EXPECT_EQ(batchElement, nullptr);
    }
    EXPECT_EQ(context.transactionCounter, 0);
    for (const unsigned char byte : context.sendBuffer) {
        EXPECT_EQ(byte, 0);
    }
    EXPECT_TRUE(context.labelTable.isEmpty());
    EXPECT_TRUE(context.byteCache.isEmpty());
    EXPECT_TRUE(context.wordCache.isEmpty());
    EXPECT_TRUE(context.dwordCache.isEmpty());
}

TEST_F(Context, MutexesAreNotRecursive)
{
    static Communication_Protocol context;
    for (QMutex* mutex : {&context.listMutex, &context.cacheMutex, &context.stationMutex}) {
        mutex->lock();
        EXPECT_FALSE(mutex->tryLock());
        mutex->unlock();
    }
}

TEST_F(Context, DestructionCallsNobodyAndLeavesTheHostRecordAlone)
{
    HostRecord untouched;
    std::unique_ptr<Communication_Protocol> context(new Communication_Protocol);
    context->comInfo = &untouched.info;
    context->varDoneCallback = &CallbackRecorder::varDoneFunction;
    context->commFailCallback = &CallbackRecorder::commFailFunction;
    context->writeVarList.append(RW_VAR());
    context->onceReadList.append(RW_VAR());
    context->protocolList.append(Protocol());
    context->cycleState = 1;
    diagnostics.clear();
    context.reset();
    EXPECT_TRUE(callbacks.done.empty());
    EXPECT_TRUE(callbacks.failed.empty());
    EXPECT_TRUE(untouched.changedWords().empty());
    EXPECT_EQ(diagnostics.lines(), QStringList());
}

struct Place {
    const char* name;
    std::uintptr_t begin;
    std::size_t size;
    std::size_t alignment;
};

template <typename Member> Place placeOf(const char* name, const Member& member)
{
    return Place{name, reinterpret_cast<std::uintptr_t>(&member), sizeof member, alignof(Member)};
}

#define PLACE(member) placeOf(#member, context.member)

TEST_F(Context, HasItsTwentyEightMembersInOrderAndNothingBetween)
{
    static Communication_Protocol context;
    const std::vector<Place> places = {
        PLACE(comInfo),          PLACE(readVarList),        PLACE(pendingReadList),
        PLACE(writeVarList),     PLACE(onceReadList),       PLACE(auxVarList),
        PLACE(protocolList),     PLACE(extendVarList),      PLACE(varDoneCallback),
        PLACE(commFailCallback), PLACE(listMutex),          PLACE(cacheMutex),
        PLACE(stationMutex),     PLACE(stationMap),         PLACE(retVar),
        PLACE(cycleState),       PLACE(writeTurns),         PLACE(onceReadTurns),
        PLACE(scanCount),        PLACE(commFailed),         PLACE(batchCount),
        PLACE(batchElements),    PLACE(transactionCounter), PLACE(sendBuffer),
        PLACE(labelTable),       PLACE(byteCache),          PLACE(wordCache),
        PLACE(dwordCache)};
    ASSERT_EQ(places.size(), 28u);
    std::uintptr_t next = reinterpret_cast<std::uintptr_t>(&context);
    for (const Place& place : places) {
        next = (next + place.alignment - 1) / place.alignment * place.alignment;
        EXPECT_EQ(place.begin, next) << place.name;
        next = place.begin + place.size;
    }
    const std::size_t alignment = alignof(Communication_Protocol);
    const std::size_t used = next - reinterpret_cast<std::uintptr_t>(&context);
    EXPECT_EQ(sizeof context, (used + alignment - 1) / alignment * alignment);
}

TEST_F(Context, MembersHaveTheWidthsOfTheInterface)
{
    typedef Communication_Protocol C;
    ::testing::StaticAssertTypeEq<ComInfo*, decltype(C::comInfo)>();
    ::testing::StaticAssertTypeEq<QList<RW_VAR>, decltype(C::readVarList)>();
    ::testing::StaticAssertTypeEq<QList<RW_VAR>, decltype(C::pendingReadList)>();
    ::testing::StaticAssertTypeEq<QList<RW_VAR>, decltype(C::writeVarList)>();
    ::testing::StaticAssertTypeEq<QList<RW_VAR>, decltype(C::onceReadList)>();
    ::testing::StaticAssertTypeEq<QList<RW_VAR>, decltype(C::auxVarList)>();
    ::testing::StaticAssertTypeEq<QList<Protocol>, decltype(C::protocolList)>();
    ::testing::StaticAssertTypeEq<QList<EXTENDVAR>, decltype(C::extendVarList)>();
    ::testing::StaticAssertTypeEq<QMutex, decltype(C::listMutex)>();
    ::testing::StaticAssertTypeEq<QMutex, decltype(C::cacheMutex)>();
    ::testing::StaticAssertTypeEq<QMutex, decltype(C::stationMutex)>();
    ::testing::StaticAssertTypeEq<QMap<int, int>, decltype(C::stationMap)>();
    ::testing::StaticAssertTypeEq<RW_VAR, decltype(C::retVar)>();
    ::testing::StaticAssertTypeEq<qint32, decltype(C::cycleState)>();
    ::testing::StaticAssertTypeEq<qint32, decltype(C::writeTurns)>();
    ::testing::StaticAssertTypeEq<qint32, decltype(C::onceReadTurns)>();
    ::testing::StaticAssertTypeEq<qint32, decltype(C::scanCount)>();
    ::testing::StaticAssertTypeEq<bool, decltype(C::commFailed)>();
    ::testing::StaticAssertTypeEq<qint32, decltype(C::batchCount)>();
    ::testing::StaticAssertTypeEq<RW_VAR* [255], decltype(C::batchElements)>();
    ::testing::StaticAssertTypeEq<quint16, decltype(C::transactionCounter)>();
    ::testing::StaticAssertTypeEq<unsigned char[1026], decltype(C::sendBuffer)>();
    ::testing::StaticAssertTypeEq<QHash<QString, Label_Type_Info>, decltype(C::labelTable)>();
    ::testing::StaticAssertTypeEq<QHash<int, unsigned char>, decltype(C::byteCache)>();
    ::testing::StaticAssertTypeEq<QHash<int, unsigned short>, decltype(C::wordCache)>();
    ::testing::StaticAssertTypeEq<QHash<int, unsigned int>, decltype(C::dwordCache)>();
    EXPECT_FALSE(std::is_polymorphic<C>::value);
}

} // namespace
