#pragma once

// A TLS server on 127.0.0.1. A script of its owner serves every connection and decides every byte, so it can also give
// answers that no well-behaved HTTP server gives.

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "sandbox/certificate_authority.h"

// One accepted connection after its TLS handshake. Only its script uses it, on the connection's own thread. When the
// script returns, the server sends close_notify and FIN, unless the script has ended the connection itself.
class TlsConnection {
  public:
    // Reads a request: its head and as many bytes as its Content-Length announces. Returns what has arrived when the
    // client closes before that.
    std::string readRequest();

    // False when the client has gone or the server is being destroyed.
    bool write(const std::string& bytes);

    void closeAbruptly(); // FIN without close_notify
    void reset();         // RST
    void stall();         // sends nothing until the server is destroyed

    // Waits. False when the server is being destroyed.
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

    // Starts to listen; port 0 lets the system choose. The script runs once for every connection, on several threads at
    // once.
    TlsServer(const ServerIdentity& identity, Script script, int port = 0);
    ~TlsServer(); // cuts the open connections and joins their threads
    TlsServer(const TlsServer&) = delete;
    TlsServer& operator=(const TlsServer&) = delete;

    [[nodiscard]] int port() const;                          // 0 when the port was not free
    [[nodiscard]] std::vector<std::string> requests() const; // everything that readRequest has returned

  private:
    friend class TlsConnection;
    struct Shared;
    std::unique_ptr<Shared> shared_;
};
