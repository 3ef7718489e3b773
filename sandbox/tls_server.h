#pragma once

// A TLS server on 127.0.0.1. A script serves each connection. It chooses every byte, so it can send responses that a
// correct HTTP server never sends.

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "sandbox/certificate_authority.h"

// One accepted connection after its TLS handshake. Only the script uses it, on the connection's own thread. When the
// script returns, the server sends close_notify and FIN, unless the script has ended the connection itself.
class TlsConnection {
  public:
    // Reads a request: its head, and a body of the length in Content-Length. If the client closes the connection before
    // the end of the request, returns what has arrived.
    std::string readRequest();

    // False if the client has closed the connection or the server is being destroyed.
    bool write(const std::string& bytes);

    void closeAbruptly(); // FIN without close_notify
    void reset();         // RST
    void stall();         // sends nothing until the server is destroyed

    // Waits for this time. False if the server is being destroyed.
    bool pause(int milliseconds);

  private:
    friend class TlsServer;
    struct State;
    explicit TlsConnection(State& state)
        : state_(state) {}
    State& state_;
};

class TlsServer {
  public:
    using Script = std::function<void(TlsConnection&)>;

    // Starts to listen. If `port` is 0, the system chooses the port. The script runs once for each connection, on the
    // connection's own thread. It starts after the handshake. If the identity has no certificate, there is no
    // handshake: the script starts at once and can only pause, stall, reset or close.
    TlsServer(const ServerIdentity& identity, Script script, int port = 0);
    ~TlsServer(); // shuts down the open connections and joins their threads
    TlsServer(const TlsServer&) = delete;
    TlsServer& operator=(const TlsServer&) = delete;

    [[nodiscard]] int port() const;                          // 0 if the port was not free
    [[nodiscard]] std::vector<std::string> requests() const; // all requests that readRequest has returned

  private:
    friend class TlsConnection;
    struct Shared;
    std::unique_ptr<Shared> shared_;
};
