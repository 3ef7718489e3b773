#include "signin/loopback_listener.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <future>
#include <string>
#include <thread>
#include <utility>

#include <httplib.h>

#include "signin/bounded_server.h"
#include "signin/connection_threads.h"
#include "system/sockets.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr std::size_t kBodyLimitBytes = 4096; // a redirect has no body
constexpr auto kAcceptLoopWait = milliseconds(20);
constexpr auto kJanitorWait = milliseconds(2000);

std::atomic<bool> threadsLeft = false;

constexpr char kRedirectPage[] =
    "<!DOCTYPE html><html><head><title>VOLO</title></head><body style=\"font-family:sans-serif;background:#0b1020;"
    "color:#e8ecf4;display:flex;align-items:center;justify-content:center;height:100vh;margin:0\"><div "
    "style=\"text-align:center\"><h2>Sign-in complete</h2><p>You can close this tab and return to VOLO Launcher.</p>"
    "</div></body></html>";

void configure(httplib::Server& server) {
    server.new_task_queue = [] { return new ConnectionThreads; };
    server.set_write_timeout(1, 0);
    server.set_payload_max_length(kBodyLimitBytes);
    // Replace the library's socket options: they let a second program bind the same port and receive the code.
    server.set_socket_options([](socket_t socket) { keepPortExclusive(static_cast<std::intptr_t>(socket)); });
}

// Reports the result in the redirect's query to the mailbox. A non-empty `error` is reported even if `state` is wrong.
// If a parameter is repeated, its first value counts.
void reportRedirect(SignInMailbox& mailbox, const SignInAttempt& attempt, const httplib::Request& request) {
    const std::string error = request.get_param_value("error");
    const std::string code = request.get_param_value("code");
    if (!error.empty()) {
        mailbox.reportFailure(attempt.generation, "Google sign-in was not completed (" + error + ").");
    } else if (request.get_param_value("state") != attempt.oauthState) {
        mailbox.reportFailure(attempt.generation, "The sign-in response did not match this launcher session.");
    } else if (code.empty()) {
        mailbox.reportFailure(attempt.generation, "Google did not return a sign-in code.");
    } else {
        mailbox.reportCode(attempt.generation, code);
    }
}

} // namespace

struct LoopbackListener::Running {
    BoundedServer server; // limits each connection's time: any program on the machine may connect and stay silent
    std::thread acceptThread;
    std::atomic<bool> acceptEnded = false; // true after the accept loop has ended, also because of a failed accept

    // Waits until the accept loop runs, then stops the server. False if the loop did not start within the limit.
    // httplib::Server::stop() does nothing before the loop runs, and acceptThread.join() would then never return.
    bool stopWithin(milliseconds limit) {
        const auto deadline = steady_clock::now() + limit;
        while (!server.is_running() && !acceptEnded) {
            if (steady_clock::now() >= deadline) return false;
            std::this_thread::sleep_for(milliseconds(1));
        }
        server.stop();
        return true;
    }
};

// A stopped server that may still have open connections.
struct LoopbackListener::Retired {
    std::future<void> ended;
    std::thread janitor; // owns the server, joins its threads and destroys it
};

LoopbackListener::LoopbackListener() = default;

LoopbackListener::~LoopbackListener() {
    stop();
    const auto deadline = steady_clock::now() + kJanitorWait;
    for (const std::unique_ptr<Retired>& retired : retired_) {
        if (retired->ended.wait_until(deadline) == std::future_status::ready) {
            retired->janitor.join();
        } else {
            retired->janitor.detach();
            threadsLeft = true;
        }
    }
}

bool LoopbackListener::hasLeftThreads() {
    return threadsLeft;
}

bool LoopbackListener::start(const std::shared_ptr<SignInMailbox>& mailbox, const SignInAttempt& attempt) {
    stop();
    auto running = std::make_unique<Running>();
    configure(running->server);
    port_ = running->server.bind_to_any_port("127.0.0.1");
    if (port_ <= 0) {
        port_ = -1;
        return false;
    }

    running->server.Get("/", [mailbox, attempt](const httplib::Request& request, httplib::Response& response) {
        reportRedirect(*mailbox, attempt, request);
        response.set_content(kRedirectPage, "text/html");
    });
    mailbox_ = mailbox;
    mailbox_->openFor(attempt.generation);
    running_ = std::move(running);
    running_->acceptThread = std::thread([running = running_.get()] {
        running->server.listen_after_bind();
        running->acceptEnded = true;
    });
    return true;
}

void LoopbackListener::stop() {
    port_ = 0;
    if (running_ == nullptr) return;
    mailbox_->openFor(0);
    mailbox_.reset();

    std::erase_if(retired_, [](const std::unique_ptr<Retired>& retired) {
        const bool ended = retired->ended.wait_for(milliseconds(0)) == std::future_status::ready;
        if (ended) retired->janitor.join();
        return ended;
    });
    const bool stopped = running_->stopWithin(kAcceptLoopWait);
    std::promise<void> ended;
    auto retired = std::make_unique<Retired>();
    retired->ended = ended.get_future();
    retired->janitor = std::thread([running = std::move(running_), ended = std::move(ended), stopped]() mutable {
        for (bool done = stopped; !done;)
            done = running->stopWithin(kJanitorWait);
        running->acceptThread.join();
        running.reset();
        ended.set_value();
    });
    retired_.push_back(std::move(retired));
}
