#pragma once

// Passes the results of other threads to the frame thread during a sign-in. It locks its own mutex, for a few
// assignments, never during I/O. Shared pointers own it, so that a thread that outlives its attempt can still report.
//
// Each attempt has a number, its generation. The frame thread starts a new generation when it abandons an attempt. The
// mailbox drops reports with an older generation.

#include <cstdint>
#include <mutex>
#include <string>

struct SignInResult {
    bool hasResult = false; // false: no result has arrived
    bool success = false;
    bool fromRestore = false; // the worker restored a stored session
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

    // --- frame thread ---

    // Starts the next generation and returns it. Discards a code or result that has arrived.
    [[nodiscard]] std::uint32_t startAttempt();

    // Starts the next generation and returns it. Keeps a code or result that has arrived.
    [[nodiscard]] std::uint32_t abandonAttempt();

    void discardResult();

    // Accepts reports of the listener of this generation only. With 0, or after take() has returned a code, the mailbox
    // drops the reports of all listeners.
    void openFor(std::uint32_t generation);

    // Returns the code and the result that have arrived, and clears both.
    [[nodiscard]] Arrivals take();

    // --- any thread ---

    // For listeners. A later code replaces an earlier one. A failure does not remove a code.
    void reportCode(std::uint32_t generation, const std::string& code);
    void reportFailure(std::uint32_t generation, const std::string& message);

    // For workers.
    void reportResult(std::uint32_t generation, SignInResult result);

  private:
    std::mutex mutex_; // guards everything below
    SignInResult result_;
    std::string pendingCode_;
    std::uint32_t generation_ = 0;
    std::uint32_t openGeneration_ = 0; // generation of the listener that may report; 0: none
};
