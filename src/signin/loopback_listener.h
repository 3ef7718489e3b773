#pragma once

// The plain HTTP listener on 127.0.0.1 that takes the browser's redirect. Its port is the system's choice, its one
// route is GET "/", and it answers every request to it with the same page, whatever it recorded.
//
// Browsers open spare connections and keep them, and anyone on the machine may connect and say nothing. So each
// connection has a thread of its own (up to a limit, the rest wait), reads time out soon, and stopping closes the
// listening socket at once but leaves the joining of its threads to a janitor thread: stop() never waits for a client.
// A request that such a late thread still answers records nothing.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "signin/sign_in_mailbox.h"

class LoopbackListener {
  public:
    LoopbackListener();
    ~LoopbackListener(); // waits a moment for the janitors, then leaves stalled clients to the end of the process,
    static bool hasLeftThreads(); // and then nothing that they use may be destroyed: leave by std::_Exit
    LoopbackListener(const LoopbackListener&) = delete;
    LoopbackListener& operator=(const LoopbackListener&) = delete;

    // Binds a port and starts to accept. What comes in is recorded in `mailbox`: a code when `state` matches
    // `oauthState`, a failure otherwise. False when no port could be bound. Frame thread, like everything here.
    [[nodiscard]] bool start(const std::shared_ptr<SignInMailbox>& mailbox, const std::string& oauthState);

    // Ends the listening; from here on nothing is recorded. Does nothing when nothing listens.
    void stop();

    // The bound port; 0 when nothing listens, -1 after a failed start.
    [[nodiscard]] int port() const { return port_; }

  private:
    struct Running;
    struct Retired;

    int port_ = 0;
    std::uint32_t lastNumber_ = 0; // of the listeners so far; each tells itself from its successors by it
    std::shared_ptr<SignInMailbox> mailbox_;
    std::unique_ptr<Running> running_;
    std::vector<std::unique_ptr<Retired>> retired_;
};
