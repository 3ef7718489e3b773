// Tests the listener with browsers, other programs and clients that stall.

#include "signin/loopback_listener.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <httplib.h>

#include "sandbox/loopback_connection.h"
#include "support/eventually.h"

namespace {

constexpr char kMismatch[] = "[The sign-in response did not match this launcher session.]";

class Listener : public testing::Test {
  protected:
    void start() {
        generation_ = mailbox_->startAttempt();
        ASSERT_TRUE(listener_->start(mailbox_, {generation_, "state-1", "", "", ""}));
    }

    // Returns the code that arrived, then the failure in brackets. Empties the mailbox and opens it again for the
    // current attempt.
    std::string reported() {
        const auto [code, result] = mailbox_->take();
        mailbox_->openFor(generation_);
        return result.hasResult ? code + "[" + result.errorMessage + "]" : code;
    }

    httplib::Result get(const std::string& target) {
        httplib::Client client("127.0.0.1", listener_->port());
        client.set_read_timeout(20, 0);
        return client.Get(target, {{"Cookie", std::string(16384, 'c')}}); // cookies are shared by all ports of a host
    }

    std::uint32_t generation_ = 0;
    std::shared_ptr<SignInMailbox> mailbox_ = std::make_shared<SignInMailbox>();
    std::unique_ptr<LoopbackListener> listener_ = std::make_unique<LoopbackListener>();
};

TEST_F(Listener, EveryRequestGetsItsAnswerAndTheFirstRuleThatApplies) {
    start();
    httplib::Server other; // cpp-httplib's default socket options let two servers share a port
    EXPECT_FALSE(other.bind_to_port("127.0.0.1", listener_->port())) << "another program can get the answer";
    const struct {
        const char* target;
        std::string reported;
        int status = 200;
    } cases[] = {
        {"/?state=state-1&code=abc", "abc"},
        {"/?code=a%2Fb%2B%20c&state=state-1&scope=openid&error=", "a/b+ c"},
        {"/", kMismatch},
        {"/?state=state-11&code=abc", kMismatch},
        {"/?state=wrong&state=state-1&code=abc", kMismatch},
        {"/?state=state-1%00&code=abc", kMismatch},
        {"/?state=state-1&code=", "[Google did not return a sign-in code.]"},
        {"/?error=%3Cb%3E%C3%BC", "[Google sign-in was not completed (<b>\xC3\xBC).]"},
        {"/?state=state-1&code=abc&error=x", "[Google sign-in was not completed (x).]"},
        {"/favicon.ico", "", 404},
        {"/callback?state=state-1&code=abc", "", 404},
    };
    for (const auto& row : cases) {
        const httplib::Result answer = get(row.target);
        ASSERT_TRUE(answer) << row.target;
        EXPECT_EQ(answer->status, row.status) << row.target;
        EXPECT_EQ(answer->get_header_value("Content-Type") == "text/html", row.status == 200) << row.target;
        EXPECT_EQ(reported(), row.reported) << row.target;
    }
    httplib::Client client("127.0.0.1", listener_->port());
    EXPECT_EQ(client.Post("/?state=state-1&code=abc", std::string(5000, 'x'), "text/plain")->status, 413);
    EXPECT_EQ(reported(), "");
}

TEST_F(Listener, TheLaterOfTwoCodesCountsUntilAFrameTakesIt) {
    start();
    for (const char* target : {"/?state=state-1&code=one", "/?state=state-1&code=two", "/?state=wrong&code=three"})
        ASSERT_TRUE(get(target));
    EXPECT_EQ(mailbox_->take().code, "two") << "a failure keeps the code";
    ASSERT_TRUE(get("/?state=state-1&code=four"));
    EXPECT_EQ(mailbox_->take().code, "");
}

TEST_F(Listener, StopsEvenBeforeItsAcceptLoopRuns) {
    for (int round = 0; round < 20; ++round) {
        start();
        const int port = listener_->port();
        listener_->stop();
        EXPECT_EQ(listener_->port(), 0);
        EXPECT_TRUE(eventually([&] { return !LoopbackConnection(port).isOpen(); })) << "round " << round;
    }
}

TEST_F(Listener, RequestThatEndsAfterTheStopReportsNothing) {
    start();
    std::deque<LoopbackConnection> late;
    for (int i = 0; i < 8; ++i)
        late.emplace_back(listener_->port()).send("GET /?state=state-1&code=late HTTP/1.1\r\nHost: x\r\n");
    ASSERT_TRUE(get("/favicon.ico")); // after this answer, the listener is reading the late requests
    listener_->stop();
    for (LoopbackConnection& connection : late)
        connection.send("\r\n");
    listener_.reset();
    EXPECT_EQ(mailbox_->take().code, "");
}

TEST_F(Listener, AnswersTheBrowserAndStopsWithoutWaitingForClientsThatStall) {
    start();
    std::deque<LoopbackConnection> clients;
    for (int i = 0; i < 300; ++i) { // more than the listener has threads
        clients.emplace_back(listener_->port()).send("GET / HTTP/1.1\r\n");
        std::this_thread::sleep_for(std::chrono::milliseconds(1)); // a full backlog would delay a connection by 1 s
    }
    std::jthread dripping([&](const std::stop_token& ended) {
        while (!ended.stop_requested()) {
            for (LoopbackConnection& client : clients)
                client.send("x"); // a header line without end
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
    });
    EXPECT_TRUE(get("/?state=state-1&code=abc"));
    EXPECT_EQ(reported(), "abc");
    listener_->stop();
    EXPECT_GT(mailbox_.use_count(), 1) << "stop() waited for the clients: the server is gone already";
    listener_.reset();
    dripping.request_stop();
    dripping.join();
    clients.clear();
    EXPECT_TRUE(eventually([&] { return mailbox_.use_count() == 1; })) << "a thread outlived its client";
}

} // namespace
