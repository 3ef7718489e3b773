#pragma once

// One request on a thread of its own, so that the caller can leave while the request still waits for the network. Used
// by http.cpp alone.

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>

#include "system/http.h"

class HttpExchange {
  public:
    // The request itself. It runs on the new thread and may outlive the call that started it, so it owns what it uses.
    using Send = std::function<HttpsAnswer(HttpExchange& exchange)>;

    // Sends a request and waits for its end, for the abort, or for the time limit (0: none). In the last two cases it
    // ends the connection and returns no answer.
    [[nodiscard]] static HttpsAnswer run(const HttpAbort& abort, std::chrono::seconds limit, Send send);

    explicit HttpExchange(std::shared_ptr<HttpAbort::State> state);
    ~HttpExchange();
    HttpExchange(const HttpExchange&) = delete;
    HttpExchange& operator=(const HttpExchange&) = delete;

    // --- for `send`, on the new thread ---

    // Tells which socket to end. Called before each attempt to connect.
    void watch(std::intptr_t socket);

    // Runs a callback of the caller. False without running it when the caller has left.
    [[nodiscard]] bool deliver(const std::function<bool()>& callback);

  private:
    void finish(HttpsAnswer answer);
    [[nodiscard]] HttpsAnswer wait(std::chrono::seconds limit);
    [[nodiscard]] bool endWithin(std::chrono::milliseconds limit);

    const std::shared_ptr<HttpAbort::State> state_; // its mutex guards the four fields below
    std::intptr_t socket_;                          // a duplicate: the library may close its own at any time
    bool ending_ = false;
    bool finished_ = false;
    HttpsAnswer answer_;

    std::mutex deliveryMutex_; // held while a callback of the caller runs
    bool callerLeft_ = false;
};
