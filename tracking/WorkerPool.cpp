#include "WorkerPool.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace lunaquill {

namespace {

class Pool
{
public:
    Pool()
    {
        for (int i = 0; i < 2; ++i) {
            try {
                threads.emplace_back([this] { Work(); });
            } catch (const std::system_error &) {
                break; // fewer workers, or none: then the caller runs the tasks
            }
        }
    }

    ~Pool()
    {
        {
            std::lock_guard<std::mutex> lock(mutex);
            stopping = true;
        }
        wake.notify_all();
        for (std::thread &thread : threads)
            thread.join();
    }

    void Run(std::function<void()> task)
    {
        if (threads.empty()) {
            task();
            return;
        }
        {
            std::lock_guard<std::mutex> lock(mutex);
            tasks.push_back(std::move(task));
        }
        wake.notify_one();
    }

private:
    void Work()
    {
        for (;;) {
            std::function<void()> task;
            {
                std::unique_lock<std::mutex> lock(mutex);
                wake.wait(lock, [this] { return stopping || !tasks.empty(); });
                if (tasks.empty())
                    return; // stopping, and nothing left to do
                task = std::move(tasks.front());
                tasks.pop_front();
            }
            task();
        }
    }

    std::mutex mutex;
    std::condition_variable wake;
    std::deque<std::function<void()>> tasks;
    bool stopping = false;
    std::vector<std::thread> threads;
};

Pool &ThePool()
{
    static Pool pool;
    return pool;
}

} // namespace

void RunOnWorker(std::function<void()> task)
{
    ThePool().Run(std::move(task));
}


} // namespace lunaquill
