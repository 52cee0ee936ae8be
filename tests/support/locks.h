// Whether a call takes a mutex, seen from outside.
#ifndef TAVMIR_TESTS_SUPPORT_LOCKS_H
#define TAVMIR_TESTS_SUPPORT_LOCKS_H

#include <QtCore/QMutex>

#include <functional>

namespace tavmir
{
namespace test
{

// Runs `call` on a thread of its own while this thread holds `mutex`; true when it waited for
// the mutex and ended after its release. A call that takes the mutex can never end early, so
// a right driver never fails this by bad timing.
bool waitsFor(QMutex& mutex, const std::function<void()>& call);

// The same, but true when `call` ended while the mutex was held.
bool endsWhileHeld(QMutex& mutex, const std::function<void()>& call);

} // namespace test
} // namespace tavmir

#endif
