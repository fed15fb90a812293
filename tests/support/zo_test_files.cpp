#include "zo_test_files.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <system_error>

namespace zo {
namespace test {

TempDir::TempDir() {
  std::string pattern = (std::filesystem::temp_directory_path() / "zo-test-XXXXXX").string();
  if (mkdtemp(&pattern[0]) == nullptr) {
    throw std::runtime_error("cannot make a directory like " + pattern);
  }
  _path = pattern;
}

TempDir::~TempDir() {
  std::error_code ignored;
  std::filesystem::remove_all(_path, ignored);
}

WorkingDir::WorkingDir(const std::string& path) : _saved_path(std::filesystem::current_path().string()) {
  std::error_code failed;
  std::filesystem::current_path(path, failed);
  if (failed) {
    throw std::runtime_error("cannot go to " + path);
  }
}

WorkingDir::~WorkingDir() {
  std::error_code ignored;
  std::filesystem::current_path(_saved_path, ignored);
}

std::string readFile(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  std::ostringstream bytes;
  bytes << stream.rdbuf();
  if (!stream.is_open() || stream.bad()) {
    throw std::runtime_error("cannot read " + path);
  }
  return bytes.str();
}

void writeFile(const std::string& path, const std::string& bytes) {
  std::ofstream stream(path, std::ios::binary | std::ios::trunc);
  stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  stream.close();
  if (!stream) {
    throw std::runtime_error("cannot write " + path);
  }
}

std::string realMediaDir() {
  const char* p_directory = std::getenv("ZO_TEST_MEDIA");
  return p_directory == nullptr ? std::string() : std::string(p_directory);
}

StderrCapture::StderrCapture() : _saved_fd(-1) {
  std::fflush(stderr);
  const int fd = ::open(_directory.file("stderr").c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0600);
  if (fd < 0) {
    throw std::runtime_error("cannot capture standard error");
  }
  _saved_fd = ::dup(STDERR_FILENO);
  ::dup2(fd, STDERR_FILENO);
  ::close(fd);
}

StderrCapture::~StderrCapture() {
  std::fflush(stderr);
  ::dup2(_saved_fd, STDERR_FILENO);
  ::close(_saved_fd);
}

std::string StderrCapture::text() const {
  std::fflush(stderr);
  return readFile(_directory.file("stderr"));
}

}  // namespace test
}  // namespace zo
