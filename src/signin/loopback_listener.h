#pragma once

// Receives the browser's redirect with a plain HTTP server on 127.0.0.1. The system chooses the port. The one route is
// GET "/". The response is the same page after success and after failure. Main thread only.
//
// Browsers open spare connections and keep them, and any program on the machine may connect and stay silent. So each
// connection has its own thread (connection_threads.h) and a time limit (bounded_server.h), and stop() does not wait
// for clients: it closes the listening socket and starts a janitor thread, which joins the connection threads. Requests
// that are served after stop() are not reported.

#include <memory>
#include <string>
#include <vector>

#include "signin/sign_in_attempt.h"
#include "signin/sign_in_mailbox.h"

class LoopbackListener {
  public:
    LoopbackListener();
    ~LoopbackListener(); // waits up to 2 s for open connections, then detaches their threads
    LoopbackListener(const LoopbackListener&) = delete;
    LoopbackListener& operator=(const LoopbackListener&) = delete;

    // True if the destructor had to detach threads. main must then exit with std::_Exit, because these threads still
    // use static objects.
    [[nodiscard]] static bool hasLeftThreads();

    // Binds a port and starts to accept connections. Reports to `mailbox` with the attempt's generation: a code if the
    // redirect contains the right `oauthState`, otherwise a failure. False if no port could be bound.
    [[nodiscard]] bool start(const std::shared_ptr<SignInMailbox>& mailbox, const SignInAttempt& attempt);

    // Stops the listener. Nothing is reported after this call. Does nothing if the listener is not running.
    void stop();

    // Returns the bound port; 0 if the listener is not running, -1 after a failed start.
    [[nodiscard]] int port() const { return port_; }

  private:
    struct Running;
    struct Retired;

    int port_ = 0;
    std::shared_ptr<SignInMailbox> mailbox_;
    std::unique_ptr<Running> running_;
    std::vector<std::unique_ptr<Retired>> retired_;
};
