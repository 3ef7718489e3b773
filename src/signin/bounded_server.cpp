#include "signin/bounded_server.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string>

#include "system/sockets.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds kSilenceLimit{1000};
constexpr milliseconds kConnectionLimit{5000};

// The pure virtual functions of httplib::Stream differ between cpp-httplib 0.18.7 and 0.53.1. This class defines the
// functions of both versions, so none can be marked `override`.
// NOLINTBEGIN(modernize-use-override,modernize-use-nodiscard)
class BoundedConnection : public httplib::Stream {
  public:
    explicit BoundedConnection(std::intptr_t socket)
        : socket_(socket) {}

    [[nodiscard]] bool is_readable() const { return begin_ < end_; }
    [[nodiscard]] bool is_writable() const { return true; }
    [[nodiscard]] bool wait_readable() const { return true; }
    [[nodiscard]] bool wait_writable() const { return true; }
    [[nodiscard]] std::time_t duration() const { return 0; }
    [[nodiscard]] socket_t socket() const { return static_cast<socket_t>(socket_); }
    void get_remote_ip_and_port(std::string& /*address*/, int& /*port*/) const {}
    void get_local_ip_and_port(std::string& /*address*/, int& /*port*/) const {}

    ssize_t read(char* bytes, std::size_t size) {
        if (begin_ == end_) {
            const std::ptrdiff_t count = receiveWithin(socket_, buffer_.data(), buffer_.size(), patience());
            if (count <= 0) return static_cast<ssize_t>(count);
            begin_ = 0;
            end_ = static_cast<std::size_t>(count);
        }
        size = std::min(size, end_ - begin_);
        std::copy_n(buffer_.data() + begin_, size, bytes);
        begin_ += size;
        return static_cast<ssize_t>(size);
    }

    ssize_t write(const char* bytes, std::size_t size) {
        return static_cast<ssize_t>(sendWithin(socket_, bytes, size, patience()));
    }

  private:
    [[nodiscard]] milliseconds patience() const {
        const auto left = std::chrono::duration_cast<milliseconds>(deadline_ - steady_clock::now());
        return std::clamp(left, milliseconds(0), kSilenceLimit);
    }

    const std::intptr_t socket_;
    const steady_clock::time_point deadline_ = steady_clock::now() + kConnectionLimit;
    std::array<char, 4096> buffer_{}; // saves system calls: the library reads lines byte by byte
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
};
// NOLINTEND(modernize-use-override,modernize-use-nodiscard)

} // namespace

bool BoundedServer::process_and_close_socket(socket_t socket) {
    const auto number = static_cast<std::intptr_t>(socket);
    BoundedConnection connection(number);
    bool closed = false;
    const bool answered = process_request(connection, "", 0, "", 0, true, closed, nullptr);
    shutDownSocket(number);
    closeSocket(number);
    return answered;
}
