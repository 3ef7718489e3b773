#pragma once

// BoundedServer is an httplib::Server that limits the time of each connection. A connection serves one request. It ends
// after 1 s without data, and after 5 s in any case. The library's own time-outs are not enough, because they restart
// with each byte.

#include <httplib.h>

class BoundedServer : public httplib::Server {
  private:
    // The library calls this for each accepted connection, on a connection thread.
    bool process_and_close_socket(socket_t socket) override;
};
