#pragma once

// The plain HTTP listener on 127.0.0.1 that takes the browser's redirect. The system chooses its port. Its one route is
// GET "/", and it answers every request to it with the same page, whatever it reported. Frame thread only.
//
// Browsers open spare connections and keep them, and any program on the machine may connect and stay silent. So each
// connection has a thread (see connection_threads.h) and a time limit (see bounded_server.h), and stop() never waits
// for a client: it closes the listening socket at once and leaves the joining of the connection threads to a janitor
// thread. A request that such a thread still answers reports nothing.

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

    // True after a detach: main must leave by std::_Exit, because the detached threads still use static objects.
    [[nodiscard]] static bool hasLeftThreads();

    // Binds a port and starts to accept. Reports to `mailbox` under the attempt's generation: a code when the redirect
    // brings back `oauthState`, a failure otherwise. False when no port could be bound.
    [[nodiscard]] bool start(const std::shared_ptr<SignInMailbox>& mailbox, const SignInAttempt& attempt);

    // Stops listening; from here on nothing is reported. Does nothing when nothing listens.
    void stop();

    // The bound port; 0 when nothing listens, -1 after a failed start.
    [[nodiscard]] int port() const { return port_; }

  private:
    struct Running;
    struct Retired;

    int port_ = 0;
    std::shared_ptr<SignInMailbox> mailbox_;
    std::unique_ptr<Running> running_;
    std::vector<std::unique_ptr<Retired>> retired_;
};
