// Runs work in several threads, and measures its processor time.
#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <ctime>
#include <thread>
#include <vector>

namespace reader_bench {

// Calls work(0) to work(count - 1), each once, in `threadCount` threads. No call may throw.
template <typename Work>
void inThreads(unsigned threadCount, std::size_t count, const Work &work) {
    std::atomic<std::size_t> next{0};
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < std::max(1U, threadCount); i++) {
        threads.emplace_back([&] {
            for (std::size_t index = next++; index < count; index = next++) {
                work(index);
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
}

// Processor time of the calling thread since an unspecified moment, if the system provides it; otherwise wall-clock
// time.
inline double threadSeconds() {
#ifdef CLOCK_THREAD_CPUTIME_ID
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) + 1e-9 * double(now.tv_nsec);
#else
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
#endif
}

}  // namespace reader_bench
