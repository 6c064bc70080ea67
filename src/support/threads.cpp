// src/support/threads.cpp - the thread count of the work.
#include "support/threads.h"

#include <charconv>
#include <cstdlib>
#include <cstring>

namespace invsetup {

int worker_thread_count() {
    if (const char* setting = std::getenv("INVSETUP_THREADS")) {
        int count = 0;
        const char* end = setting + std::strlen(setting);
        const auto [last, error] = std::from_chars(setting, end, count);
        if (error == std::errc() && last == end && count >= 1) return count;
    }
    const unsigned processors = std::thread::hardware_concurrency();
    return processors > 0 ? static_cast<int>(processors) : 1;
}

}  // namespace invsetup
