#pragma once

// What other threads hand to the frame thread during a sign-in. Shared, so that a listener thread or a worker that
// outlives its attempt still has somewhere to look, finds itself disowned, and leaves no trace.

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

struct SignInMailbox {
    std::mutex mutex;             // guards everything below; never held across I/O
    SignInResult result;          // published, not yet taken by a frame
    std::string pendingCode;      // authorization code that the listener accepted, not yet taken by a frame
    std::uint32_t generation = 0; // a worker publishes only while this is what it was started with
    std::uint32_t listening = 0;  // a listener records only while this is its own number; 0: none listens
};
