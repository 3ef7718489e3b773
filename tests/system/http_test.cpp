// Tests the HTTPS client against servers on loopback that misbehave.

#include "system/http.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <httplib.h>

#include "support/eventually.h"
#include "support/platform.h"
#include "support/tls_server.h"
#include "support/trusted_authority.h"
#include "system/url.h"

namespace {

TEST(HttpsUrl, IsSplitOrRefused) {
    const struct {
        std::string url, parts; // parts are empty: the URL is refused
    } cases[] = {
        {"https://host", "host 443 /"},
        {"https://host:443/a?b=c#d", "host 443 /a?b=c#d"},
        {"https://host?x=/1", "host?x= 443 /1"},
        {"https://h:1//a:2", "h 1 //a:2"},
        {"https://h:065535/", "h 65535 /"},
        {"https:///a", ""},
        {"https://host:/a", ""},
        {"https://host:0", ""},
        {"https://host:65536", ""},
        {"https://host:44x", ""},
        {"https://:8443", ""},
        {"HTTPS://host/", ""},
    };
    for (const auto& row : cases) {
        std::string host, path;
        int port = 0;
        const bool good = parseHttpsUrl(row.url, host, port, path);
        EXPECT_EQ(good ? host + " " + std::to_string(port) + " " + path : "", row.parts) << row.url;
    }
}

constexpr auto kGoOn = [](auto...) { return true; };

class Http : public testing::Test {
  protected:
    TrustedAuthority trust_;
};

TEST_F(Http, OnlyACertificateForThisHostFromATrustedAuthorityIsAnswered) {
    const CertificateAuthority stranger;
    const CertificateAuthority& trusted = TrustedAuthority::authority();
    const struct {
        const char *name, *host;
        ServerIdentity identity;
        bool answered;
    } cases[] = {
        {"address", "127.0.0.1", TrustedAuthority::loopback(), true},
        {"name", "localhost", TrustedAuthority::loopback(), true},
        {"other name", "localhost", trusted.issue({{"other.example"}, {}, "localhost"}), false},
        {"other address", "127.0.0.1", trusted.issue({{"127.0.0.1"}, {"127.0.0.2"}, ""}), false},
        {"common name alone", "localhost", trusted.issue({{}, {}, "localhost"}), false},
        {"expired", "127.0.0.1", trusted.issue({{}, {"127.0.0.1"}, "", -30, -1}), false},
        {"self-signed", "127.0.0.1", trusted.issue({{}, {"127.0.0.1"}, "", -1, 30, true}), false},
        {"unknown authority", "127.0.0.1", stranger.issue({{}, {"127.0.0.1"}, ""}), false},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        const TlsServer server(row.identity, [](TlsConnection& connection) {
            connection.readRequest();
            connection.write(httpAnswer(200, "ok"));
        });
        const HttpsServer target{row.host, server.port(), 10};
        EXPECT_EQ(httpsGet(target, "/").answered, row.answered);
        EXPECT_EQ(httpsPostForm(target, "/", {{"secret", "s"}}).answered, row.answered);
        EXPECT_EQ(httpsDownload(target, "/", kGoOn, kGoOn).answered, row.answered);
        for (const std::string& request : server.requests())
            EXPECT_EQ(request.empty(), !row.answered) << "the request must not reach an untrusted server";
    }
}

TEST_F(Http, SmallAnswerThatDripsEndsAsAWholeAfterTwiceTheReadTimeout) {
    const TlsServer server(TrustedAuthority::loopback(), [](TlsConnection& connection) {
        connection.readRequest();
        for (const char byte : httpAnswer(200, "")) // takes 16 seconds
            if (!connection.write({byte}) || !connection.pause(200)) return;
    });
    EXPECT_FALSE(httpsGet({"127.0.0.1", server.port(), 1}, "/").answered);
    EXPECT_FALSE(httpsPostForm({"127.0.0.1", server.port(), 1}, "/", {}).answered);
}

TEST_F(Http, AbortEndsARequestInEveryPhase) {
    const auto expectEnd = [](const std::string& phase, int port, const std::function<bool()>& reached) {
        HttpAbort abort;
        const HttpsServer server{"127.0.0.1", port, 60, abort};
        const auto start = std::chrono::steady_clock::now();
        const std::jthread aborter([&] {
            EXPECT_TRUE(eventually(reached));
            abort.abort();
        });
        EXPECT_FALSE(httpsDownload(server, "/", kGoOn, kGoOn).answered) << phase;
        EXPECT_FALSE(httpsGet(server, "/").answered) << phase << ": later requests end too";
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30)) << phase;
        EXPECT_TRUE(eventually([] { return unfinishedRequests() == 0; })) << phase;
    };
    const std::string headers = "HTTP/1.1 200 OK\r\nX: ";
    for (const std::string& answer : {std::string(), headers, headers + "\r\nContent-Length: 100000\r\n\r\n"}) {
        std::atomic<bool> answering = false;
        const TlsServer server(TrustedAuthority::loopback(), [&](TlsConnection& connection) {
            connection.readRequest();
            connection.write(answer);
            answering = true;
            while (!answer.empty() && connection.write("x") && connection.pause(20)) {
            }
            connection.stall();
        });
        expectEnd(answer, server.port(), [&] { return answering.load(); });
    }
    httplib::Server silent; // clients can connect, but it never answers the TLS handshake
    expectEnd("handshake", silent.bind_to_any_port("127.0.0.1"), [] { return true; });
}

TEST_F(Http, StatusLineOfAnyLengthIsSafeOnAWorkersStack) {
    for (const std::size_t length : {std::size_t{20000}, std::size_t{32000}}) {
        const TlsServer server(TrustedAuthority::loopback(), [&](TlsConnection& connection) {
            connection.readRequest();
            connection.write("HTTP/1.1 200 " + std::string(length, 'x') + "\r\nContent-Length: 0\r\n\r\n");
        });
        std::thread([&] {
            EXPECT_EQ(httpsGet({"127.0.0.1", server.port(), 10}, "/").answered, length < 20480);
        }).join();
    }
}

TEST_F(Http, EndlessBodyEndsAtTheLimitOrByEitherCallback) {
    const TlsServer server(TrustedAuthority::loopback(), [](TlsConnection& connection) {
        connection.readRequest();
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 1000000000000000\r\n\r\n"); // does not fit into memory
        while (connection.write(std::string(10000, 'x'))) {
        }
    });
    const HttpsServer target{"127.0.0.1", server.port(), 10};
    const HttpsAnswer got = httpsGet(target, "/", {}, 50000);
    EXPECT_TRUE(got.answered && got.status == 200 && got.body.size() > 50000);
    EXPECT_LT(got.body.size(), 1000000u) << "the rest must not arrive";
    const HttpsAnswer posted = httpsPostForm(target, "/", {});
    EXPECT_TRUE(posted.answered && posted.status == 200 && posted.body.size() > kDefaultBodyLimit);
    const auto giveUp = [](auto...) { return false; };
    EXPECT_FALSE(httpsDownload(target, "/", giveUp, kGoOn).answered);
    EXPECT_FALSE(httpsDownload(target, "/", kGoOn, giveUp).answered);
}

} // namespace
