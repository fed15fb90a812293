#ifndef ZO_TESTS_NETWORK_ZO_NETWORK_PEERS_H
#define ZO_TESTS_NETWORK_ZO_NETWORK_PEERS_H

#include <sys/types.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace zo {
namespace test {

/// Accepts connections on a free port of the loopback address and runs a handler for each on a thread of its
/// own. Destruction shuts every connection down and waits for the handlers.
class ConnectionServer {
 public:
  /// The handler owns nothing: the descriptor is closed after it returns.
  explicit ConnectionServer(std::function<void(int client)> handler);
  ~ConnectionServer();
  ConnectionServer(const ConnectionServer&) = delete;
  ConnectionServer& operator=(const ConnectionServer&) = delete;

  int port() const { return _port; }
  bool stopping() const { return _stopping; }

 private:
  void accept();

  std::function<void(int)> _handler;
  int _listening_fd;
  int _port;
  std::atomic<bool> _stopping;
  std::vector<int> _clients;
  std::vector<std::thread> _threads;  // used by the accepting thread alone until it has ended
  std::thread _accepting;
};

/// Serves one file over HTTP/1.1, with ranges, one request a connection.
class HttpFileServer {
 public:
  explicit HttpFileServer(const std::string& path);

  std::string url(const std::string& name = "clip") const;
  int port() const { return _server.port(); }
  int requests() const { return _requests; }

 private:
  void serve(int client);

  std::string _bytes;
  std::atomic<int> _requests;
  ConnectionServer _server;
};

/// What a FaultProxy does to the bytes that come back from the server.
struct Fault {
  enum Kind {
    NONE,
    STALL,    // passes `after` bytes, then nothing more
    PAUSE,    // passes `after` bytes, then nothing for half a second, then the rest
    RESET,    // passes `after` bytes, then resets the connection
    CLOSE,    // passes `after` bytes, then closes it
    TRICKLE,  // passes `after` bytes, then one byte every few milliseconds
  };
  Kind kind = NONE;
  long long after = 0;
};

/// Stands between a client and a server on the loopback address and misbehaves as told. The fault may be
/// changed at any time and holds for the connections made from then on; the count of bytes starts with each
/// connection.
class FaultProxy {
 public:
  explicit FaultProxy(int server_port);

  int port() const { return _server.port(); }
  void setFault(Fault fault);
  int connections() const { return _connections; }

 private:
  void relay(int client);

  int _server_port;
  std::atomic<int> _kind;
  std::atomic<long long> _after;
  std::atomic<int> _connections;
  ConnectionServer _server;
};

/// A program in a process of its own that prints its port as the first line; stopped at destruction.
class ServerProcess {
 public:
  explicit ServerProcess(const std::vector<std::string>& command);
  ~ServerProcess();
  ServerProcess(const ServerProcess&) = delete;
  ServerProcess& operator=(const ServerProcess&) = delete;

  int port() const { return _port; }

 private:
  pid_t _pid;
  int _output_fd;
  int _port;
};

}  // namespace test
}  // namespace zo

#endif
