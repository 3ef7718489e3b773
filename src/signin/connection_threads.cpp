#include "signin/connection_threads.h"

#include <system_error>
#include <utility>

namespace {

constexpr std::size_t kConnectionThreads = 256;

} // namespace

bool ConnectionThreads::enqueue(std::function<void()> connection) {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        waiting_.push_back(std::move(connection));
        if (waiting_.size() > idleCount_ && threads_.size() < kConnectionThreads && !startThread()) {
            waiting_.pop_back();
            return false;
        }
    }
    changed_.notify_one();
    return true;
}

void ConnectionThreads::shutdown() {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        shuttingDown_ = true;
    }
    changed_.notify_all();
    for (std::thread& thread : threads_)
        thread.join();
}

// Starts another thread. If the system cannot create one, the existing threads serve the connection. False if there are
// none.
bool ConnectionThreads::startThread() {
    try {
        threads_.emplace_back([this] { serve(); });
    } catch (const std::system_error&) {
    }
    return !threads_.empty();
}

void ConnectionThreads::serve() {
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
        ++idleCount_;
        changed_.wait(lock, [this] { return shuttingDown_ || !waiting_.empty(); });
        --idleCount_;
        if (waiting_.empty()) return;
        const std::function<void()> connection = std::move(waiting_.front());
        waiting_.pop_front();
        lock.unlock();
        connection();
        lock.lock();
    }
}
