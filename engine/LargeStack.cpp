// Threads with a stack of a given size: on Windows and, for the tests and the command line, with POSIX threads.
#include "engine/LargeStack.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <pthread.h>
#endif

#include <exception>

#include "engine/PdfError.h"

namespace zavo::pdf {

namespace {

struct Job {
    const std::function<void()>& work;
    std::exception_ptr failure;

    void Run() noexcept {
        try {
            work();
        } catch (...) {
            failure = std::current_exception();
        }
    }
};

#ifdef _WIN32

DWORD WINAPI RunJob(void* job) {
    static_cast<Job*>(job)->Run();
    return 0;
}

void RunOnThread(std::size_t stackSize, Job& job) {
    const HANDLE thread = CreateThread(nullptr, stackSize, RunJob, &job, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
    if (thread == nullptr) throw PdfError("no thread for a large document");
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
}

#else

void* RunJob(void* job) {
    static_cast<Job*>(job)->Run();
    return nullptr;
}

void RunOnThread(std::size_t stackSize, Job& job) {
    pthread_attr_t attributes;
    pthread_t thread = {};
    if (pthread_attr_init(&attributes) != 0) throw PdfError("no thread for a large document");
    const bool started = pthread_attr_setstacksize(&attributes, stackSize) == 0 &&
                         pthread_create(&thread, &attributes, RunJob, &job) == 0;
    pthread_attr_destroy(&attributes);
    if (!started) throw PdfError("no thread for a large document");
    pthread_join(thread, nullptr);
}

#endif

}  // namespace

void RunWithStack(std::size_t stackSize, const std::function<void()>& work) {
    Job job{work, nullptr};
    RunOnThread(stackSize, job);
    if (job.failure) std::rethrow_exception(job.failure);
}

void RunWithLargeStack(const std::function<void()>& work) { RunWithStack(largeStackSize, work); }

}  // namespace zavo::pdf
