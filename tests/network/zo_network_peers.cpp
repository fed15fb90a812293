#include "zo_network_peers.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include "zo_test_files.h"

namespace zo {
namespace test {
namespace {

constexpr int POLL_MS = 20;

sockaddr_in loopback(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<uint16_t>(port));
  return address;
}

bool sendAll(int fd, const char* p_data, std::size_t size) {
  while (size != 0) {
    const ssize_t count = ::send(fd, p_data, size, MSG_NOSIGNAL);
    if (count <= 0) {
      return false;
    }
    p_data += count;
    size -= static_cast<std::size_t>(count);
  }
  return true;
}

bool readable(int fd) {
  pollfd wait = {fd, POLLIN, 0};
  return ::poll(&wait, 1, POLL_MS) > 0;
}

// Makes the close that follows send a reset instead of an orderly end.
void resetOnClose(int fd) {
  const linger abrupt = {1, 0};
  ::setsockopt(fd, SOL_SOCKET, SO_LINGER, &abrupt, sizeof(abrupt));
}

}  // namespace

ConnectionServer::ConnectionServer(std::function<void(int)> handler)
    : _handler(std::move(handler)), _listening_fd(-1), _port(0), _stopping(false) {
  _listening_fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address = loopback(0);
  socklen_t length = sizeof(address);
  auto* const p_address = reinterpret_cast<sockaddr*>(&address);
  if (_listening_fd < 0 || ::bind(_listening_fd, p_address, length) != 0 ||
      ::listen(_listening_fd, 16) != 0 || ::getsockname(_listening_fd, p_address, &length) != 0) {
    throw std::runtime_error("cannot listen on the loopback address");
  }
  _port = ntohs(address.sin_port);
  _accepting = std::thread([this] { accept(); });
}

ConnectionServer::~ConnectionServer() {
  _stopping = true;
  _accepting.join();
  for (const int client : _clients) {
    ::shutdown(client, SHUT_RDWR);
  }
  for (std::thread& thread : _threads) {
    thread.join();
  }
  for (const int client : _clients) {
    ::close(client);
  }
  ::close(_listening_fd);
}

void ConnectionServer::accept() {
  while (!_stopping) {
    if (!readable(_listening_fd)) {
      continue;
    }
    const int client = ::accept4(_listening_fd, nullptr, nullptr, SOCK_CLOEXEC);
    if (client >= 0) {
      _clients.push_back(client);
      _threads.emplace_back([this, client] {
        _handler(client);
        ::shutdown(client, SHUT_RDWR);
      });
    }
  }
}

HttpFileServer::HttpFileServer(const std::string& path)
    : _bytes(readFile(path)), _requests(0), _server([this](int client) { serve(client); }) {}

std::string HttpFileServer::url(const std::string& name) const {
  return "http://127.0.0.1:" + std::to_string(port()) + "/" + name;
}

void HttpFileServer::serve(int client) {
  std::string request;
  char block[1024];
  while (request.find("\r\n\r\n") == std::string::npos) {
    const ssize_t count = ::recv(client, block, sizeof(block), 0);
    if (count <= 0) {
      return;
    }
    request.append(block, static_cast<std::size_t>(count));
  }
  ++_requests;
  const std::size_t size = _bytes.size();
  std::size_t first = 0;
  const std::size_t range = request.find("Range: bytes=");
  if (range != std::string::npos) {
    first = std::min<std::size_t>(std::strtoull(request.c_str() + range + 13, nullptr, 10), size);
  }
  if (first == size && size != 0) {
    const std::string refusal =
        "HTTP/1.1 416 Range Not Satisfiable\r\nContent-Length: 0\r\nConnection: close\r\n\r\n";
    sendAll(client, refusal.data(), refusal.size());
    return;
  }
  std::string head = range == std::string::npos ? "HTTP/1.1 200 OK\r\n" : "HTTP/1.1 206 Partial Content\r\n";
  head +=
      "Accept-Ranges: bytes\r\nConnection: close\r\nContent-Length: " + std::to_string(size - first) + "\r\n";
  if (range != std::string::npos) {
    head += "Content-Range: bytes " + std::to_string(first) + "-" + std::to_string(size - 1) + "/" +
            std::to_string(size) + "\r\n";
  }
  head += "\r\n";
  if (sendAll(client, head.data(), head.size())) {
    sendAll(client, _bytes.data() + first, size - first);
  }
}

FaultProxy::FaultProxy(int server_port)
    : _server_port(server_port), _kind(Fault::NONE), _after(0), _connections(0), _server([this](int client) {
        relay(client);
      }) {}

void FaultProxy::setFault(Fault fault) {
  _after = fault.after;
  _kind = fault.kind;
}

void FaultProxy::relay(int client) {
  int kind = _kind;
  long long left = _after;
  ++_connections;
  const int server = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address = loopback(_server_port);
  if (::connect(server, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0) {
    ::close(server);
    return;
  }
  char block[4096];
  bool open = true;
  while (open && !_server.stopping()) {
    const bool faulty = kind != Fault::NONE && left <= 0;
    if (faulty && kind == Fault::RESET) {
      resetOnClose(client);
      ::dup2(server, client);  // takes the descriptor's place, which closes the connection at once
      break;
    }
    if (faulty && kind == Fault::CLOSE) {
      break;
    }
    if (faulty && kind == Fault::PAUSE) {
      std::this_thread::sleep_for(std::chrono::milliseconds(500));
      kind = Fault::NONE;
      continue;
    }
    pollfd waits[2] = {{client, POLLIN, 0}, {server, POLLIN, 0}};
    if (faulty && kind == Fault::STALL) {
      waits[1].fd = -1;
    }
    if (::poll(waits, 2, POLL_MS) < 0) {
      break;
    }
    if (waits[0].revents != 0) {
      const ssize_t count = ::recv(client, block, sizeof(block), 0);
      open = count > 0 && sendAll(server, block, static_cast<std::size_t>(count));
    }
    if (open && waits[1].fd >= 0 && waits[1].revents != 0) {
      std::size_t most = sizeof(block);
      if (kind != Fault::NONE) {
        most = left > 0 ? std::min<std::size_t>(most, static_cast<std::size_t>(left)) : 1;
      }
      const ssize_t count = ::recv(server, block, most, 0);
      open = count > 0 && sendAll(client, block, static_cast<std::size_t>(count));
      left -= std::max<ssize_t>(count, 0);
      if (faulty) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
      }
    }
  }
  ::close(server);
}

ServerProcess::ServerProcess(const std::vector<std::string>& command) : _pid(-1), _output_fd(-1), _port(0) {
  int pipe_fds[2];
  if (::pipe(pipe_fds) != 0) {
    throw std::runtime_error("no pipe");
  }
  std::vector<char*> arguments;
  for (const std::string& word : command) {
    arguments.push_back(const_cast<char*>(word.c_str()));
  }
  arguments.push_back(nullptr);
  _pid = ::fork();
  if (_pid == 0) {
    ::dup2(pipe_fds[1], STDOUT_FILENO);
    ::close(pipe_fds[0]);
    ::execv(arguments[0], arguments.data());
    ::_exit(127);
  }
  ::close(pipe_fds[1]);
  _output_fd = pipe_fds[0];
  std::string line;
  char c;
  while (::read(_output_fd, &c, 1) == 1 && c != '\n') {
    line += c;
  }
  _port = std::atoi(line.c_str());
  if (_port == 0) {
    throw std::runtime_error("the server did not start: " + command.front());
  }
}

ServerProcess::~ServerProcess() {
  ::kill(_pid, SIGTERM);
  ::waitpid(_pid, nullptr, 0);
  ::close(_output_fd);
}

}  // namespace test
}  // namespace zo
