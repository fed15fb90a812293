#ifndef ZO_TESTS_SUPPORT_ZO_TEST_SERVER_H
#define ZO_TESTS_SUPPORT_ZO_TEST_SERVER_H

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace zo {
namespace test {

/// A server on the loopback address that accepts connections and leaves them hanging: it sends the given
/// bytes (none by default) to each and then nothing more until this object is destroyed.
class StalledServer {
 public:
  explicit StalledServer(std::string first_bytes = std::string());
  ~StalledServer();
  StalledServer(const StalledServer&) = delete;
  StalledServer& operator=(const StalledServer&) = delete;

  int port() const { return _port; }
  /// For example url("http", "clip.ts") or url("rtsp", "live").
  std::string url(const std::string& scheme, const std::string& path) const;
  /// Number of connections accepted so far. A client may be connected, and gone again, before this server's
  /// thread comes to accept it.
  int connections() const { return _connections; }
  /// The same, once there is one, or half a minute has passed.
  int awaitConnection() const;

 private:
  void serve();

  std::string _first_bytes;
  int _listening_fd;
  int _wake_fds[2];
  int _port;
  std::atomic<int> _connections;
  std::thread _thread;
};

/// The head of an HTTP answer that promises `length` bytes of body.
std::string httpHead(long long length);

/// A loopback URL that nobody listens on.
std::string unreachableUrl(const std::string& scheme);

}  // namespace test
}  // namespace zo

#endif
