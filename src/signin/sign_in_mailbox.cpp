#include "signin/sign_in_mailbox.h"

#include <utility>

#include "system/frame_wake.h"

std::uint32_t SignInMailbox::startAttempt() {
    const std::lock_guard<std::mutex> lock(mutex_);
    result_ = {};
    pendingCode_.clear();
    return ++generation_;
}

std::uint32_t SignInMailbox::abandonAttempt() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return ++generation_;
}

void SignInMailbox::discardResult() {
    const std::lock_guard<std::mutex> lock(mutex_);
    result_ = {};
}

void SignInMailbox::openFor(std::uint32_t generation) {
    const std::lock_guard<std::mutex> lock(mutex_);
    openGeneration_ = generation;
}

SignInMailbox::Arrivals SignInMailbox::take() {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!pendingCode_.empty()) openGeneration_ = 0; // accept no second code before the listener stops
    return {std::exchange(pendingCode_, {}), std::exchange(result_, {})};
}

void SignInMailbox::reportCode(std::uint32_t generation, const std::string& code) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (openGeneration_ != generation) return;
    pendingCode_ = code;
    wakeFrame();
}

void SignInMailbox::reportFailure(std::uint32_t generation, const std::string& message) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (openGeneration_ != generation) return;
    result_ = {};
    result_.hasResult = true;
    result_.errorMessage = message;
    wakeFrame();
}

void SignInMailbox::reportResult(std::uint32_t generation, SignInResult result) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (generation_ != generation) return;
    result_ = std::move(result);
    wakeFrame();
}
