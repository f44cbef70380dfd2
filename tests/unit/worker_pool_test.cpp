// The worker threads: every task runs once with its own result, and a task
// asked for while both workers are held elsewhere is run by the asking
// thread instead of waiting for them.
#include "tracking/WorkerPool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <thread>
#include <vector>

using namespace lunaquill;

namespace {

TEST(WorkerTask, EveryTaskRunsOnceAndAWaitingOneRunsOnTheAskingThread)
{
    // 200 tasks, each counting its runs: sum of squares 0..199 = 199*200*399/6 = 2646700.
    std::atomic<int> runs{0};
    std::vector<WorkerTask<long>> tasks;
    for (long i = 0; i < 200; ++i)
        tasks.emplace_back([i, &runs] { ++runs; return i * i; });
    long sum = 0;
    for (const auto &task : tasks)
        sum += task.get() + task.get() * 0; // asked twice, run once
    EXPECT_EQ(sum, 2646700);
    EXPECT_EQ(runs.load(), 200);

    // Both workers held until released: the next task must come from this thread.
    std::promise<void> release;
    std::shared_future<void> released = release.get_future().share();
    std::atomic<int> holding{0};
    WorkerTask<int> held[2] = {WorkerTask<int>([&] { ++holding; released.wait(); return 1; }),
                               WorkerTask<int>([&] { ++holding; released.wait(); return 2; })};
    while (holding.load() < 2)
        std::this_thread::yield();
    const WorkerTask<std::thread::id> mine([] { return std::this_thread::get_id(); });
    EXPECT_EQ(mine.get(), std::this_thread::get_id());
    EXPECT_FALSE(mine.runHereIfWaiting()); // already run
    release.set_value();
    EXPECT_EQ(held[0].get() + held[1].get(), 3);
    EXPECT_FALSE(WorkerTask<int>().valid());
}

} // namespace
