#pragma once

// The threads that serve the connections of the loopback listener. Each open connection has its own thread, so that a
// silent connection does not delay the others. The number of threads is limited; further connections wait for a thread.

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
    // Accept thread only. False if no thread can serve the connection. The server then closes it.
    bool enqueue(std::function<void()> connection) override;

    // Accept thread only. Serves the connections that still wait, then joins all threads. Each waiting connection owns
    // a socket, which the stopped server closes without a response.
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
