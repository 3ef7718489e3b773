#pragma once

// The threads that serve the connections of the loopback listener: one for each open connection, up to a limit, so that
// a silent connection does not hold up the others. Connections beyond the limit wait for a thread.

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
    // Accept thread only. False when no thread can serve the connection; the server then closes it.
    bool enqueue(std::function<void()> connection) override;

    // Accept thread only. Serves the connections that still wait, since each owns a socket (the stopped server closes
    // them unanswered), then joins all threads.
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
