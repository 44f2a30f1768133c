#include "yApi/yThread.h"

#include "yApi/yDuration.h"
#include "yApi/yFault.h"

#include <condition_variable>
#include <mutex>
#include <new>
#include <pthread.h>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

struct yThreadObject {
    yThreadObject(std::function<yStatus()> function, yAllocator allocator)
        : allocator(allocator)
        , function(std::move(function)) {}

    void Run() {
        ApplyName();
        yStatus status = yERROR;
        try {
            status = function();
        } catch (...) {
            status = yERROR; // an exception of a thread's function must not end the process
        }
        const std::lock_guard guard(mutex);
        exitStatus = status;
        ended = true;
        endedSignal.notify_all();
    }

    void ApplyName() {
        std::string shortened;
        {
            const std::lock_guard guard(mutex);
            shortened = name.substr(0, 15);
        }
        if (!shortened.empty()) {
            pthread_setname_np(pthread_self(), shortened.c_str());
        }
    }

    const yAllocator allocator;
    const std::function<yStatus()> function;
    std::mutex mutex; ///< guards name, exitStatus and ended; no other lock is taken while it is held
    std::condition_variable endedSignal;
    std::string name;
    yStatus exitStatus = yERROR;
    bool ended = false;
    bool started = false;
    std::thread thread;
};

yStatus yThread_Construct(yThread* thread, std::function<yStatus()> function, yAllocator allocator) {
    if (const yStatus fault = yFault_Check("yThread_Construct"); fault != yOK) {
        return fault;
    }
    if (thread == nullptr || !function) {
        return yERROR_PARAMETER;
    }
    *thread = new (yMemory_Allocate(allocator, sizeof(yThreadObject))) yThreadObject(std::move(function), allocator);
    return yOK;
}

yStatus yThread_Destroy(yThread thread) {
    if (thread == nullptr) {
        return yOK;
    }
    if (thread->thread.joinable()) {
        if (thread->thread.get_id() == std::this_thread::get_id()) {
            return yERROR_STATE;
        }
        thread->thread.join();
    }
    const yAllocator allocator = thread->allocator;
    thread->~yThreadObject();
    yMemory_Free(allocator, thread, sizeof(yThreadObject));
    return yOK;
}

yStatus yThread_SetName(yThread thread, const char* name) {
    if (const yStatus fault = yFault_Check("yThread_SetName"); fault != yOK) {
        return fault;
    }
    if (thread == nullptr || name == nullptr) {
        return yERROR_PARAMETER;
    }
    const std::lock_guard guard(thread->mutex);
    thread->name = name;
    if (thread->thread.joinable() && !thread->ended) {
        pthread_setname_np(thread->thread.native_handle(), thread->name.substr(0, 15).c_str());
    }
    return yOK;
}

const char* yThread_Name(yThread thread) {
    return thread == nullptr ? "" : thread->name.c_str();
}

yStatus yThread_Start(yThread thread) {
    if (const yStatus fault = yFault_Check("yThread_Start"); fault != yOK) {
        return fault;
    }
    if (thread == nullptr) {
        return yERROR_PARAMETER;
    }
    if (thread->started) {
        return yERROR_STATE;
    }
    try {
        thread->thread = std::thread([thread] { thread->Run(); });
    } catch (const std::system_error&) {
        return yERROR;
    }
    thread->started = true;
    return yOK;
}

yStatus yThread_Join(yThread thread, std::uint64_t timeoutMicroseconds, yStatus* exit) {
    if (const yStatus fault = yFault_Check("yThread_Join"); fault != yOK) {
        return fault;
    }
    if (thread == nullptr) {
        return yERROR_PARAMETER;
    }
    if (!thread->thread.joinable() || thread->thread.get_id() == std::this_thread::get_id()) {
        return yERROR_STATE;
    }
    {
        std::unique_lock guard(thread->mutex);
        const auto hasEnded = [thread] { return thread->ended; };
        if (timeoutMicroseconds == yINFINITE) {
            thread->endedSignal.wait(guard, hasEnded);
        } else if (!thread->endedSignal.wait_for(guard, yThread_Duration(timeoutMicroseconds), hasEnded)) {
            return yERROR_TIMEOUT;
        }
    }
    thread->thread.join();
    if (exit != nullptr) {
        *exit = thread->exitStatus;
    }
    return yOK;
}

yStatus yThread_Sleep(std::uint64_t microseconds) {
    if (const yStatus fault = yFault_Check("yThread_Sleep"); fault != yOK) {
        return fault;
    }
    std::this_thread::sleep_for(yThread_Duration(microseconds));
    return yOK;
}
