// The listener against browsers, strangers and clients that say nothing.

#include "signin/loopback_listener.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <deque>
#include <mutex>
#include <thread>

#include <gtest/gtest.h>
#include <httplib.h>

#include "sandbox/loopback_connection.h"
#include "support/eventually.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr char kPage[] =
    R"(<!DOCTYPE html><html><head><title>VOLO</title></head><body style="font-family:sans-serif;background:#0b1020;color:#e8ecf4;display:flex;align-items:center;justify-content:center;height:100vh;margin:0"><div style="text-align:center"><h2>Sign-in complete</h2><p>You can close this tab and return to VOLO Launcher.</p></div></body></html>)";
constexpr char kMismatch[] = "[The sign-in response did not match this launcher session.]";
constexpr auto kBlink = milliseconds(50); // what the window may stand still

milliseconds since(steady_clock::time_point start) {
    return std::chrono::duration_cast<milliseconds>(steady_clock::now() - start);
}

class Listener : public testing::Test {
  protected:
    void start() { ASSERT_TRUE(listener_->start(mailbox_, "state-1")); }

    // What the mailbox holds: the code, or the failure in brackets. Empties it.
    std::string recorded() {
        const std::lock_guard<std::mutex> lock(mailbox_->mutex);
        const SignInResult result = std::exchange(mailbox_->result, {});
        std::string text = std::exchange(mailbox_->pendingCode, {});
        if (result.hasResult) text += "[" + result.errorMessage + "]";
        EXPECT_FALSE(result.success || result.fromRestore);
        return text;
    }

    // Windows takes a moment to close a socket that a thread still waits on.
    static bool isOpen(int port) { return LoopbackConnection(port).isOpen(); }

    httplib::Result get(const std::string& target) {
        httplib::Client client("127.0.0.1", listener_->port());
        client.set_read_timeout(10, 0);
        return client.Get(target);
    }

    std::shared_ptr<SignInMailbox> mailbox_ = std::make_shared<SignInMailbox>();
    std::unique_ptr<LoopbackListener> listener_ = std::make_unique<LoopbackListener>();
};

TEST_F(Listener, EveryRedirectGetsThePageAndTheFirstRuleThatApplies) {
    start();
    const std::pair<const char*, std::string> cases[] = {
        {"/?state=state-1&code=abc", "abc"},
        {"/?code=a%2Fb%2B%20c&state=state-1&scope=openid", "a/b+ c"},
        {"/", kMismatch},
        {"/?code=abc", kMismatch},
        {"/?state=&code=abc", kMismatch},
        {"/?state=state-2&code=abc", kMismatch},
        {"/?state=state-11&code=abc", kMismatch},
        {"/?state=wrong&state=state-1&code=abc", kMismatch},
        {"/?state=state-1%00&code=abc", kMismatch},
        {"/?state=state-1", "[Google did not return a sign-in code.]"},
        {"/?state=state-1&code=", "[Google did not return a sign-in code.]"},
        {"/?error=access_denied", "[Google sign-in was not completed (access_denied).]"},
        {"/?state=state-1&code=abc&error=x", "[Google sign-in was not completed (x).]"},
        {"/?error=%3Cb%3E%C3%BC&state=state-1", "[Google sign-in was not completed (<b>\xC3\xBC).]"},
        {"/?error=&state=state-1&code=abc", "abc"},
    };
    for (const auto& [target, expected] : cases) {
        const httplib::Result answer = get(target);
        ASSERT_TRUE(answer) << target;
        EXPECT_EQ(answer->status, 200) << target;
        EXPECT_EQ(answer->body, kPage) << target;
        EXPECT_EQ(answer->get_header_value("Content-Type"), "text/html") << target;
        EXPECT_EQ(recorded(), expected) << target;
    }
}

TEST_F(Listener, OtherPathsAndMethodsLeaveTheAttemptAlone) {
    start();
    for (const char* target : {"/favicon.ico", "//", "/callback?state=state-1&code=abc", "/index.html?error=x"}) {
        const httplib::Result answer = get(target);
        ASSERT_TRUE(answer) << target;
        EXPECT_EQ(answer->status, 404) << target;
    }
    httplib::Client client("127.0.0.1", listener_->port());
    EXPECT_EQ(client.Post("/?state=state-1&code=abc", "error=x", "application/x-www-form-urlencoded")->status, 404);
    EXPECT_EQ(recorded(), "");
}

TEST_F(Listener, TheLaterOfTwoCodesCountsAndAFailureKeepsTheCode) {
    start();
    for (const char* target : {"/?state=state-1&code=one", "/?state=state-1&code=two", "/?state=wrong&code=three"})
        ASSERT_TRUE(get(target));
    EXPECT_EQ(recorded(), std::string("two") + kMismatch);
}

TEST_F(Listener, StoppedListenerAnswersNoMoreAndItsSuccessorHasItsOwnState) {
    listener_->stop();
    EXPECT_EQ(listener_->port(), 0);
    for (int round = 0; round < 20; ++round) { // stopped before its accept loop can have run
        start();
        const int port = listener_->port();
        ASSERT_GT(port, 0);
        listener_->stop();
        EXPECT_EQ(listener_->port(), 0);
        EXPECT_TRUE(eventually([&] { return !isOpen(port); })) << "round " << round;
    }
    ASSERT_TRUE(listener_->start(mailbox_, "state-2"));
    ASSERT_TRUE(get("/?state=state-1&code=old"));
    EXPECT_EQ(recorded(), kMismatch);
}

TEST_F(Listener, RequestFinishedAfterTheStopRecordsNothing) {
    start();
    std::deque<LoopbackConnection> late;
    for (int i = 0; i < 8; ++i) {
        late.emplace_back(listener_->port()).send("GET /?state=state-1&code=late HTTP/1.1\r\nHost: x\r\n");
    }
    ASSERT_TRUE(get("/favicon.ico")); // by now the earlier ones are being read
    listener_->stop();
    for (LoopbackConnection& connection : late)
        connection.send("\r\n");
    listener_.reset(); // waits for those that still read
    EXPECT_EQ(recorded(), "");
}

TEST_F(Listener, NobodyElseCanBindItsPort) {
    start();
    httplib::Server other; // with the library's own, sharing, socket options
    EXPECT_FALSE(other.bind_to_port("127.0.0.1", listener_->port()));
}

// --- clients that keep a connection and say little -------------------------------------------------------------------

// Silent, half-way through a request line, and dripping header lines for ever. The machine that runs this may be busy,
// so the best of three rounds counts: a stop that waited for a client would be slow in each of them.
TEST_F(Listener, AnswersTheBrowserAndStopsAtOnceWhileOthersStall) {
    for (const std::string opening : {"", "GET /?sta", "GET / HTTP/1.1\r\n"}) {
        SCOPED_TRACE(opening);
        auto slowestAnswer = milliseconds::max(), stopping = milliseconds::max(), dying = milliseconds::max();
        for (int round = 0; round < 3 && (slowestAnswer > milliseconds(500) || stopping > kBlink); ++round) {
            listener_ = std::make_unique<LoopbackListener>();
            start();
            const int port = listener_->port();
            std::deque<LoopbackConnection> clients;
            for (int i = 0; i < 64; ++i)
                clients.emplace_back(port).send(opening);
            std::atomic<bool> ended = false;
            std::thread dripping([&] {
                while (!ended && opening.ends_with('\n')) {
                    for (LoopbackConnection& client : clients)
                        client.send("X: y\r\n");
                    std::this_thread::sleep_for(milliseconds(100));
                }
            });

            const auto asked = steady_clock::now();
            const httplib::Result answer = get("/?state=state-1&code=abc");
            slowestAnswer = std::min(slowestAnswer, since(asked));
            EXPECT_TRUE(answer);
            EXPECT_EQ(recorded(), "abc");

            const auto stopped = steady_clock::now();
            listener_->stop();
            stopping = std::min(stopping, since(stopped));
            EXPECT_TRUE(eventually([&] { return !isOpen(port); }));

            const auto destroyed = steady_clock::now();
            listener_.reset();
            dying = std::min(dying, since(destroyed));
            ended = true;
            dripping.join();
            clients.clear();
            EXPECT_TRUE(
                eventually([&] { // only the copy and the fixture's own: the copy's end is what orders the threads
                    return std::shared_ptr<SignInMailbox>(mailbox_).use_count() == 2;
                }))
                << "a thread has outlived its client";
        }
        EXPECT_LE(slowestAnswer, milliseconds(500));
        EXPECT_LE(stopping, kBlink);
        EXPECT_LE(dying, milliseconds(2500)); // even while clients go on dripping
    }
}

} // namespace
