#pragma once

// An httplib::Server whose connections cannot be held open: each serves one request, ends after a second of silence,
// and ends as a whole after 5 s. The library's own time-outs start anew with each byte that arrives.

#include <httplib.h>

class BoundedServer : public httplib::Server {
  private:
    // Connection threads. The library calls this for each accepted connection.
    bool process_and_close_socket(socket_t socket) override;
};
