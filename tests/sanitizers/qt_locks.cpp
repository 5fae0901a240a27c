// Preloaded into the tests of the thread sanitizer's build. Qt itself is not built with the
// sanitizer, which so does not see Qt's locks and would report everything that they guard. This
// library stands in front of them and tells.

#include <QtCore/QDeadlineTimer>
#include <QtCore/QMutex>
#include <QtCore/QWaitCondition>

#include <dlfcn.h>

extern "C" void __tsan_acquire(void *address);
extern "C" void __tsan_release(void *address);

namespace
{

// The function of that name that this library hides.
template <class Function>
Function *hidden(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

} // namespace

void QMutex::lock() noexcept
{
    static auto *const lock = hidden<void(QMutex *)>("_ZN6QMutex4lockEv");
    lock(this);
    __tsan_acquire(this);
}

bool QMutex::tryLock(int timeout) noexcept
{
    static auto *const tryLock = hidden<bool(QMutex *, int)>("_ZN6QMutex7tryLockEi");
    const bool locked = tryLock(this, timeout);
    if (locked) {
        __tsan_acquire(this);
    }
    return locked;
}

void QMutex::unlock() noexcept
{
    static auto *const unlock = hidden<void(QMutex *)>("_ZN6QMutex6unlockEv");
    __tsan_release(this);
    unlock(this);
}

bool QWaitCondition::wait(QMutex *mutex, unsigned long time)
{
    static auto *const wait = hidden<bool(QWaitCondition *, QMutex *, unsigned long)>(
        "_ZN14QWaitCondition4waitEP6QMutexm");
    __tsan_release(mutex);
    const bool woken = wait(this, mutex, time);
    __tsan_acquire(mutex);
    return woken;
}

bool QWaitCondition::wait(QMutex *mutex, QDeadlineTimer deadline)
{
    static auto *const wait = hidden<bool(QWaitCondition *, QMutex *, QDeadlineTimer)>(
        "_ZN14QWaitCondition4waitEP6QMutex14QDeadlineTimer");
    __tsan_release(mutex);
    const bool woken = wait(this, mutex, deadline);
    __tsan_acquire(mutex);
    return woken;
}
