#pragma once

#include "service/Service.h"

#include <httplib.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <memory>
#include <string>
#include <utility>

namespace velmorant::service::testing {

// A service on a free port of 127.0.0.1 for one test, stopped afterwards.
class RunningService {
public:
    explicit RunningService(ServiceOptions options = {}) {
        options.port = 0;
        service_ = std::make_unique<Service>(options);
    }
    Service& service() { return *service_; }
    int port() const { return service_->port(); }
    httplib::Client client() const {
        httplib::Client client("127.0.0.1", port());
        client.set_url_encode(false);
        client.set_read_timeout(60, 0);
        return client;
    }

private:
    std::unique_ptr<Service> service_;
};

// A raw connection, for requests no well-behaved client sends.
class RawConnection {
public:
    explicit RawConnection(int port) : fd_(::socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        connected_ = ::connect(fd_, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
        timeval timeout{20, 0};
        ::setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
        ::setsockopt(fd_, SOL_SOCKET, SO_SNDTIMEO, &timeout, sizeof timeout);
    }
    ~RawConnection() { ::close(fd_); }
    RawConnection(const RawConnection&) = delete;
    RawConnection& operator=(const RawConnection&) = delete;

    bool connected() const { return connected_; }
    // A small send buffer keeps most of a large request in the client until the server reads it.
    void limitSendBuffer(int bytes) { ::setsockopt(fd_, SOL_SOCKET, SO_SNDBUF, &bytes, sizeof bytes); }
    bool send(const std::string& bytes) { return ::send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size()); }
    // What arrives until `needle` has been seen, the peer closes or 15 s pass.
    std::string receiveUntil(const std::string& needle) {
        std::string received;
        char buffer[4096];
        auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(15);
        while (received.find(needle) == std::string::npos && std::chrono::steady_clock::now() < deadline) {
            ssize_t n = ::recv(fd_, buffer, sizeof buffer, 0);
            if (n <= 0) break;
            received.append(buffer, static_cast<std::size_t>(n));
        }
        return received;
    }
    // What arrives until the peer closes or 15 s pass, and whether it ended in a reset.
    std::pair<std::string, bool> receiveUntilClosed() {
        std::string received;
        char buffer[4096];
        auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(15);
        while (std::chrono::steady_clock::now() < deadline) {
            ssize_t n = ::recv(fd_, buffer, sizeof buffer, 0);
            if (n == 0) return {received, false};
            if (n < 0) return {received, errno == ECONNRESET};
            received.append(buffer, static_cast<std::size_t>(n));
        }
        return {received, false};
    }

private:
    int fd_;
    bool connected_ = false;
};

}  // namespace velmorant::service::testing
