#pragma once

// Passes the results of other threads to the main thread during a sign-in. The mailbox locks its own mutex, for a few
// assignments, never during I/O. Shared pointers own the mailbox, so that a thread that outlives its attempt can still
// report.
//
// Each attempt has a number, its generation. The main thread starts a new generation when it starts or abandons an
// attempt. The mailbox drops reports with an older generation.

#include <cstdint>
#include <mutex>
#include <string>

struct SignInResult {
    bool hasResult = false; // false: no result has arrived
    bool success = false;
    bool fromRestore = false; // the worker tried to restore a stored session
    std::string userName;
    std::string userEmail;
    std::string refreshToken; // empty if Google sent none, or if a session was restored
    std::string errorMessage; // for the user, if `success` is false
};

class SignInMailbox {
  public:
    struct Arrivals {
        std::string code; // authorization code; empty: none
        SignInResult result;
    };

    // --- main thread ---

    // Starts the next generation and returns it. Discards a code or result that has arrived.
    [[nodiscard]] std::uint32_t startAttempt();

    // Starts the next generation and returns it. Keeps a code or result that has arrived.
    [[nodiscard]] std::uint32_t abandonAttempt();

    void discardResult();

    // From now on, accepts listener reports of this generation only. Accepts no listener reports after openFor(0), and
    // none after take() has returned a code.
    void openFor(std::uint32_t generation);

    // Returns the code and the result that have arrived, and clears both.
    [[nodiscard]] Arrivals take();

    // --- any thread ---

    // The listener calls these functions. A later code replaces an earlier one. A failure does not remove a code.
    void reportCode(std::uint32_t generation, const std::string& code);
    void reportFailure(std::uint32_t generation, const std::string& message);

    // The worker calls this function.
    void reportResult(std::uint32_t generation, SignInResult result);

  private:
    std::mutex mutex_; // guards everything below
    SignInResult result_;
    std::string pendingCode_;
    std::uint32_t generation_ = 0;
    std::uint32_t openGeneration_ = 0; // generation of the listener that may report; 0: none
};
