// Two threads kept for the program's pure computations (the Moon's positions
// for the rise/set search, the shading pictures), which take tasks in the
// order they are given. Kept rather than started per task: a task then costs
// no thread start, and the threads' own buffers stay made.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <type_traits>

namespace lunaquill {

// Queues `task` for the workers. When no worker thread can be started it
// runs at once on the calling thread.
void RunOnWorker(std::function<void()> task);

// A computation handed to the workers. The thread that asks for its result
// runs it itself if no worker has begun it yet, rather than wait for one to
// come to it; otherwise it waits for the worker's result. An empty task
// (default-made) is not valid.
template <typename Result>
class WorkerTask
{
public:
    WorkerTask() = default;

    template <typename Compute>
    explicit WorkerTask(Compute compute) : state(std::make_shared<State>(std::move(compute)))
    {
        result = state->task.get_future().share();
        RunOnWorker([state = state] { state->run(); });
    }

    bool valid() const { return result.valid(); }

    bool ready() const
    {
        return valid() && result.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    }

    // Drops it if no worker has begun it (its result then never comes).
    void cancel() const
    {
        if (valid())
            state->claimed.exchange(true);
    }

    // Runs it here if no worker has begun it; true if it ran here.
    bool runHereIfWaiting() const { return valid() && state->run(); }

    const Result &get() const
    {
        state->run();
        return result.get();
    }

private:
    struct State {
        template <typename Compute>
        explicit State(Compute compute) : task(std::move(compute))
        {
        }
        bool run()
        {
            if (claimed.exchange(true))
                return false;
            task();
            return true;
        }
        std::atomic<bool> claimed{false};
        std::packaged_task<Result()> task;
    };
    std::shared_ptr<State> state;
    std::shared_future<Result> result;
};

} // namespace lunaquill
