#include "platform/tasks/MainThread.h"

#include <QtGlobal>

#include <unistd.h>

namespace platform {

bool isMainThread() {
    thread_local const bool isFirst = ::gettid() == ::getpid();
    return isFirst;
}

void assertMainThread([[maybe_unused]] const char* caller) {
#ifndef QT_NO_DEBUG
    if (!isMainThread()) qFatal("%s is for the main thread only", caller);
#endif
}

} // namespace platform
