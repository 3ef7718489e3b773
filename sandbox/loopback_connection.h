#pragma once

// A plain TCP connection to a port of 127.0.0.1 that says what it is told and nothing more: a browser's spare
// connection, or somebody who means to hold the listener up. One thread at a time.

#include <cstdint>
#include <string>

class LoopbackConnection {
  public:
    explicit LoopbackConnection(int port);
    ~LoopbackConnection();
    LoopbackConnection(const LoopbackConnection&) = delete;
    LoopbackConnection& operator=(const LoopbackConnection&) = delete;

    // False when nobody listened there.
    [[nodiscard]] bool isOpen() const { return isOpen_; }

    void send(const std::string& bytes);

  private:
    std::intptr_t socket_;
    bool isOpen_;
};
