#pragma once

// A TLS server on 127.0.0.1 for the sandbox's services, on a thread of its own (and the library's workers).

#include <memory>
#include <thread>

#include <httplib.h>

#include "sandbox/certificate_authority.h"

class LoopbackHttpsServer {
  public:
    explicit LoopbackHttpsServer(const ServerIdentity& identity);
    ~LoopbackHttpsServer(); // stops
    LoopbackHttpsServer(const LoopbackHttpsServer&) = delete;
    LoopbackHttpsServer& operator=(const LoopbackHttpsServer&) = delete;

    httplib::SSLServer& handlers() { return *server_; } // to be set before start

    // Port 0 lets the system choose. Returns the port, or a number below 1 when it could not be had.
    int start(int port = 0);

    // Ends the connections that wait for a request; a handler that waits for something itself is to be woken first.
    void stop();

  private:
    std::unique_ptr<httplib::SSLServer> server_;
    std::thread acceptThread_;
};
