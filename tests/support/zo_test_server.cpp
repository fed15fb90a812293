#include "zo_test_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <cstddef>

#include <chrono>
#include <stdexcept>
#include <utility>

namespace zo {
namespace test {
namespace {

// A socket bound to a free port of the loopback address.
std::pair<int, int> boundSocket() {
  const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof(address);
  auto* p_address = reinterpret_cast<sockaddr*>(&address);
  if (fd < 0 || ::bind(fd, p_address, length) != 0 || ::getsockname(fd, p_address, &length) != 0) {
    throw std::runtime_error("no socket on the loopback address");
  }
  return {fd, ntohs(address.sin_port)};
}

std::string loopbackUrl(const std::string& scheme, int port, const std::string& path) {
  return scheme + "://127.0.0.1:" + std::to_string(port) + "/" + path;
}

}  // namespace

StalledServer::StalledServer(std::string first_bytes)
    : _first_bytes(std::move(first_bytes)), _listening_fd(-1), _wake_fds{-1, -1}, _port(0), _connections(0) {
  const auto bound = boundSocket();
  _listening_fd = bound.first;
  _port = bound.second;
  if (::listen(_listening_fd, 16) != 0 || ::pipe(_wake_fds) != 0) {
    throw std::runtime_error("cannot listen on the loopback address");
  }
  _thread = std::thread([this] { serve(); });
}

StalledServer::~StalledServer() {
  ::close(_wake_fds[1]);  // the thread sees the pipe's end
  _thread.join();
  ::close(_wake_fds[0]);
  ::close(_listening_fd);
}

void StalledServer::serve() {
  std::vector<int> clients;
  for (;;) {
    pollfd waits[2] = {{_listening_fd, POLLIN, 0}, {_wake_fds[0], POLLIN, 0}};
    if (::poll(waits, 2, -1) < 0) {
      continue;
    }
    if (waits[1].revents != 0) {
      break;
    }
    const int client = ::accept(_listening_fd, nullptr, nullptr);
    if (client < 0) {
      continue;
    }
    clients.push_back(client);
    ++_connections;
    std::size_t sent = 0;
    while (sent < _first_bytes.size()) {
      const ssize_t step =
          ::send(client, _first_bytes.data() + sent, _first_bytes.size() - sent, MSG_NOSIGNAL);
      if (step <= 0) {
        break;
      }
      sent += static_cast<std::size_t>(step);
    }
  }
  for (const int client : clients) {
    ::close(client);
  }
}

int StalledServer::awaitConnection() const {
  for (int i = 0; i < 3000 && _connections == 0; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return _connections;
}

std::string StalledServer::url(const std::string& scheme, const std::string& path) const {
  return loopbackUrl(scheme, _port, path);
}

std::string httpHead(long long length) {
  return "HTTP/1.1 200 OK\r\nContent-Type: application/octet-stream\r\nContent-Length: " +
         std::to_string(length) + "\r\nConnection: close\r\n\r\n";
}

std::string unreachableUrl(const std::string& scheme) {
  const auto bound = boundSocket();
  ::close(bound.first);  // a port that was free a moment ago
  return loopbackUrl(scheme, bound.second, "nothing");
}

}  // namespace test
}  // namespace zo
