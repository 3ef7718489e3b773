#pragma once

// Runs one request on its own thread, so that the caller can return while the request still waits for the network. Only
// http.cpp uses it.

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>

#include "system/http.h"

class HttpExchange {
  public:
    // The function that sends the request. It runs on the new thread and may outlive run(), so it must own its data.
    using Send = std::function<HttpsAnswer(HttpExchange& exchange)>;

    // Sends a request and waits for its end, for an abort, or for the time limit (0: no limit). After an abort or the
    // limit it ends the connection and returns a result with `answered` false.
    [[nodiscard]] static HttpsAnswer run(const HttpAbort& abort, std::chrono::seconds limit, Send send);

    explicit HttpExchange(std::shared_ptr<HttpAbort::State> state);
    ~HttpExchange();
    HttpExchange(const HttpExchange&) = delete;
    HttpExchange& operator=(const HttpExchange&) = delete;

    // --- for `send`, on the new thread ---

    // Sets the socket that an abort shuts down. Call it before each attempt to connect.
    void watch(std::intptr_t socket);

    // Runs a callback of run's caller and returns its result. If run has already returned, does not run the callback
    // and returns false.
    [[nodiscard]] bool deliver(const std::function<bool()>& callback);

  private:
    void finish(HttpsAnswer answer);
    [[nodiscard]] HttpsAnswer wait(std::chrono::seconds limit);
    [[nodiscard]] bool endWithin(std::chrono::milliseconds limit);

    const std::shared_ptr<HttpAbort::State> state_; // its mutex guards the four fields below
    std::intptr_t socket_;                          // a duplicate, because cpp-httplib may close its socket at any time
    bool ending_ = false;
    bool finished_ = false;
    HttpsAnswer answer_;

    std::mutex deliveryMutex_; // held while a callback of run's caller runs
    bool callerLeft_ = false;
};
