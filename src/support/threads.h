// src/support/threads.h - the second core: how many threads the work may use, and a loop split into
// blocks over them. Every use splits work whose pieces can't see each other, so a run gives the same
// bytes on one thread or many.
#pragma once
#include <cstddef>
#include <exception>
#include <thread>
#include <vector>

namespace invsetup {

/// The threads the work may use: INVSETUP_THREADS when it holds a whole number from 1 (1 keeps every
/// stage on the calling thread), otherwise the processors of the machine.
int worker_thread_count();

/// Runs body(first, last) over [0, count) in contiguous blocks, one per thread, the first block on the
/// calling thread. Small counts run whole on the calling thread. A fault in any block is thrown again
/// here, after every block has ended.
template <class Body>
void for_blocks(std::size_t count, Body body, std::size_t smallest_block = 4096) {
    std::size_t blocks = static_cast<std::size_t>(worker_thread_count());
    if (blocks > count / smallest_block) blocks = count / smallest_block;
    if (blocks <= 1) {
        body(std::size_t{0}, count);
        return;
    }
    std::vector<std::exception_ptr> faults(blocks);
    std::vector<std::thread> threads;
    threads.reserve(blocks - 1);
    auto run = [&](std::size_t block) {
        try {
            body(count * block / blocks, count * (block + 1) / blocks);
        } catch (...) {
            faults[block] = std::current_exception();
        }
    };
    for (std::size_t block = 1; block < blocks; ++block) threads.emplace_back(run, block);
    run(0);
    for (std::thread& thread : threads) thread.join();
    for (const std::exception_ptr& fault : faults)
        if (fault) std::rethrow_exception(fault);
}

}  // namespace invsetup
