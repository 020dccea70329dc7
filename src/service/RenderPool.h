#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace velmorant::service {

// Renders on a fixed set of threads, apart from the network thread. Each
// thread owns what it draws with (made by `makeWorkerState`), so the drawing
// objects are never shared. The queue is bounded: a full queue refuses at
// once, and a job still waiting at its deadline is answered without being run.
// Once the pool has had nothing to do for a while after some work, `onIdle`
// runs once on a worker (the service gives freed memory back then).
template <typename WorkerState>
class RenderPool {
public:
    using Clock = std::chrono::steady_clock;
    struct Job {
        std::function<void(WorkerState&)> run;
        // Called instead of `run` when the deadline passed in the queue or the pool stopped.
        std::function<void()> expire;
        Clock::time_point deadline;
    };

    RenderPool(std::size_t workers, std::size_t queueCapacity, std::function<std::unique_ptr<WorkerState>()> makeWorkerState,
               std::function<void()> onIdle = {}, Clock::duration idleAfter = std::chrono::seconds(1))
        : capacity_(queueCapacity), onIdle_(std::move(onIdle)), idleAfter_(idleAfter) {
        for (std::size_t i = 0; i < workers; ++i)
            threads_.emplace_back([this, makeWorkerState] { work(makeWorkerState()); });
    }
    ~RenderPool() { stop(); }

    // False when the queue is full or the pool is stopping.
    bool submit(Job job) {
        {
            std::lock_guard lock(mutex_);
            if (stopping_ || queue_.size() >= capacity_) return false;
            queue_.push_back(std::move(job));
        }
        wake_.notify_one();
        return true;
    }

    // Finishes every queued job (those past their deadline expire), then joins the threads.
    void stop() {
        {
            std::lock_guard lock(mutex_);
            if (stopping_ && threads_.empty()) return;
            stopping_ = true;
        }
        wake_.notify_all();
        for (auto& thread : threads_) thread.join();
        threads_.clear();
    }

    std::size_t queued() const {
        std::lock_guard lock(mutex_);
        return queue_.size();
    }
    std::size_t busy() const {
        std::lock_guard lock(mutex_);
        return busy_;
    }
    std::size_t workers() const { return threads_.size(); }
    // Seconds until a job queued now would likely start: the work ahead of it
    // spread over the workers, at the recent time per job; at least 1.
    long retryAfterSeconds() const {
        std::lock_guard lock(mutex_);
        double ahead = static_cast<double>(queue_.size() + busy_) / static_cast<double>(std::max<std::size_t>(1, threads_.size()));
        double seconds = ahead * recentSeconds_;
        return std::max(1L, static_cast<long>(seconds + 0.999));
    }

private:
    void work(std::unique_ptr<WorkerState> state) {
        for (;;) {
            Job job;
            {
                std::unique_lock lock(mutex_);
                auto ready = [&] { return stopping_ || !queue_.empty(); };
                if (!wake_.wait_for(lock, idleAfter_, ready) && idleDue_ && onIdle_) {
                    idleDue_ = false;
                    lock.unlock();
                    onIdle_();
                    continue;
                }
                wake_.wait(lock, ready);
                if (queue_.empty()) return;
                job = std::move(queue_.front());
                queue_.pop_front();
                ++busy_;
            }
            auto start = Clock::now();
            if (start > job.deadline) job.expire();
            else job.run(*state);
            double seconds = std::chrono::duration<double>(Clock::now() - start).count();
            std::lock_guard lock(mutex_);
            --busy_;
            idleDue_ = true;
            recentSeconds_ = 0.8 * recentSeconds_ + 0.2 * seconds;
        }
    }

    mutable std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<Job> queue_;
    std::vector<std::thread> threads_;
    std::size_t capacity_;
    std::size_t busy_ = 0;
    double recentSeconds_ = 0.05;
    std::function<void()> onIdle_;
    Clock::duration idleAfter_;
    // Work was done since `onIdle` last ran.
    bool idleDue_ = false;
    bool stopping_ = false;
};

}  // namespace velmorant::service
