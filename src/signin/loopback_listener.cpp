#include "signin/loopback_listener.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <future>
#include <system_error>
#include <thread>
#include <utility>

#include <httplib.h>

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr std::size_t kConnectionThreads = 256;
constexpr std::size_t kLongestBody = 4096; // a redirect has none
constexpr auto kAcceptLoopPatience = milliseconds(20);
constexpr auto kJanitorPatience = milliseconds(2000);

std::atomic<bool> threadsLeft = false;

constexpr char kRedirectPage[] =
    "<!DOCTYPE html><html><head><title>VOLO</title></head><body style=\"font-family:sans-serif;background:#0b1020;"
    "color:#e8ecf4;display:flex;align-items:center;justify-content:center;height:100vh;margin:0\"><div "
    "style=\"text-align:center\"><h2>Sign-in complete</h2><p>You can close this tab and return to VOLO Launcher.</p>"
    "</div></body></html>";

// A thread for every connection that is open, up to the limit: a connection that says nothing holds up nobody.
class ConnectionThreads : public httplib::TaskQueue {
  public:
    bool enqueue(std::function<void()> connection) override {
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            waiting_.push_back(std::move(connection));
            if (waiting_.size() > idleCount_ && threads_.size() < kConnectionThreads && !startThread()) {
                waiting_.pop_back();
                return false; // the server closes it
            }
        }
        changed_.notify_one();
        return true;
    }

    // Connections that still wait are served too, since each owns a socket: the server closes them unanswered.
    void shutdown() override {
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            shuttingDown_ = true;
        }
        changed_.notify_all();
        for (std::thread& thread : threads_)
            thread.join();
    }

  private:
    // Whether somebody will serve what waits: a system that grants no more threads leaves it to those there are.
    bool startThread() {
        try {
            threads_.emplace_back([this] { serve(); });
        } catch (const std::system_error&) {
        }
        return !threads_.empty();
    }

    void serve() {
        std::unique_lock<std::mutex> lock(mutex_);
        for (;;) {
            ++idleCount_;
            changed_.wait(lock, [this] { return shuttingDown_ || !waiting_.empty(); });
            --idleCount_;
            if (waiting_.empty()) return;
            const std::function<void()> connection = std::move(waiting_.front());
            waiting_.pop_front();
            lock.unlock();
            connection();
            lock.lock();
        }
    }

    std::mutex mutex_; // guards everything below; `threads_` grows on the accept thread only
    std::condition_variable changed_;
    std::deque<std::function<void()>> waiting_;
    std::size_t idleCount_ = 0;
    bool shuttingDown_ = false;
    std::vector<std::thread> threads_;
};

// Connections come from anyone on the machine, so none may keep a thread for long by saying nothing.
void configure(httplib::Server& server) {
    server.new_task_queue = [] { return new ConnectionThreads; };
    server.set_keep_alive_max_count(1);
    server.set_keep_alive_timeout(1);
    server.set_read_timeout(1, 0);
    server.set_write_timeout(1, 0);
    server.set_payload_max_length(kLongestBody);
    // The library's own options would let a second program bind the same port and take the code.
    server.set_socket_options([]([[maybe_unused]] socket_t socket) {
#ifdef _WIN32
        const int yes = 1;
        setsockopt(socket, SOL_SOCKET, SO_EXCLUSIVEADDRUSE, reinterpret_cast<const char*>(&yes), sizeof yes);
#endif
    });
}

void failAttempt(SignInMailbox& mailbox, const std::string& message) {
    mailbox.result = {};
    mailbox.result.hasResult = true;
    mailbox.result.errorMessage = message;
}

// `error` comes first and is believed whatever `state` says.
void recordRedirect(SignInMailbox& mailbox, const httplib::Request& request, const std::string& oauthState) {
    const std::string error = request.get_param_value("error"); // of several values the first
    const std::string code = request.get_param_value("code");
    if (!error.empty()) {
        failAttempt(mailbox, "Google sign-in was not completed (" + error + ").");
    } else if (request.get_param_value("state") != oauthState) {
        failAttempt(mailbox, "The sign-in response did not match this launcher session.");
    } else if (code.empty()) {
        failAttempt(mailbox, "Google did not return a sign-in code.");
    } else {
        mailbox.pendingCode = code;
    }
}

} // namespace

struct LoopbackListener::Running {
    httplib::Server server;
    std::thread acceptThread;
    std::atomic<bool> acceptEnded = false; // a failed accept ends the library's loop for good

    // The library ignores a stop before its accept loop runs, so that is waited for.
    bool stopWithin(milliseconds patience) {
        const auto deadline = steady_clock::now() + patience;
        while (!server.is_running() && !acceptEnded) {
            if (steady_clock::now() >= deadline) return false;
            std::this_thread::sleep_for(milliseconds(1));
        }
        server.stop();
        return true;
    }
};

// A stopped server whose connections have not all ended yet.
struct LoopbackListener::Retired {
    std::future<void> ended;
    std::thread janitor; // owns the server
};

LoopbackListener::LoopbackListener() = default;

LoopbackListener::~LoopbackListener() {
    stop();
    const auto deadline = steady_clock::now() + kJanitorPatience;
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

bool LoopbackListener::start(const std::shared_ptr<SignInMailbox>& mailbox, const std::string& oauthState) {
    stop();
    auto running = std::make_unique<Running>();
    configure(running->server);
    port_ = running->server.bind_to_any_port("127.0.0.1");
    if (port_ <= 0) {
        port_ = -1;
        return false;
    }

    const std::uint32_t number = ++lastNumber_;
    running->server.Get("/",
                        [mailbox, oauthState, number](const httplib::Request& request, httplib::Response& response) {
                            const std::lock_guard<std::mutex> lock(mailbox->mutex);
                            if (mailbox->listening == number) recordRedirect(*mailbox, request, oauthState);
                            response.set_content(kRedirectPage, "text/html");
                        });
    mailbox_ = mailbox;
    {
        const std::lock_guard<std::mutex> lock(mailbox_->mutex);
        mailbox_->listening = number;
    }
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
    {
        const std::lock_guard<std::mutex> lock(mailbox_->mutex);
        mailbox_->listening = 0;
    }
    mailbox_.reset();

    std::erase_if(retired_, [](const std::unique_ptr<Retired>& retired) {
        const bool ended = retired->ended.wait_for(milliseconds(0)) == std::future_status::ready;
        if (ended) retired->janitor.join();
        return ended;
    });
    const bool stopped = running_->stopWithin(kAcceptLoopPatience);
    std::promise<void> ended;
    auto retired = std::make_unique<Retired>();
    retired->ended = ended.get_future();
    retired->janitor = std::thread([running = std::move(running_), ended = std::move(ended), stopped]() mutable {
        for (bool done = stopped; !done;)
            done = running->stopWithin(kJanitorPatience);
        running->acceptThread.join();
        running.reset();
        ended.set_value();
    });
    retired_.push_back(std::move(retired));
}
