#pragma once

// Carries what other threads find out during a sign-in to the frame thread. It does its own locking and holds its mutex
// for a few assignments only, never across I/O. It is shared: a thread that outlives its attempt still has a valid
// mailbox to report to, and the mailbox drops the report.
//
// Each attempt has a number, its generation. The frame thread moves on to the next generation when it abandons an
// attempt. A report that carries an older generation leaves no trace.

#include <cstdint>
#include <mutex>
#include <string>

struct SignInResult {
    bool hasResult = false; // this slot holds an outcome
    bool success = false;
    bool fromRestore = false; // the outcome of restoring a stored session
    std::string userName;
    std::string userEmail;
    std::string refreshToken; // empty when the exchange gave none, or when restoring
    std::string errorMessage; // when `success` is false
};

class SignInMailbox {
  public:
    struct Arrivals {
        std::string code; // authorization code; empty: none
        SignInResult result;
    };

    // --- frame thread ---

    // Both move on to the next generation and return it. startAttempt also discards what has arrived.
    [[nodiscard]] std::uint32_t startAttempt();
    [[nodiscard]] std::uint32_t abandonAttempt();

    void discardResult();

    // Lets the listener of this generation report. No listener may report after 0, or after a code was taken.
    void openFor(std::uint32_t generation);

    // Returns what has arrived and empties both slots.
    [[nodiscard]] Arrivals take();

    // --- any thread ---

    // From a listener. The code of a later redirect replaces an earlier one; a failure leaves the code in place.
    void reportCode(std::uint32_t generation, const std::string& code);
    void reportFailure(std::uint32_t generation, const std::string& message);

    // From a worker.
    void reportResult(std::uint32_t generation, SignInResult result);

  private:
    std::mutex mutex_; // guards everything below
    SignInResult result_;
    std::string pendingCode_;
    std::uint32_t generation_ = 0;
    std::uint32_t openGeneration_ = 0; // of the listener that may report; 0: none
};
