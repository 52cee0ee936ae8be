// Tells the thread sanitizer of Qt's locks, which an uninstrumented QtCore takes unseen: what
// QMutex and QWaitCondition order is then ordered for the sanitizer too, and a missing lock
// shows as a race instead of hiding behind a suppression.
//
// And of std::timed_mutex waiting by the steady clock: the sanitizer knows the call for the wall
// clock only, and would take the unlock for one of a mutex that is not locked.
//
// A library to preload (LD_PRELOAD): it stands in front of QtCore, announces each call, and
// hands it on. In programs without the sanitizer the announcements are left out.
#include <dlfcn.h>

#include <cstdlib>

#include <pthread.h>
#include <time.h>

extern "C" {
// From the sanitizer's run-time; absent in programs without it.
void __tsan_mutex_pre_lock(void* mutex, unsigned flags) __attribute__((weak));
void __tsan_mutex_post_lock(void* mutex, unsigned flags, int recursion) __attribute__((weak));
int __tsan_mutex_pre_unlock(void* mutex, unsigned flags) __attribute__((weak));
void __tsan_mutex_post_unlock(void* mutex, unsigned flags) __attribute__((weak));
void __tsan_mutex_destroy(void* mutex, unsigned flags) __attribute__((weak));
}

namespace
{

// As <sanitizer/tsan_interface.h> numbers them.
const unsigned kReentrant = 1u << 1;
const unsigned kTryLock = 1u << 4;
const unsigned kTryLockFailed = 1u << 5;

template <typename Function> Function next(const char* name)
{
    void* found = dlsym(RTLD_NEXT, name);
    if (found == nullptr)
        abort();
    return reinterpret_cast<Function>(found);
}

void announceLock(void* mutex, unsigned flags)
{
    if (__tsan_mutex_pre_lock)
        __tsan_mutex_pre_lock(mutex, kReentrant | flags);
}

void announceLocked(void* mutex, unsigned flags)
{
    if (__tsan_mutex_post_lock)
        __tsan_mutex_post_lock(mutex, kReentrant | flags, 1);
}

void announceUnlock(void* mutex)
{
    if (__tsan_mutex_pre_unlock)
        __tsan_mutex_pre_unlock(mutex, 0);
}

void announceUnlocked(void* mutex)
{
    if (__tsan_mutex_post_unlock)
        __tsan_mutex_post_unlock(mutex, 0);
}

} // namespace

extern "C" {

int pthread_mutex_clocklock(pthread_mutex_t* mutex, clockid_t clock, const struct timespec* end)
{
    const long kSecond = 1000000000;
    struct timespec now = {};
    struct timespec wall = {};
    clock_gettime(clock, &now);
    clock_gettime(CLOCK_REALTIME, &wall);
    wall.tv_sec += end->tv_sec - now.tv_sec;
    wall.tv_nsec += end->tv_nsec - now.tv_nsec;
    if (wall.tv_nsec < 0) {
        wall.tv_nsec += kSecond;
        --wall.tv_sec;
    }
    if (wall.tv_nsec >= kSecond) {
        wall.tv_nsec -= kSecond;
        ++wall.tv_sec;
    }
    return pthread_mutex_timedlock(mutex, &wall);
}

// QMutex::lock()
void _ZN6QMutex4lockEv(void* mutex)
{
    static const auto real = next<void (*)(void*)>("_ZN6QMutex4lockEv");
    announceLock(mutex, 0);
    real(mutex);
    announceLocked(mutex, 0);
}

// QMutex::tryLock(int)
bool _ZN6QMutex7tryLockEi(void* mutex, int timeout)
{
    static const auto real = next<bool (*)(void*, int)>("_ZN6QMutex7tryLockEi");
    announceLock(mutex, kTryLock);
    const bool locked = real(mutex, timeout);
    announceLocked(mutex, locked ? kTryLock : kTryLock | kTryLockFailed);
    return locked;
}

// QMutex::unlock()
void _ZN6QMutex6unlockEv(void* mutex)
{
    static const auto real = next<void (*)(void*)>("_ZN6QMutex6unlockEv");
    announceUnlock(mutex);
    real(mutex);
    announceUnlocked(mutex);
}

// QMutex::~QMutex()
void _ZN6QMutexD1Ev(void* mutex)
{
    static const auto real = next<void (*)(void*)>("_ZN6QMutexD1Ev");
    real(mutex);
    if (__tsan_mutex_destroy)
        __tsan_mutex_destroy(mutex, 0);
}

// QWaitCondition::wait(QMutex*, unsigned long): gives the mutex back while it waits.
bool _ZN14QWaitCondition4waitEP6QMutexm(void* condition, void* mutex, unsigned long time)
{
    static const auto real =
        next<bool (*)(void*, void*, unsigned long)>("_ZN14QWaitCondition4waitEP6QMutexm");
    announceUnlock(mutex);
    announceUnlocked(mutex);
    const bool woken = real(condition, mutex, time);
    announceLock(mutex, 0);
    announceLocked(mutex, 0);
    return woken;
}

// QWaitCondition::wait(QMutex*, QDeadlineTimer)
bool _ZN14QWaitCondition4waitEP6QMutex14QDeadlineTimer(void* condition, void* mutex, long long t1,
                                                       unsigned long long t2)
{
    static const auto real = next<bool (*)(void*, void*, long long, unsigned long long)>(
        "_ZN14QWaitCondition4waitEP6QMutex14QDeadlineTimer");
    announceUnlock(mutex);
    announceUnlocked(mutex);
    const bool woken = real(condition, mutex, t1, t2);
    announceLock(mutex, 0);
    announceLocked(mutex, 0);
    return woken;
}

} // extern "C"
