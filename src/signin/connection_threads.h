#pragma once

// Serves the connections of the loopback listener on several threads. Each open connection has its own thread, so that
// a silent connection does not delay the others. The number of threads is limited; further connections wait for a
// thread.

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include <httplib.h>

class ConnectionThreads : public httplib::TaskQueue {
  public:
    // Accept thread only. Returns false if no thread can serve the connection; the server then closes the connection.
    bool enqueue(std::function<void()> connection) override;

    // Accept thread only. Serves the connections that still wait, because each one owns a socket that must be closed.
    // Then joins all threads.
    void shutdown() override;

  private:
    bool startThread();
    void serve();

    std::mutex mutex_; // guards everything below; `threads_` grows on the accept thread only
    std::condition_variable changed_;
    std::deque<std::function<void()>> waiting_;
    std::size_t idleCount_ = 0;
    bool shuttingDown_ = false;
    std::vector<std::thread> threads_;
};
