#pragma once

// A plain TCP connection to a port of 127.0.0.1 that sends only what is passed to send(). It simulates a browser's
// spare connection, or a client that stalls the listener. Use it on one thread at a time.

#include <cstdint>
#include <string>

class LoopbackConnection {
  public:
    explicit LoopbackConnection(int port);
    ~LoopbackConnection();
    LoopbackConnection(const LoopbackConnection&) = delete;
    LoopbackConnection& operator=(const LoopbackConnection&) = delete;

    // False if the connection was refused.
    [[nodiscard]] bool isOpen() const { return isOpen_; }

    void send(const std::string& bytes);

  private:
    std::intptr_t socket_;
    bool isOpen_;
};
