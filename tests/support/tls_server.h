#pragma once

// A raw TLS server on 127.0.0.1 that does what a script tells it, byte for byte: for answers that no well-behaved HTTP
// server gives.

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "sandbox/certificate_authority.h"

// One accepted connection, TLS already established. Used by its script, on the connection's own thread. When the script
// returns, the connection is shut down properly (close_notify, then FIN) unless the script ended it in another way.
class TlsConnection {
  public:
    // A request's head and, when it announces a Content-Length, its body; what came so far when the client went away.
    std::string readRequest();

    // False once the client has gone away or the server is being destroyed.
    bool write(const std::string& bytes);

    void closeAbruptly(); // FIN without close_notify
    void reset();         // RST
    void stall();         // says nothing until the server is destroyed

    // Waits, for drips. False when the server is being destroyed.
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

    // Listens at a port of the system's choice; the script runs once for each connection whose handshake succeeds, on
    // several threads at once if need be.
    TlsServer(const ServerIdentity& identity, Script script);
    ~TlsServer(); // cuts what still runs, joins
    TlsServer(const TlsServer&) = delete;
    TlsServer& operator=(const TlsServer&) = delete;

    int port() const;
    std::vector<std::string> requests() const; // everything that readRequest returned

  private:
    friend class TlsConnection;
    struct Shared;
    std::unique_ptr<Shared> shared_;
};

// An HTTP answer with a Content-Length.
std::string httpAnswer(int status, const std::string& body);
