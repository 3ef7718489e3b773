#include "system/http_exchange.h"

#include <atomic>
#include <condition_variable>
#include <utility>

#include "system/platform.h"
#include "system/sockets.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// cpp-httplib parses the status line with std::regex, which recurses for each character in libstdc++ 12. The longest
// line (CPPHTTPLIB_MAX_LINE_LENGTH, 20,480 bytes) needs 4 MiB of stack, or 24 MiB with the address sanitizer
// (measured).
constexpr std::size_t kStackBytes = std::size_t{32} << 20;
constexpr std::size_t kSmallStackBytes = std::size_t{256} << 10;
constexpr milliseconds kShutDownPeriod{20};
constexpr milliseconds kEndLimit{50}; // an aborted call must return within 100 ms

std::atomic<int> unfinished = 0;

} // namespace

struct HttpAbort::State {
    std::mutex mutex; // guards `aborted` and fields of the exchanges that use this state
    std::condition_variable changed;
    bool aborted = false;
};

HttpAbort::HttpAbort()
    : state_(std::make_shared<State>()) {}

void HttpAbort::abort() {
    const std::lock_guard<std::mutex> lock(state_->mutex);
    state_->aborted = true;
    state_->changed.notify_all();
}

bool HttpAbort::isAborted() const {
    const std::lock_guard<std::mutex> lock(state_->mutex);
    return state_->aborted;
}

int unfinishedRequests() {
    return unfinished;
}

HttpExchange::HttpExchange(std::shared_ptr<HttpAbort::State> state)
    : state_(std::move(state))
    , socket_(kNoSocket) {}

HttpExchange::~HttpExchange() {
    closeSocket(socket_);
}

HttpsAnswer HttpExchange::run(const HttpAbort& abort, std::chrono::seconds limit, Send send) {
    if (abort.isAborted()) return {};
    auto exchange = std::make_shared<HttpExchange>(abort.state_);
    ++unfinished;
    const bool started = startThread(kStackBytes, [exchange, send = std::move(send)]() mutable {
        exchange->finish(send(*exchange));
        send = nullptr;
        exchange.reset();
        --unfinished;
    });
    if (!started) {
        --unfinished;
        return {};
    }
    HttpsAnswer answer = exchange->wait(limit);
    // The request's thread may still wait for a peer or a name server. In that case a second thread shuts the
    // connection down, again and again, until the request has finished.
    if (!exchange->endWithin(milliseconds(0))) {
        (void)startThread(kSmallStackBytes, [exchange] {
            while (!exchange->endWithin(kShutDownPeriod)) {
            }
        });
    }
    return answer;
}

void HttpExchange::watch(std::intptr_t socket) {
    const std::lock_guard<std::mutex> lock(state_->mutex);
    closeSocket(socket_);
    socket_ = duplicateSocket(socket);
    if (ending_) shutDownSocket(socket_);
}

bool HttpExchange::deliver(const std::function<bool()>& callback) {
    const std::lock_guard<std::mutex> lock(deliveryMutex_);
    return !callerLeft_ && callback();
}

void HttpExchange::finish(HttpsAnswer answer) {
    const std::lock_guard<std::mutex> lock(state_->mutex);
    answer_ = std::move(answer);
    finished_ = true;
    state_->changed.notify_all();
}

HttpsAnswer HttpExchange::wait(std::chrono::seconds limit) {
    {
        std::unique_lock<std::mutex> lock(state_->mutex);
        const auto over = [this] { return finished_ || state_->aborted; };
        if (limit > std::chrono::seconds(0)) {
            state_->changed.wait_for(lock, limit, over);
        } else {
            state_->changed.wait(lock, over);
        }
        if (finished_) return std::move(answer_);
        ending_ = true;
    }
    const auto deadline = steady_clock::now() + kEndLimit;
    while (!endWithin(kShutDownPeriod) && steady_clock::now() < deadline) {
    }
    const std::lock_guard<std::mutex> lock(deliveryMutex_);
    callerLeft_ = true;
    return {};
}

// Shuts the connection down and waits until the request has finished. False if it has not finished within `limit`.
// Callers repeat the call, because on Windows a shutdown before the connection is established has no effect.
bool HttpExchange::endWithin(milliseconds limit) {
    std::unique_lock<std::mutex> lock(state_->mutex);
    if (!finished_) shutDownSocket(socket_);
    return state_->changed.wait_for(lock, limit, [this] { return finished_; });
}
