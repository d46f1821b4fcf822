#include "tests/support/LoopbackServer.h"

#include <array>
#include <stdexcept>
#include <utility>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace quorvane::testing {

LoopbackServer::LoopbackServer(Handler handler) : handler_{std::move(handler)} {
    socket_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const any = reinterpret_cast<sockaddr*>(&address);
    if (socket_ < 0 || ::bind(socket_, any, size) != 0 || ::listen(socket_, 16) != 0 ||
        ::getsockname(socket_, any, &size) != 0)
        throw std::runtime_error{"no server on 127.0.0.1"};
    port_ = ntohs(address.sin_port);
    thread_ = std::thread{[this] { serve(); }};
}

LoopbackServer::~LoopbackServer() {
    isStopping_ = true;
    thread_.join();
    ::close(socket_);
}

std::string LoopbackServer::url(const std::string& path) const {
    return "http://127.0.0.1:" + std::to_string(port_) + path;
}

std::vector<std::string> LoopbackServer::requests() const {
    const std::lock_guard guard{lock_};
    return requests_;
}

std::string LoopbackServer::answer(const std::string& status, const std::string& headers, const std::string& body) {
    return "HTTP/1.1 " + status + "\r\n" + headers +
           "Connection: close\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

void LoopbackServer::serve() {
    while (!isStopping_) {
        pollfd waiting{socket_, POLLIN, 0};
        constexpr int milliseconds = 20;
        if (::poll(&waiting, 1, milliseconds) != 1) continue;
        const int connection = ::accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC);
        if (connection < 0) continue;
        serve(connection);
        ::close(connection);
    }
}

void LoopbackServer::serve(int connection) {
    std::string head;
    std::array<char, 4096> chunk{};
    while (head.find("\r\n\r\n") == std::string::npos) {
        const ssize_t count = ::recv(connection, chunk.data(), chunk.size(), 0);
        if (count <= 0) return;
        head.append(chunk.data(), static_cast<std::size_t>(count));
    }
    {
        const std::lock_guard guard{lock_};
        requests_.push_back(head);
    }
    const std::string bytes = handler_(head);
    for (std::size_t sent = 0; sent < bytes.size();) {
        const ssize_t count = ::send(connection, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count <= 0) return;  // the client has had enough
        sent += static_cast<std::size_t>(count);
    }
}

}  // namespace quorvane::testing
